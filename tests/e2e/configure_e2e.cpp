#include "configure.h"
#include "core_assert.h"
#include "core_guard.h"
#include "core_log.h"

#include <QByteArray>
#include <map>
#include <string>
#include <string_view>

// The tool with another process entry, which has additional options:
//     configure_e2e [--stop-on-check] [--show WARN|NORM]... [ARGUMENT]...
// Everything else is as in the real entry; the tool gets the remaining arguments.

namespace {

/// Reports like the default handler, but stops the program.
bool stopOnCheck(const char* condition, const char* file, int32_t line, int32_t level,
                 const std::string& message) {
    core::failDefault(condition, file, line, level, message);
    return true;
}

const std::map<std::string_view, int32_t> kChannels = {
    {"WARN", core::kChannelWarn},
    {"NORM", core::kChannelNorm},
};

/// Applies the options at the front and returns their number of arguments.
int takeOptions(int argc, char** argv) {
    int next = 1;
    for (; next < argc; ++next) {
        const std::string_view option = argv[next];
        if (option == "--stop-on-check") {
            core::Assert::setFailureHandler(stopOnCheck);
        } else if (option == "--show") {
            const int32_t channel = kChannels.at(argv[++next]);
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
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    const int taken = takeOptions(argc, argv);
    argv[taken] = argv[0];
    const int status = configure::runGuarded(argc - taken, argv + taken);
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
