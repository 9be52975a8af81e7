#include "core_crashdump_system.h"

#include <cxxabi.h>

#include <array>
#include <cstdlib>
#include <exception>
#include <typeinfo>
#include <utility>

// The runtime's functions keep no frame pointer, so debuggers, which walk a dump's stack
// by it, would miss their caller. The functions here wrap them. A noexcept function ends
// the program only after the stack up to it is unwound, so the calls are recorded at the
// throw.

using Destroy = void(_GLIBCXX_CDTOR_CALLABI*)(void*);

namespace core {
namespace {

/// Calls, the innermost first, as functions, so that debuggers print names and lines.
using Calls = std::array<void (*)(), 32>;

} // namespace

/// Type and text of the uncaught C++ exception. A dump holds it, and names its address as
/// the first parameter of the exception.
constinit detail::FixedText<4096> uncaughtException;

/// Where it was thrown.
constinit Calls uncaughtThrow{};

namespace {

struct Throw {
    const void* exception = nullptr;
    Calls calls{};
};

// A few, since cleanup may throw and catch, too.
constinit std::array<Throw, 4> throws;
constinit size_t nextThrow = 0;
constinit std::atomic<DWORD> noted{0};

/// What a function's frame begins with.
struct Frame {
    const Frame* caller;
    uintptr_t returnAddress;
};

/// By the frame pointers, as debuggers do.
void walk(const Frame* frame, Calls& calls) {
    const void* const base = reinterpret_cast<const NT_TIB*>(NtCurrentTeb())->StackBase;
    const Frame* inner = nullptr;
    calls = {};
    for (auto& call : calls) {
        if (frame <= inner || frame >= base || reinterpret_cast<uintptr_t>(frame) % 4 != 0)
            return;
        // What follows a call may belong to the next line or function.
        call = reinterpret_cast<void (*)()>(frame->returnAddress - 1);
        inner = std::exchange(frame, frame->caller);
    }
}

void note(const void* exception, const void* frame) {
    Throw& place = throws[nextThrow++ % throws.size()];
    place.exception = nullptr;
    walk(static_cast<const Frame*>(frame), place.calls);
    place.exception = exception;
}

void findThrow() {
    const void* const exception = detail::currentException();
    for (const Throw& place : throws) {
        if (exception != nullptr && place.exception == exception)
            uncaughtThrow = place.calls;
    }
}

constinit detail::FixedText<512> uncaughtType;
constinit detail::FixedText<4096> uncaughtWords;

void writeException() {
    uncaughtException.clear();
    uncaughtException << uncaughtType.view() << uncaughtWords.view();
}

/// A function of the runtime that one of ours wraps.
template <typename Function>
Function runtimes(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleA("libstdc++-6.dll"), name)));
}

auto runtimesThrow() {
    static const auto function = runtimes<void (*)(void*, std::type_info*, Destroy)>("__cxa_throw");
    return function;
}

auto runtimesTerminate() {
    static const auto function = runtimes<void (*)()>("_ZSt9terminatev");
    return function;
}

} // namespace

void detail::noteThrows(DWORD thread) {
    noted = thread;
    runtimesThrow(); // found now, not when something is wrong
    runtimesTerminate();
}

void detail::describeException() {
    uncaughtType.clear();
    uncaughtWords.clear();
    uncaughtType << abi::__cxa_current_exception_type()->name();
    findThrow();
    writeException(); // before calls that may not return
    detail::addExceptionText(uncaughtWords);
    writeException();
    detail::demangleType(uncaughtType);
    writeException();
}

ULONG_PTR detail::uncaughtText() { return reinterpret_cast<ULONG_PTR>(uncaughtException.c_str()); }

} // namespace core

[[gnu::noinline]] void abi::__cxa_throw(void* exception, std::type_info* type, Destroy destroy) {
    if (GetCurrentThreadId() == core::noted)
        core::note(exception, __builtin_frame_address(0));
    if (const auto next = core::runtimesThrow())
        next(exception, type, destroy);
    std::abort();
}

[[gnu::noinline]] void abi::__cxa_pure_virtual() { std::terminate(); }

[[gnu::noinline]] void std::terminate() noexcept {
    if (const auto next = core::runtimesTerminate())
        next();
    std::abort();
}
