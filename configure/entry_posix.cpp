#include "configure.h"
#include "core_guard.h"

#include <cstdlib>

int main(int argc, char** argv) {
    // Two fields need no OpenGL. Loading its driver would take Qt longer than all the rest,
    // and twice the memory. A user's own setting stays.
    setenv("QT_XCB_GL_INTEGRATION", "none", 0);
    const int status = configure::runGuarded(argc, argv);
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
