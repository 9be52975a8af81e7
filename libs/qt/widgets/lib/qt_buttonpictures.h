#pragma once

#include <QPixmap>
#include <QRect>
#include <QSize>

class QPainter;

namespace NS_QT {

/// The looks of a picture that serves as a button, computed pixel by pixel. All keep
/// the picture's device pixel ratio; what is given in pixels is multiplied by it. None
/// takes a null picture. GUI thread only.
namespace ButtonPictures {

/// Edge that a halo adds on each side, in device independent pixels.
constexpr int kHaloWidth = 3;

/// The picture with a green halo of three pixels: its shape, filled with opaque green
/// and stretched by six pixels in both directions, with the picture centred on it.
QPixmap withHalo(const QPixmap& picture);

/// The picture with a green outline: transparent pixels up to two pixels away from
/// others turn opaque green, unless the others lie within two pixels of the edge. What
/// surrounds the result by Qt's heuristic is then cut off.
QPixmap withOutline(const QPixmap& picture);

/// `hot`, reduced smoothly into nine tenths of the size of `normal`; its aspect ratio
/// is kept.
QPixmap pressed(const QPixmap& hot, const QPixmap& normal);

/// Every pixel half as opaque: fainter than the picture, be it on light or on dark.
QPixmap faded(const QPixmap& picture);

/// Every pixel that is not fully transparent, opaque and with halved colours; without
/// what surrounds the result by Qt's heuristic: the colour of the corners, where it
/// reaches the edge.
QPixmap disabled(const QPixmap& picture);

/// The picture's size on the screen, in device independent pixels.
QSize sizeOf(const QPixmap& picture);

/// Draws a part of a picture whose top left corner is the painter's origin, in its
/// place. Both in device independent pixels.
void drawPart(QPainter& painter, const QPixmap& picture, const QRect& part);

} // namespace ButtonPictures
} // namespace NS_QT
