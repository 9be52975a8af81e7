#include "core_guard_win32.h"

#include "core_crashdump_system.h"
#include "core_crashlines_calls.h"
#include "core_guard.h"
#include "core_utf.h"

#include <cxxabi.h>
#include <signal.h>
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <typeinfo>
#include <utility>

namespace core {

/// Type and text of an exception of C++ that nobody caught. A dump holds it, and names its
/// address as the first parameter of the exception.
constinit detail::FixedText<4096> uncaughtException;

namespace {

// Codes of the guard's own: an error, by a program, "CPP" and "ABT".
constexpr DWORD kUncaughtException = 0xE0435050;
constexpr DWORD kAbort = 0xE0414254;

/// Stack that the system keeps back for the handler of a stack overflow, in bytes.
constexpr ULONG kHandlerStackSize = 65536;

// Milliseconds. A dump has as long as it makes progress.
constexpr DWORD kWithoutProgress = 2500;
constexpr DWORD kForDump = 120'000;
constexpr DWORD kForLog = 1000;
constexpr DWORD kForEnd = 500;
constexpr DWORD kGrace = 100; // for the guarded thread to follow a fault of another one

/// A link of the thread's chain of exception handlers, which begins at fs:0. It has to lie
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

/// The one crash of the process.
constinit std::atomic<DWORD> crashing{0}; // the thread that crashed first
constinit EXCEPTION_POINTERS* crashPointers = nullptr;
constinit detail::CrashTold told{};
constinit std::atomic<bool> dumped{false};
constinit std::atomic<bool> recordTaken{false};
constinit bool endsProcess = false;

/// A thread with a stack of its own, which waits for a crash: a new one would need locks
/// that the crashed thread may hold.
struct Helper {
    HANDLE thread = nullptr;
    HANDLE begun = nullptr;     // by the crashed thread
    HANDLE shown = nullptr;     // dump and line
    HANDLE delivered = nullptr; // the line, to the log's receivers, by the crashed thread
    HANDLE recorded = nullptr;
};
constinit Helper helper;

[[noreturn]] void endNow(int status) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    std::abort();
}

// ---- The evidence

void record() {
    if (recordTaken.exchange(true))
        return;
    SYSTEMTIME time{};
    GetLocalTime(&time);
    told.time = {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
    detail::recordCrash(told);
}

void writeEvidence() {
    told.dump = detail::writeMinidump(crashPointers, crashing);
    dumped = true;
    detail::echoDumpLine(told);
    SetEvent(helper.shown);
    WaitForSingleObject(helper.delivered, kForLog);
    record();
    SetEvent(helper.recorded);
}

DWORD WINAPI help(void*) {
    for (;;) {
        WaitForSingleObject(helper.begun, INFINITE);
        writeEvidence();
        if (!endsProcess)
            continue;
        Sleep(kForEnd);
        endNow(kCrashStatus);
    }
}

uint64_t processorTimeOf(HANDLE thread) {
    FILETIME created{};
    FILETIME exited{};
    FILETIME kernel{};
    FILETIME user{};
    GetThreadTimes(thread, &created, &exited, &kernel, &user);
    return uint64_t{kernel.dwLowDateTime} + user.dwLowDateTime;
}

/// False if the helper stands still, as where the crash has left the heap locked.
bool waitForHelper() {
    constexpr DWORD kStep = 100;
    uint64_t used = 0;
    DWORD idle = 0;
    for (DWORD waited = 0; waited < kForDump && idle < kWithoutProgress; waited += kStep) {
        if (WaitForSingleObject(helper.shown, kStep) == WAIT_OBJECT_0)
            return true;
        const uint64_t before = std::exchange(used, processorTimeOf(helper.thread));
        idle = used == before ? idle + kStep : 0;
    }
    return false;
}

/// The line alone: opening dumps.log takes memory of the heap, for which the helper may be
/// waiting, and for ever.
[[noreturn]] void endWithoutHelper() {
    if (!dumped)
        told.dump = {false, ERROR_TIMEOUT};
    if (!told.echoed)
        detail::echoDumpLine(told);
    endNow(kCrashStatus);
}

/// Dump and line; `deliverEvidence` is the rest.
void showEvidence(EXCEPTION_POINTERS* pointers) {
    crashPointers = pointers;
    told = {};
    dumped = false;
    recordTaken = false;
    SetEvent(helper.begun);
    if (!waitForHelper())
        endWithoutHelper();
}

void waitForRecord() {
    SetEvent(helper.delivered);
    WaitForSingleObject(helper.recorded, kForLog);
}

/// By the crashed thread, which may hold the log's locks, and has some stack again.
void deliverEvidence() {
    detail::checkCrashNames();
    detail::deliverDumpLine(told);
    waitForRecord();
}

// ---- The chain of handlers

GuardFrame* chainHead() {
    GuardFrame* head = nullptr;
    asm volatile("movl %%fs:0, %0" : "=r"(head));
    return head;
}

void setChainHead(GuardFrame* frame) { asm volatile("movl %0, %%fs:0" : : "r"(frame) : "memory"); }

/// Lets the handlers inside of `frame` clean up and takes them off the chain.
/// RtlUnwind returns here with the stack as it was, but keeps no other register. Clang 14
/// exchanges two operands in registers where nearly all others are lost, hence one.
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

[[noreturn]] void takeCrash(EXCEPTION_RECORD* exception, CONTEXT* context) {
    DWORD none = 0;
    if (!crashing.compare_exchange_strong(none, guard.thread)) { // a fault of what follows
        waitForRecord();
        endNow(kCrashStatus);
    }
    endsProcess = true;
    EXCEPTION_POINTERS pointers{exception, context};
    showEvidence(&pointers);
    if (!chainIsIntact()) {
        waitForRecord();
        endNow(kCrashStatus);
    }
    unwindTo(guard.frame, exception);
    __builtin_longjmp(guard.resume, 1);
}

EXCEPTION_DISPOSITION __cdecl onException(EXCEPTION_RECORD* exception, void*, CONTEXT* context,
                                          void*) {
    if ((exception->ExceptionFlags & EXCEPTION_UNWIND) == 0)
        takeCrash(exception, context);
    return ExceptionContinueSearch;
}

/// Is asked before the chain, but takes only what the chain would not bring to the guard.
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

/// With the guard as its handler: the functions between would not let all of them through.
[[noreturn]] void raiseCrash(DWORD code) {
    GuardFrame frame{chainHead(), onException};
    setChainHead(&frame);
    const ULONG_PTR text = reinterpret_cast<ULONG_PTR>(uncaughtException.c_str());
    RaiseException(code, EXCEPTION_NONCONTINUABLE, 1, &text);
    endNow(kCrashStatus);
}

void onAbort(int) {
    if (GetCurrentThreadId() == guard.thread)
        raiseCrash(kAbort);
    waitForGuardedThread();
}

void describeException(const std::type_info& type) {
    uncaughtException << type.name();
    int status = 0;
    char* const name = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
    if (name != nullptr) {
        uncaughtException.clear();
        uncaughtException << name;
        std::free(name); // NOLINT(cppcoreguidelines-no-malloc): the runtime's
    }
    try {
        throw;
    } catch (const std::exception& exception) {
        uncaughtException << ": " << exception.what();
    } catch (...) { // the type is all there is to know
    }
}

/// In place of a handler for all exceptions, at which the stack would be gone.
void onTerminate() {
    if (GetCurrentThreadId() != guard.thread) {
        waitForGuardedThread();
        guard.previousTerminate();
    }
    uncaughtException.clear();
    const std::type_info* const type = abi::__cxa_current_exception_type();
    if (type == nullptr)
        raiseCrash(kAbort);
    describeException(*type);
    raiseCrash(kUncaughtException);
}

// ---- The guard

void startHelper() {
    if (helper.thread != nullptr)
        return;
    for (HANDLE* event : {&helper.begun, &helper.shown, &helper.delivered, &helper.recorded})
        *event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    helper.thread = CreateThread(nullptr, 0, help, nullptr, 0, nullptr);
}

void begin() {
    crashing = 0;
    detail::noteCrashNames();
    startHelper();
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
}

/// Exceptions are not let through: the search for a handler ends here, before anything has
/// been cleaned up, as if this were the thread's first function.
[[gnu::noinline]] int runOutermost(StartFunction start, int argc, char** argv) {
    asm volatile(".cfi_undefined %eip");
    const int status = start(argc, argv);
    asm volatile("" : : : "memory"); // or the call would be a jump
    return status;
}

/// g++ has no __try for this target, so the frame is chained by hand. The compiler's
/// own jump is used since the runtime's would unwind once more.
[[gnu::noinline]] int runChained(StartFunction start, int argc, char** argv) {
    GuardFrame frame{chainHead(), onException};
    guard.frame = &frame;
    guard.outerFrame = frame.previous;
    if (__builtin_setjmp(guard.resume) != 0) {
        deliverEvidence();
        setChainHead(guard.outerFrame);
        return kCrashStatus;
    }
    setChainHead(&frame);
    guard.thread = GetCurrentThreadId();
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
    endNow(status);
}

long writeCrashDump(EXCEPTION_POINTERS* info) {
    if (guard.thread == 0)
        detail::noteCrashNames();
    startHelper();
    crashing = GetCurrentThreadId();
    showEvidence(info);
    deliverEvidence();
    crashing = 0;
    return EXCEPTION_EXECUTE_HANDLER;
}

int32_t writeCrashDump() { return writeCrashDump(nullptr); }

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
