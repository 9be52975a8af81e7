#include "qt_platform.h"

#include <QByteArray>

void test::preferOffscreen() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_XCB_GL_INTEGRATION", "none");
}

// Called by the sanitizers' runtimes. The offscreen platform never frees its screen, nor
// the X11 platform's bus its connection; only whole stacks, which Qt's build makes slow to
// walk, show that they are to blame. What Qt's own threads do among themselves is not seen
// whole, hence not judged.
extern "C" {
const char* __asan_default_options();
const char* __lsan_default_suppressions();
const char* __tsan_default_options();

const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }
const char* __lsan_default_suppressions() { return "leak:libqoffscreen.so\nleak:libdbus-1.so\n"; }
const char* __tsan_default_options() { return "ignore_noninstrumented_modules=1"; }
}
