#pragma once

#include "core_check.h"

#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// One failed check as the slot's handler received it.
struct FailedCheck {
    std::string condition;
    std::string file;
    int32_t line = 0;
    int32_t level = 0;
    std::string message;

    bool operator==(const FailedCheck&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const FailedCheck& check) {
        return out << check.condition << " at " << check.file << ':' << check.line << " level "
                   << check.level << " (" << check.message << ')';
    }
};

/// While it lives, failed checks are recorded here and answered with "continue".
/// One at a time; checks may fail on any thread.
class CheckRecorder {
public:
    CheckRecorder() : d_previous(core::failureHandler()) {
        s_recorded.clear();
        core::detail::storeFailureHandler(&record);
    }
    ~CheckRecorder() { core::detail::storeFailureHandler(d_previous); }
    CheckRecorder(const CheckRecorder&) = delete;
    CheckRecorder& operator=(const CheckRecorder&) = delete;

    /// The checks that failed since the last call, in order.
    std::vector<FailedCheck> take() {
        const std::lock_guard lock(s_mutex);
        return std::exchange(s_recorded, {});
    }

    /// The same by condition and file, "CHECKF qt_button.cpp", where lines may move.
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
        s_recorded.push_back(
            {condition != nullptr ? condition : "(null)", file, line, level, message});
        return false;
    }

    inline static std::mutex s_mutex;
    inline static std::vector<FailedCheck> s_recorded;
    core::FailureHandler d_previous;
};

/// Sets the assertion level for a scope.
class ScopedAssertionLevel {
public:
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
