#include "configure.h"
#include "core_guard.h"

#include <cstdlib>

int main(int argc, char** argv) {
    // Two fields need no OpenGL, whose driver would take Qt longer to load than all the rest
    // and twice the memory. What the user has set stays.
    setenv("QT_XCB_GL_INTEGRATION", "none", 0);
    const int status = configure::runGuarded(argc, argv);
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
