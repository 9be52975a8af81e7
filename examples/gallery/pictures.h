#pragma once

#include <QIcon>

namespace gallery {

/// Small drawings in place of a real program's resources.
enum class Picture { Camera, Monitor, Bell, Tick, Cross };

/// An icon that is drawn again for every size and pixel density.
QIcon makeIcon(Picture picture);

} // namespace gallery
