#pragma once

#include <QStringList>

class QWidget;

namespace gallery {

/// What people would miss in the visible widgets below `window`, a line each: elements that
/// take the focus without a name for screen readers, and pictures that are enlarged since
/// they have fewer pixels than the screen has in their place.
QStringList inspect(const QWidget& window);

} // namespace gallery
