#include "core_guard.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <utility>

namespace core {
namespace {

constexpr std::array kFaults{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT};

constinit thread_local bool guarded = false;

// The handler needs a stack of its own: a fault may be the end of the thread's.
constexpr size_t kHandlerStackSize = 65536;
alignas(std::max_align_t) constinit std::array<std::byte, kHandlerStackSize> handlerStack{};

/// Only async-signal-safe calls: the fault may have come while the heap or the log
/// was locked.
void onFault(int signal, siginfo_t*, void*) {
    if (guarded)
        _exit(kCrashStatus);
    // Another thread's fault. The signal, blocked until this returns, comes again.
    struct sigaction systemDefault {};
    systemDefault.sa_handler = SIG_DFL;
    sigaction(signal, &systemDefault, nullptr);
    raise(signal);
}

/// While it lives, faults of this thread end in `onFault`, on the handler's stack.
class FaultGuard {
public:
    FaultGuard() {
        stack_t stack{};
        stack.ss_sp = handlerStack.data();
        stack.ss_size = handlerStack.size();
        sigaltstack(&stack, &d_previousStack);
        d_wasGuarded = std::exchange(guarded, true);

        struct sigaction action {};
        action.sa_sigaction = onFault;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        for (const int signal : kFaults)
            sigaddset(&action.sa_mask, signal); // a fault in here ends the process
        for (size_t i = 0; i < kFaults.size(); ++i)
            sigaction(kFaults[i], &action, &d_previousActions[i]);
    }
    ~FaultGuard() {
        for (size_t i = 0; i < kFaults.size(); ++i)
            sigaction(kFaults[i], &d_previousActions[i], nullptr);
        guarded = d_wasGuarded;
        sigaltstack(&d_previousStack, nullptr);
    }
    FaultGuard(const FaultGuard&) = delete;
    FaultGuard& operator=(const FaultGuard&) = delete;

private:
    stack_t d_previousStack{};
    bool d_wasGuarded = false;
    std::array<struct sigaction, kFaults.size()> d_previousActions{};
};

} // namespace

void endProcess(int status) {
    std::fflush(nullptr);
    _exit(status);
}

int detail::runUnderGuard(StartFunction start, int argc, char** argv) {
    const FaultGuard guard;
    return runCatching(start, argc, argv);
}

} // namespace core
