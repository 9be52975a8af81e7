#include "core_crashdump_system.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>

// The stack of an exception is gone when nobody has caught it at last: functions between have
// cleaned up, or have caught it and thrown it on. So it is noted when it is thrown. The
// compiler throws by a function of its runtime, in front of which this one stands.

namespace core::detail {
namespace {

struct Throw {
    const void* exception = nullptr;
    CrashStack stack;
};

// A few, since cleaning up may throw and catch as well.
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
    runtimesThrow(); // so that it need not be looked for when something is wrong
}

const CrashStack* stackOfThrow(const void* exception) {
    for (const Throw& place : throws) {
        if (exception != nullptr && place.exception == exception && place.stack.count != 0)
            return &place.stack;
    }
    return nullptr;
}

} // namespace core::detail

// Weak, so that it gives way where the runtime itself is linked into the program.
extern "C" [[gnu::weak, noreturn]] void __cxa_throw( // NOLINT(bugprone-reserved-identifier)
    void* exception, void* type, void (*destroy)(void*)) {
    using namespace core::detail;
    if (noted)
        note(exception, __builtin_return_address(0));
    if (const ThrowFunction next = runtimesThrow())
        next(exception, type, destroy);
    std::abort();
}
