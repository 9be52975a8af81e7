#pragma once

#include <QPixmap>
#include <QRect>
#include <QStringList>
#include <QVector>

namespace gallery {

/// A strip of buttons, drawn for the screen's pixel density.
struct StripArt {
    QPixmap picture;
    QVector<QRect> buttons;
};

/// Draws a button for each sign, with its characters side by side:
///     <  >  triangles     |  bar      [  ]  marks of a beginning and an end
///     o  a ring           *  a disc   x     a cross
StripArt drawStrip(const QStringList& signs);

} // namespace gallery
