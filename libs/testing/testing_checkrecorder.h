#pragma once

#include "core_check.h"

#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

/// What tests of programs on these libraries need, for GoogleTest. testing_matchers.h asks
/// what one call does; the recorders have it for a whole test.
namespace test {

/// A failed check, as a handler is told of it; see core::FailureHandler.
struct FailedCheck {
    std::string condition; ///< "CHECKF", or an assertion's own text
    std::string file;      ///< without folders
    int32_t line = 0;      ///< as the check's site names it
    int32_t level = 0;     ///< of the check
    std::string message;   ///< empty for none

    bool operator==(const FailedCheck&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const FailedCheck& check) {
        return out << check.condition << " at " << check.file << ':' << check.line << " level "
                   << check.level << " (" << check.message << ')';
    }
};

/// While it lives, failed checks of all threads are recorded here, and the program goes on.
/// Nobody else is told of them. Of several the newest records; they are destroyed in the
/// opposite order of their making, on any thread.
class CheckRecorder {
public:
    CheckRecorder() : d_handler(core::failureHandler()) {
        const std::lock_guard lock(s_mutex);
        d_outer = std::exchange(s_newest, this);
        core::detail::storeFailureHandler(&record);
    }
    ~CheckRecorder() {
        const std::lock_guard lock(s_mutex);
        s_newest = d_outer;
        core::detail::storeFailureHandler(d_handler);
    }
    CheckRecorder(const CheckRecorder&) = delete;
    CheckRecorder& operator=(const CheckRecorder&) = delete;

    /// The checks that failed since the last call, in order.
    std::vector<FailedCheck> take() {
        const std::lock_guard lock(s_mutex);
        return std::exchange(d_failed, {});
    }

    /// The same by condition and file, "CHECKF viewer.cpp", where lines may move.
    std::vector<std::string> takeSites() {
        std::vector<std::string> sites;
        for (const FailedCheck& check : take())
            sites.push_back(check.condition + ' ' + check.file);
        return sites;
    }

private:
    static bool record(const char* condition, const char* file, int32_t line, int32_t level,
                       const std::string& message) {
        const std::lock_guard lock(s_mutex);
        if (s_newest != nullptr) // else it has just gone
            s_newest->d_failed.push_back(
                {condition != nullptr ? condition : "(null)", file, line, level, message});
        return false;
    }

    inline static std::mutex s_mutex;
    inline static CheckRecorder* s_newest = nullptr;
    CheckRecorder* d_outer;
    core::FailureHandler d_handler;
    std::vector<FailedCheck> d_failed;
};

/// Sets the assertion level for a scope; see core::assertionLevel.
class ScopedAssertionLevel {
public:
    /// Until the scope ends.
    explicit ScopedAssertionLevel(int32_t level) : d_previous(core::assertionLevel()) {
        core::setAssertionLevel(level);
    }
    ~ScopedAssertionLevel() { core::setAssertionLevel(d_previous); }
    ScopedAssertionLevel(const ScopedAssertionLevel&) = delete;
    ScopedAssertionLevel& operator=(const ScopedAssertionLevel&) = delete;

private:
    int32_t d_previous;
};

} // namespace test
