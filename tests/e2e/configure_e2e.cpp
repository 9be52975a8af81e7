#include "configure.h"
#include "core_assert.h"
#include "core_guard.h"
#include "core_log.h"
#include "cutl_environment.h"

#include <QApplication>
#include <QTimer>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

// The tool with a process entry of its own, for what the real one offers nobody:
//     configure_e2e [--stop-on-check] [--crash KIND] [--show WARN|NORM]... [ARGUMENT]...
// All else is as in the real entry, which gets the arguments that follow.

namespace {

volatile int zero = 0;

__attribute__((noinline, no_sanitize("undefined"))) void divideByZero() { zero = 100 / zero; }

__attribute__((noinline, no_sanitize("undefined"))) void jumpToNowhere() {
    void (*volatile nowhere)() = nullptr;
    nowhere(); // NOLINT(clang-analyzer-core*)
    zero = 0;  // so that it is a call
}

int overflowStack(int depth) {
    int (*volatile deeper)(int) = overflowStack; // or the compiler takes it apart
    volatile char frame[4096] = {};
    return deeper(depth + 1) + frame[depth % 4096];
}

[[noreturn]] void throwException() { throw std::runtime_error("out of paper"); }

void crashOnAnotherThread() { std::thread(core::deliberateFault).join(); }

bool crashesAtExit = false;

const struct CrashAtExit {
    ~CrashAtExit() {
        if (crashesAtExit)
            core::deliberateFault();
    }
} crashAtExit;

void closeAndCrashAtExit() {
    crashesAtExit = true;
    QApplication::closeAllWindows();
}

const std::map<std::string_view, void (*)()> kCrashes = {
    {"division", divideByZero},
    {"bad_jump", jumpToNowhere},
    {"stack_overflow", [] { overflowStack(0); }},
    {"exception", throwException},
    {"thread", crashOnAnotherThread},
    {"exit", closeAndCrashAtExit},
};
void (*crash)() = nullptr;

std::optional<std::string> lookUpNothing() { throwException(); }

/// As soon as the dialog is open; an exception before that, in the tool's own code, since
/// it would not get through the system's part of the event loop.
void crashIfAsked() {
    if (crash == throwException)
        cutl::setCommonDataLookup(lookUpNothing);
    else if (crash != nullptr)
        QTimer::singleShot(0, crash);
}
Q_COREAPP_STARTUP_FUNCTION(crashIfAsked)

/// Reports like the default handler, but has the program stop.
bool stopOnCheck(const char* condition, const char* file, int32_t line, int32_t level,
                 const std::string& message) {
    core::failDefault(condition, file, line, level, message);
    return true;
}

const std::map<std::string_view, int32_t> kChannels = {
    {"WARN", core::kChannelWarn},
    {"NORM", core::kChannelNorm},
};

/// Obeys the leading options; how many arguments they were.
int takeOptions(int argc, char** argv) {
    int next = 1;
    for (; next < argc; ++next) {
        const std::string_view option = argv[next];
        if (option == "--stop-on-check") {
            core::Assert::setFailureHandler(stopOnCheck);
        } else if (option == "--crash") {
            crash = kCrashes.at(argv[++next]);
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
