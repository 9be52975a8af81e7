#include "core_crashdump.h"

#include "core_crashdump_system.h"
#include "core_wrapper.h"

#include <signal.h>
#include <sys/auxv.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstring>

namespace core {
namespace {

// Limits in milliseconds for a crash, from the fault to the end of the process, and for
// its pieces: a crash may wait for locks that it holds itself, such as the heap's.
constexpr int kTimeLimit = 4000;
constexpr int kForLittle = 300;
constexpr int kForLog = 800;
constexpr int kForEnd = 500;

constinit detail::CrashTold told{};

void ignore(int signal) {
    struct sigaction action {};
    action.sa_handler = SIG_IGN;
    sigaction(signal, &action, nullptr);
}

void onTimeOver(int, siginfo_t*, void*) {
    const pid_t thread = detail::crashing;
    if (gettid() != thread) {
        syscall(SYS_tgkill, getpid(), thread, SIGALRM);
        return;
    }
    detail::cutAttempt();
    if (told.recorded)
        _exit(kCrashStatus); // the rest of the program does not end
}

void endAttemptsInTime() {
    struct sigaction action {};
    action.sa_sigaction = onTimeOver;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigaction(SIGALRM, &action, nullptr);
}

/// The computer's local time; UTC if that is not available.
void tellTime() {
    told.time = utcCivilTime(now());
    detail::attempt(kForLittle, [] { told.time = localCivilTime(now()); });
}

} // namespace

constinit std::atomic<pid_t> detail::crashing{0};

/// The path by which the program was started, if it leads to the file itself: reading the
/// system's link the first time takes several times as long.
std::string detail::programPath() {
    constexpr size_t kLimit = 4096;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's form
    const auto* const started = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    struct stat status {};
    const bool leads = started != nullptr && *started == '/' && lstat(started, &status) == 0 &&
                       S_ISREG(status.st_mode);
    return leads ? started : Wrapper::executablePath(kLimit);
}

void detail::prepareProcess() {
    endAttemptsInTime();
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    for (const int fault : kFaultSignals)
        sigaddset(&signals, fault);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    ignore(SIGPIPE);
    ignore(SIGXFSZ);
    rlimit memory{};
    getrlimit(RLIMIT_AS, &memory);
    memory.rlim_cur = memory.rlim_max;
    setrlimit(RLIMIT_AS, &memory);
}

void detail::leaveEvidence(const CrashCause& cause) {
    startCrashClock(kTimeLimit - kForEnd);
    told = {};
    writeReport(cause, told.dump);
    attempt(kForLog, checkCrashNames);
    attempt(kForLog, [] { echoDumpLine(told); });
    attempt(kForLog, [] { deliverDumpLine(told); });
    tellTime();
    attempt(kForLittle, [] { recordCrash(told); });
}

void detail::limitTheEnd() {
    itimerval timer{};
    timer.it_value.tv_usec = suseconds_t{kForEnd} * 1000;
    timer.it_interval = timer.it_value;
    setitimer(ITIMER_REAL, &timer, nullptr);
}

detail::FixedText<512> detail::errorText(uint32_t error) {
    // Untranslated, since the translation takes locks and memory.
    const char* const text = strerrordesc_np(static_cast<int>(error));
    FixedText<512> result;
    if (text != nullptr)
        result << text;
    else
        result << "error " << error;
    return result;
}

int32_t writeCrashDump() {
    if (!detail::crashNamesAreNoted())
        detail::noteCrashNames();
    const pid_t previous = detail::crashing.exchange(gettid());
    if (previous == 0)
        detail::prepareProcess();
    detail::leaveEvidence({nullptr, nullptr, false});
    detail::crashing = previous;
    return 1;
}

} // namespace core
