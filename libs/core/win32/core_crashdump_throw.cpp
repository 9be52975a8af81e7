#include <windows.h>

#include <cstdlib>

// The runtime's own function keeps no frame pointer, by which debuggers walk a dump's stack,
// so that they would miss the function that has thrown. This one stands in front of it.

namespace {

using ThrowFunction = void (*)(void*, void*, void*);

ThrowFunction runtimesThrow() {
    static const auto function = reinterpret_cast<ThrowFunction>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleA("libstdc++-6.dll"), "__cxa_throw")));
    return function;
}

} // namespace

extern "C" [[noreturn, gnu::noinline]] void
__cxa_throw(void* exception, void* type, void* destroy) { // NOLINT(bugprone-reserved-identifier)
    if (const ThrowFunction next = runtimesThrow())
        next(exception, type, destroy);
    std::abort();
}
