#include "core_crashdump_system.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>

// When an exception turns out to be uncaught, its stack is gone: functions in between
// have cleaned up, or have caught and rethrown it. So the stack is recorded at the throw:
// this function replaces the runtime's, and calls it.

namespace core::detail {
namespace {

struct Throw {
    const void* exception = nullptr;
    CrashStack stack;
};

// A few, since cleanup may throw and catch, too.
constinit std::array<Throw, 4> throws;
constinit size_t nextThrow = 0;
constinit thread_local bool noted = false;

using ThrowFunction = void (*)(void*, void*, void (*)(void*));

ThrowFunction runtimesThrow() {
    static const auto function = reinterpret_cast<ThrowFunction>(::dlsym(RTLD_NEXT, "__cxa_throw"));
    return function;
}

[[gnu::noinline]] void note(const void* exception, const void* first) {
    Throw& place = throws[nextThrow++ % throws.size()];
    place.exception = nullptr;
    place.stack.thread = ::gettid();
    place.stack.count = 0;
    place.stack.top = 0;
    walkFrom(place.stack, first);
    place.exception = exception;
}

} // namespace

void noteThrows(bool on) {
    noted = on;
    runtimesThrow(); // found now, not when something is wrong
}

const CrashStack* stackOfThrow(const void* exception) {
    for (const Throw& place : throws) {
        if (exception != nullptr && place.exception == exception && place.stack.count != 0)
            return &place.stack;
    }
    return nullptr;
}

} // namespace core::detail

// Weak, so that the runtime's takes precedence if it is linked statically.
extern "C" [[gnu::weak, noreturn]] void __cxa_throw( // NOLINT(bugprone-reserved-identifier)
    void* exception, void* type, void (*destroy)(void*)) {
    using namespace core::detail;
    if (noted)
        note(exception, __builtin_return_address(0));
    if (const ThrowFunction next = runtimesThrow())
        next(exception, type, destroy);
    std::abort();
}
