#include "configure.h"
#include "core_assert.h"
#include "core_guard.h"
#include "core_log.h"

#include <cstring>
#include <string>
#include <string_view>

// The tool with a process entry of its own, for what the real one offers nobody:
//     configure_e2e [--stop-on-check] [--show WARN|INFO|NORM]... [ARGUMENT]...
// All else is as in the real entry, which gets the arguments that follow.

namespace {

/// Reports like the default handler, but has the program stop.
bool stopOnCheck(const char* condition, const char* file, int32_t line, int32_t level,
                 const std::string& message) {
    core::failDefault(condition, file, line, level, message);
    return true;
}

/// The predefined channel of that name; CRIT, which is shown anyway, for any other.
int32_t channelNamed(std::string_view name) {
    if (name == "WARN")
        return core::kChannelWarn;
    if (name == "INFO")
        return core::kChannelInfo;
    return name == "NORM" ? core::kChannelNorm : core::kChannelCrit;
}

/// Obeys the leading options; how many arguments they were.
int takeOptions(int argc, char** argv) {
    int next = 1;
    for (; next < argc; ++next) {
        if (std::strcmp(argv[next], "--stop-on-check") == 0) {
            core::Assert::setFailureHandler(stopOnCheck);
        } else if (std::strcmp(argv[next], "--show") == 0 && next + 1 < argc) {
            const int32_t channel = channelNamed(argv[++next]);
            core::MasterLogger::setChannelEnabled(channel, true);
            core::MasterLogger::setChannelEcho(channel, true);
        } else {
            break;
        }
    }
    return next - 1;
}

} // namespace

int main(int argc, char** argv) {
    const int taken = takeOptions(argc, argv);
    argv[taken] = argv[0];
    const int status = core::runGuardedWith(configure::runApplication, argc - taken, argv + taken);
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
