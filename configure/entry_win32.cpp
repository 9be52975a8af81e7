#include "configure.h"
#include "core_commandline.h"
#include "core_guard.h"

#include <windows.h>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR commandLine, int) {
    // Others may write to the working directory, so libraries are not loaded from there.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    core::Arguments arguments = core::splitCommandLine(commandLine);
    const int status = configure::runGuarded(arguments.count(), arguments.values());
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
