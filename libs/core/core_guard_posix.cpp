#include "core_guard.h"

#include "core_crashdump_system.h"

#include <setjmp.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace core {
namespace {

using detail::crashing;
using detail::kFaultSignals;

// How long a fault of another thread waits for the guarded thread to crash, too.
constexpr long kGrace = 100; // milliseconds

// The handler needs a stack of its own: a fault may be the end of the thread's. The log's
// observers run on it, too; what they do not touch costs nothing.
constexpr size_t kHandlerStackSize = 1048576;
alignas(std::max_align_t) constinit std::array<std::byte, kHandlerStackSize> handlerStack{};

/// A guarded run, in static storage, where damage to the main stack does not reach.
struct Guard {
    pid_t thread = 0; ///< that is guarded; 0: none
    sigjmp_buf resume;
    const void* frame = nullptr;         ///< of the function to which `resume` leads
    const void* returnAddress = nullptr; ///< from there
    std::terminate_handler previousTerminate = nullptr;
    stack_t previousStack{};
    std::array<struct sigaction, kFaultSignals.size()> previousActions{};
};
constinit Guard guard{};

constinit bool terminating = false; // std::terminate was called

void pauseFor(long milliseconds) {
    timespec time{milliseconds / 1000, milliseconds % 1000 * 1'000'000};
    nanosleep(&time, nullptr);
}

/// Whether the guard can still return to its caller: a stack overrun reaches its frame
/// before those of the callers.
bool frameIsIntact() {
    const void* frame[2] = {nullptr, nullptr}; // the caller's frame pointer, the return address
    return detail::readMemory(reinterpret_cast<uintptr_t>(guard.frame), frame, sizeof frame) &&
           frame[1] == guard.returnAddress;
}

[[noreturn]] void takeCrash(const detail::CrashCause& cause) {
    detail::prepareProcess();
    detail::leaveEvidence(cause);
    detail::limitTheEnd();
    if (!frameIsIntact())
        _exit(kCrashStatus);
    siglongjmp(guard.resume, 1);
}

void waitForTheEnd() {
    while (crashing != 0)
        pauseFor(kGrace);
}

/// A signal for the process reaches any thread of it; it is meant for the guarded one. One
/// for a thread, such as that of abort, is that thread's.
bool handOver(const siginfo_t& info) {
    if (guard.thread == 0 || (info.si_code != SI_USER && info.si_code != SI_QUEUE))
        return false;
    siginfo_t copy = info;
    return syscall(SYS_rt_tgsigqueueinfo, getpid(), guard.thread, info.si_signo, &copy) == 0 ||
           syscall(SYS_tgkill, getpid(), guard.thread, info.si_signo) == 0;
}

/// The system's default, unless the guarded thread crashes at the same time: then this
/// thread waits for the end.
void leaveToTheSystem(int signal) {
    if (guard.thread != 0)
        pauseFor(kGrace);
    if (crashing != 0)
        waitForTheEnd();
    struct sigaction systemDefault {};
    systemDefault.sa_handler = SIG_DFL;
    sigaction(signal, &systemDefault, nullptr);
    raise(signal);
}

void onFault(int signal, siginfo_t* info, void* context) {
    const pid_t self = gettid();
    if (crashing == self) { // a fault of what follows
        detail::cutAttempt();
        _exit(kCrashStatus);
    }
    if (crashing != 0)
        waitForTheEnd();
    if (guard.thread == self) {
        crashing = self;
        takeCrash({info, context, terminating});
    }
    if (!handOver(*info))
        leaveToTheSystem(signal);
}

/// Instead of a handler for all exceptions, where the stack would be gone.
void onTerminate() {
    terminating = guard.thread == gettid();
    if (!terminating && guard.previousTerminate != nullptr)
        guard.previousTerminate();
    raise(SIGABRT);
    std::abort();
}

// ---- The guard

void installHandlers() {
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    sigaltstack(&stack, &guard.previousStack);

    struct sigaction action {};
    action.sa_sigaction = onFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (size_t i = 0; i < kFaultSignals.size(); ++i)
        sigaction(kFaultSignals[i], &action, &guard.previousActions[i]);
    guard.previousTerminate = std::set_terminate(onTerminate);
}

void removeHandlers() {
    for (size_t i = 0; i < kFaultSignals.size(); ++i)
        sigaction(kFaultSignals[i], &guard.previousActions[i], nullptr);
    sigaltstack(&guard.previousStack, nullptr);
    std::set_terminate(guard.previousTerminate);
}

void begin() {
    crashing = 0;
    terminating = false;
    detail::noteCrashNames();
    detail::reserveForReport();
    installHandlers();
    guard.thread = gettid();
    detail::noteThrows(true);
}

void end(const Guard& outer) {
    removeHandlers();
    detail::releaseReserve();
    guard = outer;
    detail::noteThrows(guard.thread == gettid());
}

/// No exception gets out: the search for a handler ends here, before anything has been
/// cleaned up, as if this were the thread's first function.
#if defined(__x86_64__)
[[gnu::noinline]] int runOutermost(StartFunction start, int argc, char** argv) {
    asm volatile(".cfi_undefined rip");
    const int status = start(argc, argv);
    asm volatile("" : : : "memory"); // or the call would be a jump
    return status;
}
#else
int runOutermost(StartFunction start, int argc, char** argv) noexcept { return start(argc, argv); }
#endif

} // namespace

void endProcess(int status) {
    std::fflush(nullptr);
    _exit(status);
}

[[gnu::noinline]] int detail::runUnderGuard(StartFunction start, int argc, char** argv) {
    const Guard outer = guard;
    begin();
    guard.frame = __builtin_frame_address(0);
    guard.returnAddress = __builtin_return_address(0);
    if (sigsetjmp(guard.resume, 1) != 0)
        return kCrashStatus;
    const int status = runOutermost(start, argc, argv);
    end(outer);
    return status;
}

} // namespace core
