#include "core_guard.h"

#include "core_log.h"

#include <algorithm>

namespace core {
namespace {

constexpr std::string_view kNoGuardSwitch = "jitd";

} // namespace

int runGuardedWith(StartFunction start, int argc, char** argv) {
    const bool unguarded =
        argc > 1 && std::find(argv + 1, argv + argc, kNoGuardSwitch) != argv + argc;
    return unguarded ? start(argc, argv) : detail::runUnderGuard(start, argc, argv);
}

void onInvalidParameter(std::string_view expression, std::string_view function,
                        std::string_view file, uint32_t line) {
    CORE_LOGF(kChannelCrit, "Invalid parameter detected (exp=%s) (func=%s) (file=%s:%d)",
              expression, function, file, line);
}

} // namespace core
