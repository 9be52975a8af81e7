#pragma once

#include <QIcon>

namespace gallery {

/// Small drawings that stand for what a real program has in its resources.
enum class Picture { Camera, Monitor, Bell, Tick, Cross };

/// An icon that is drawn anew at every size and pixel density asked for.
QIcon makeIcon(Picture picture);

} // namespace gallery
