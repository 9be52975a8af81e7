#include "core_check.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace core {
namespace {

// Constant-initialised, so that checks in any static initialiser find them.
constinit std::atomic<FailureHandler> slot{&failDefault};
constinit std::atomic<int32_t> level{1};
constinit std::atomic<bool> locked{false};
constinit thread_local ThreadFlags flags{false, false, false, 0};

/// Counts the failures that a thread is handling.
class Handling {
public:
    Handling() { ++flags.failures; }
    ~Handling() { --flags.failures; }
    Handling(const Handling&) = delete;
    Handling& operator=(const Handling&) = delete;
};

} // namespace

FailureHandler failureHandler() { return slot.load(std::memory_order_relaxed); }

void detail::storeFailureHandler(FailureHandler handler) {
    slot.store(handler != nullptr ? handler : &failDefault, std::memory_order_relaxed);
}

bool detail::handlerLocked() { return locked.load(std::memory_order_relaxed); }

void detail::storeHandlerLock(bool lock) { locked.store(lock, std::memory_order_relaxed); }

int32_t assertionLevel() { return level.load(std::memory_order_relaxed); }

void setAssertionLevel(int32_t newLevel) { level.store(newLevel, std::memory_order_relaxed); }

void raise(const char* condition, const CheckSite& site, int32_t checkLevel,
           const std::string& message) {
    if (assertionLevel() < checkLevel || flags.failures >= kMaxNestedFailures)
        return;
    const Handling handling;
    if (failureHandler()(condition, site.file, site.line, checkLevel, message))
        deliberateFault();
}

void raiseAlert(const char* condition, const CheckSite& site, const std::string& message) {
    if (assertionLevel() >= 0 && alertDefault(condition, site.file, site.line, 0, message))
        deliberateFault();
}

// The pointer is volatile as well as its target: compilers then neither drop the
// store nor turn it into a trap instruction, and what follows stays reachable.
__attribute__((noinline, no_sanitize("undefined"))) void deliberateFault() {
    int* volatile nowhere = nullptr;
    *reinterpret_cast<volatile int*>(nowhere) = 0; // NOLINT(clang-analyzer-core*)
    std::exit(0);
}

bool consoleHandler(const char*, const char* file, int32_t line, int32_t,
                    const std::string& message) {
    std::fprintf(stderr, "GASSERT failed at %s:%d (%s)\n", file != nullptr ? file : "",
                 static_cast<int>(line), message.c_str());
    return false;
}

ThreadFlags& threadFlags() { return flags; }

} // namespace core
