#include "configure.h"
#include "core_guard.h"

#include <windows.h>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR commandLine, int) {
    core::Arguments arguments = core::splitCommandLine(commandLine);
    const int status = configure::runGuarded(arguments.count(), arguments.values());
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
