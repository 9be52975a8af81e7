#include "collect.h"
#include "core_guard.h"

int main(int argc, char** argv) {
    const int status = collect::runGuarded(argc, argv);
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
