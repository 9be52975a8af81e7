#pragma once

namespace test {

/// Lets Qt draw off the screen unless the environment names a platform, and without
/// OpenGL, as the tool does, so that no driver of this machine is in the way. Programs
/// that link this also tell the leak check what Qt's own platform does not free.
void preferOffscreen();

} // namespace test
