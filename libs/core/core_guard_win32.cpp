#include "core_guard_win32.h"

#include "core_crashdump_system.h"
#include "core_guard.h"
#include "core_utf.h"

#include <cxxabi.h>
#include <signal.h>
#include <windows.h>

#include <cstdio>
#include <exception>
#include <string>
#include <utility>

namespace core {
namespace {

using detail::crashing;

// Codes of the guard's own: an error, by a program, "CPP" and "ABT".
constexpr DWORD kUncaughtException = 0xE0435050;
constexpr DWORD kAbort = 0xE0414254;

/// Stack that the system keeps back for the handler of a stack overflow, in bytes.
constexpr ULONG kHandlerStackSize = 65536;

/// How long a fault of another thread waits for the guarded thread to crash, too.
constexpr DWORD kGrace = 100; // milliseconds

/// A link of the thread's chain of exception handlers, which begins at fs:0. It must be
/// on the thread's stack.
struct GuardFrame {
    GuardFrame* previous;
    PEXCEPTION_HANDLER handler;
};

/// A guarded run, in static storage, where damage to the main stack does not reach.
struct Guard {
    DWORD thread = 0; ///< that is guarded; 0: none
    GuardFrame* frame = nullptr;
    GuardFrame* outerFrame = nullptr; ///< the next in the chain
    void* resume[5]{};                ///< as __builtin_setjmp wants it
    PVOID firstChance = nullptr;
    LPTOP_LEVEL_EXCEPTION_FILTER previousFilter = nullptr;
    std::terminate_handler previousTerminate = nullptr;
    void (*previousAbort)(int) = nullptr;
};
constinit Guard guard;

// ---- The chain of handlers

GuardFrame* chainHead() {
    GuardFrame* head = nullptr;
    asm volatile("movl %%fs:0, %0" : "=r"(head));
    return head;
}

void setChainHead(GuardFrame* frame) { asm volatile("movl %0, %%fs:0" : : "r"(frame) : "memory"); }

/// Lets the handlers inside of `frame` clean up and takes them off the chain. RtlUnwind
/// returns here with the stack as it was, but keeps no other register. With nearly all
/// registers lost, Clang 14 mixes up two operands, so there is one.
void unwindTo(GuardFrame* frame, EXCEPTION_RECORD* exception) {
    void* arguments[] = {frame, exception};
    void** operand = arguments;
    asm volatile("pushl %%ebp\n\t"
                 "pushl $0\n\t"
                 "pushl 4(%%eax)\n\t"
                 "pushl $1f\n\t"
                 "pushl (%%eax)\n\t"
                 "call _RtlUnwind@16\n"
                 "1:\tpopl %%ebp"
                 : "+a"(operand)
                 :
                 : "ebx", "ecx", "edx", "esi", "edi", "memory", "cc");
}

EXCEPTION_DISPOSITION __cdecl onException(EXCEPTION_RECORD* record, void* establisher,
                                          CONTEXT* context, void* dispatcher);

/// Whether the system would find the guard: an overrun of the stack destroys the chain.
bool chainIsIntact() {
    const auto* const information = reinterpret_cast<const NT_TIB*>(NtCurrentTeb());
    const auto* const base = static_cast<const GuardFrame*>(information->StackBase);
    const GuardFrame* inner = nullptr;
    const GuardFrame* frame = chainHead();
    while (frame > inner && frame < base && reinterpret_cast<uintptr_t>(frame) % 4 == 0) {
        if (frame == guard.frame)
            return frame->handler == onException && frame->previous == guard.outerFrame;
        inner = std::exchange(frame, frame->previous);
    }
    return false;
}

[[noreturn]] void takeCrash(EXCEPTION_RECORD* exception, CONTEXT* context,
                            void (*describe)() = nullptr) {
    DWORD none = 0;
    if (!crashing.compare_exchange_strong(none, guard.thread)) // a fault of what follows
        detail::endAfterEvidence();
    EXCEPTION_POINTERS pointers{exception, context};
    detail::showEvidence({&pointers, describe, true});
    if (!chainIsIntact())
        detail::endAfterEvidence();
    unwindTo(guard.frame, exception);
    __builtin_longjmp(guard.resume, 1);
}

EXCEPTION_DISPOSITION __cdecl onException(EXCEPTION_RECORD* exception, void*, CONTEXT* context,
                                          void*) {
    if ((exception->ExceptionFlags & EXCEPTION_UNWIND) == 0)
        takeCrash(exception, context);
    return ExceptionContinueSearch;
}

/// Runs before the chain, but takes only what the chain would not bring to the guard.
LONG CALLBACK onFirstChance(EXCEPTION_POINTERS* pointers) {
    if (GetCurrentThreadId() == guard.thread && !chainIsIntact())
        takeCrash(pointers->ExceptionRecord, pointers->ContextRecord);
    return EXCEPTION_CONTINUE_SEARCH;
}

// ---- Other threads, abort and std::terminate

/// Another thread's fault is the system's, unless the guarded one crashes at the same time.
void waitForGuardedThread() {
    Sleep(kGrace);
    if (crashing != 0)
        Sleep(INFINITE);
}

LONG WINAPI onOtherThread(EXCEPTION_POINTERS* pointers) {
    waitForGuardedThread();
    return guard.previousFilter != nullptr ? guard.previousFilter(pointers)
                                           : EXCEPTION_CONTINUE_SEARCH;
}

/// A crash without a system exception: not raised, since the functions in between would
/// not let all exceptions through.
[[noreturn, gnu::noinline]] void takeEnd(DWORD code, void (*describe)() = nullptr) {
    CONTEXT context{};
    RtlCaptureContext(&context);
    // That is the caller's, at an address that may lie behind it.
    asm volatile("0: movl $0b, %0\n\tmovl %%ebp, %1\n\tmovl %%esp, %2"
                 : "=m"(context.Eip), "=m"(context.Ebp), "=m"(context.Esp));
    EXCEPTION_RECORD record{};
    record.ExceptionCode = code;
    record.ExceptionFlags = EXCEPTION_NONCONTINUABLE;
    record.ExceptionAddress = reinterpret_cast<void*>(context.Eip);
    record.NumberParameters = 1;
    record.ExceptionInformation[0] = detail::uncaughtText();
    takeCrash(&record, &context, describe);
}

void onAbort(int) {
    if (GetCurrentThreadId() == guard.thread)
        takeEnd(kAbort);
    waitForGuardedThread();
}

/// Instead of a handler for all exceptions, where the stack would be gone.
void onTerminate() {
    if (GetCurrentThreadId() != guard.thread) {
        waitForGuardedThread();
        guard.previousTerminate();
    }
    if (abi::__cxa_current_exception_type() == nullptr)
        takeEnd(kAbort);
    takeEnd(kUncaughtException, detail::describeException);
}

// ---- The guard

void begin() {
    crashing = 0;
    detail::noteCrashNames();
    detail::startDumpHelper();
    ULONG handlerStack = kHandlerStackSize;
    SetThreadStackGuarantee(&handlerStack);
    _set_error_mode(_OUT_TO_STDERR); // abort shows no box
    guard.firstChance = AddVectoredExceptionHandler(1, onFirstChance);
    guard.previousFilter = SetUnhandledExceptionFilter(onOtherThread);
    guard.previousTerminate = std::set_terminate(onTerminate);
    guard.previousAbort = signal(SIGABRT, onAbort);
}

void end(const Guard& outer) {
    signal(SIGABRT, guard.previousAbort);
    std::set_terminate(guard.previousTerminate);
    SetUnhandledExceptionFilter(guard.previousFilter);
    RemoveVectoredExceptionHandler(guard.firstChance);
    guard = outer;
    detail::noteThrows(guard.thread);
}

/// No exception gets out: the search for a handler ends here, before anything has been
/// cleaned up, as if this were the thread's first function.
[[gnu::noinline]] int runOutermost(StartFunction start, int argc, char** argv) {
    asm volatile(".cfi_undefined %eip");
    const int status = start(argc, argv);
    asm volatile("" : : : "memory"); // or the call would be a jump
    return status;
}

/// g++ has no __try for this target, so the frame is chained by hand. It uses the
/// compiler's jump, since the runtime's would unwind once more.
[[gnu::noinline]] int runChained(StartFunction start, int argc, char** argv) {
    GuardFrame frame{chainHead(), onException};
    guard.frame = &frame;
    guard.outerFrame = frame.previous;
    if (__builtin_setjmp(guard.resume) != 0) {
        detail::deliverEvidence();
        setChainHead(guard.outerFrame);
        return kCrashStatus;
    }
    setChainHead(&frame);
    guard.thread = GetCurrentThreadId();
    detail::noteThrows(guard.thread);
    const int status = runOutermost(start, argc, argv);
    setChainHead(frame.previous);
    return status;
}

std::string utf8Of(const wchar_t* text) {
    std::string utf8 = "(null)"; // what release builds of the runtime pass
    return text != nullptr && !toUtf8(text, utf8) ? "?" : utf8;
}

} // namespace

void endProcess(int status) {
    std::fflush(nullptr);
    detail::endNow(status);
}

void onInvalidParameter(const wchar_t* expression, const wchar_t* function, const wchar_t* file,
                        unsigned int line, uintptr_t) {
    onInvalidParameter(utf8Of(expression), utf8Of(function), utf8Of(file), line);
}

int detail::runUnderGuard(StartFunction start, int argc, char** argv) {
    const Guard outer = guard;
    begin();
    void(__cdecl* const handler)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int,
                                 uintptr_t) = onInvalidParameter;
    const auto previous = _set_invalid_parameter_handler(handler);
    const int status = runChained(start, argc, argv);
    _set_invalid_parameter_handler(previous);
    if (status != kCrashStatus || crashing == 0)
        end(outer);
    return status;
}

} // namespace core
