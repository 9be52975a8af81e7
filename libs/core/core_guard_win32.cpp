#include "core_guard.h"

#include "core_crashdump_calls.h"
#include "core_utf.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace core {
namespace {

/// Stack that the system keeps back for the handler of a stack overflow, in bytes.
constexpr ULONG kHandlerStackSize = 65536;

/// A link of the thread's chain of exception handlers, which begins at fs:0. The
/// system knows the first two fields and hands the link to its handler.
struct GuardFrame {
    GuardFrame* previous;
    PEXCEPTION_HANDLER handler;
    void* resume[5]; // as __builtin_setjmp wants it
    bool handling = false;
    std::optional<detail::DumpResult> unrecorded; // a dump whose lines are still to come
};

[[noreturn]] void endNow(int status) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    std::abort();
}

GuardFrame* chainHead() {
    GuardFrame* head = nullptr;
    asm volatile("movl %%fs:0, %0" : "=r"(head));
    return head;
}

void setChainHead(GuardFrame* frame) { asm volatile("movl %0, %%fs:0" : : "r"(frame) : "memory"); }

/// Lets the handlers inside of `frame` clean up and takes them off the chain.
/// RtlUnwind returns here with the stack as it was, but keeps no other register. Clang 14
/// exchanges two operands in registers where nearly all others are lost, hence one.
void unwindTo(GuardFrame* frame, EXCEPTION_RECORD* record) {
    void* arguments[] = {frame, record};
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
                                          CONTEXT* context, void*) {
    if ((record->ExceptionFlags & EXCEPTION_UNWIND) != 0)
        return ExceptionContinueSearch;
    auto* frame = static_cast<GuardFrame*>(establisher);
    if (std::exchange(frame->handling, true))
        endNow(kCrashStatus); // a fault of what follows
    EXCEPTION_POINTERS pointers{record, context};
    // Next to nothing is left of a stack that has overflowed; Wine does not even keep what
    // it guarantees. There is a stack again after the jump.
    if (record->ExceptionCode == EXCEPTION_STACK_OVERFLOW)
        detail::writeDumpInDistress(&pointers, frame->unrecorded.emplace());
    else
        writeCrashDump(&pointers);
    unwindTo(frame, record);
    __builtin_longjmp(frame->resume, 1);
}

/// g++ has no __try for this target, so the frame is chained by hand. The compiler's
/// own jump is used since the runtime's would unwind once more.
int runChained(StartFunction start, int argc, char** argv) {
    GuardFrame frame{chainHead(), onException, {}, false, {}};
    if (__builtin_setjmp(frame.resume) != 0) {
        if (frame.unrecorded)
            detail::recordDump(*frame.unrecorded);
        setChainHead(frame.previous);
        return kCrashStatus;
    }
    setChainHead(&frame);
    const int status = detail::runCatching(start, argc, argv);
    setChainHead(frame.previous);
    return status;
}

std::string utf8Of(const wchar_t* text) {
    std::string utf8 = "(null)"; // what release builds of the runtime pass
    return text != nullptr && !toUtf8(text, utf8) ? "?" : utf8;
}

void __cdecl invalidParameter(const wchar_t* expression, const wchar_t* function,
                              const wchar_t* file, unsigned int line, uintptr_t) {
    onInvalidParameter(utf8Of(expression), utf8Of(function), utf8Of(file), line);
}

} // namespace

void endProcess(int status) {
    std::fflush(nullptr);
    endNow(status);
}

int detail::runUnderGuard(StartFunction start, int argc, char** argv) {
    ULONG handlerStack = kHandlerStackSize;
    SetThreadStackGuarantee(&handlerStack);
    const auto previous = _set_invalid_parameter_handler(invalidParameter);
    const int status = runChained(start, argc, argv);
    _set_invalid_parameter_handler(previous);
    return status;
}

} // namespace core
