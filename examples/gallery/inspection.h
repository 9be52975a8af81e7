#pragma once

#include <QStringList>

class QWidget;

namespace gallery {

/// The faults of the visible widgets in `window`, one line each: widgets that take the focus but
/// have no name for screen readers, and pictures with fewer pixels than they cover on the screen.
QStringList inspect(const QWidget& window);

} // namespace gallery
