#include "core_guard.h"

#include "core_crashdump_calls.h"

#include <setjmp.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <utility>

namespace core {
namespace {

constexpr std::array kFaults{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT};

// How long a crash may take from the fault to the end of the process: what it has locked,
// the heap for example, it may come to wait for itself.
constexpr unsigned kTimeLimit = 10; // seconds

// The handler needs a stack of its own: a fault may be the end of the thread's.
constexpr size_t kHandlerStackSize = 262144;
alignas(std::max_align_t) constinit std::array<std::byte, kHandlerStackSize> handlerStack{};

/// While it lives, faults of this thread end in `onFault`, on the handler's stack.
class FaultGuard {
public:
    FaultGuard();
    ~FaultGuard();
    FaultGuard(const FaultGuard&) = delete;
    FaultGuard& operator=(const FaultGuard&) = delete;

    sigjmp_buf resume;       ///< where the thread goes on after a fault
    detail::DumpResult dump; ///< of that fault

    /// Takes a fault of the guarded thread; async-signal-safe. One that comes while the
    /// first is reported cuts the report short; a third ends the process.
    [[noreturn]] void take(const siginfo_t* info, void* context);

private:
    enum class Stage { Running, Reporting, Recording };

    Stage d_stage = Stage::Running;
    FaultGuard* d_outer;
    stack_t d_previousStack{};
    std::array<struct sigaction, kFaults.size()> d_previousActions{};
};

constinit thread_local FaultGuard* current = nullptr;

void endLate(int) { _exit(kCrashStatus); }

void limitTime() {
    struct sigaction action {};
    action.sa_handler = endLate;
    sigaction(SIGALRM, &action, nullptr);
    alarm(kTimeLimit);
}

/// Lets further faults in, and the end of the time, whatever the fault's place has blocked.
void unblockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    for (const int fault : kFaults)
        sigaddset(&signals, fault);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void onFault(int signal, siginfo_t* info, void* context) {
    if (current != nullptr)
        current->take(info, context);
    struct sigaction systemDefault {};
    systemDefault.sa_handler = SIG_DFL;
    sigaction(signal, &systemDefault, nullptr);
    raise(signal);
}

FaultGuard::FaultGuard() : d_outer(std::exchange(current, this)) {
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    sigaltstack(&stack, &d_previousStack);

    struct sigaction action {};
    action.sa_sigaction = onFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (size_t i = 0; i < kFaults.size(); ++i)
        sigaction(kFaults[i], &action, &d_previousActions[i]);
}

FaultGuard::~FaultGuard() {
    for (size_t i = 0; i < kFaults.size(); ++i)
        sigaction(kFaults[i], &d_previousActions[i], nullptr);
    current = d_outer;
    sigaltstack(&d_previousStack, nullptr);
}

void FaultGuard::take(const siginfo_t* info, void* context) {
    if (d_stage == Stage::Recording)
        _exit(kCrashStatus);
    unblockSignals();
    if (d_stage == Stage::Running) {
        d_stage = Stage::Reporting;
        limitTime();
        detail::SignalFault fault{info, context};
        detail::writeDumpInDistress(&fault, dump);
    }
    d_stage = Stage::Recording;
    siglongjmp(resume, 1);
}

} // namespace

void endProcess(int status) {
    std::fflush(nullptr);
    _exit(status);
}

int detail::runUnderGuard(StartFunction start, int argc, char** argv) {
    FaultGuard guard;
    if (sigsetjmp(guard.resume, 0) != 0) {
        recordDump(guard.dump);
        return kCrashStatus;
    }
    return runCatching(start, argc, argv);
}

} // namespace core
