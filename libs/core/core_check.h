#pragma once

#include <cstdint>
#include <string>

/// Checked assertions: a broken expectation is reported to one replaceable
/// handler, which answers whether the program must stop. Messages arrive here as
/// finished text; this module knows neither the formatter nor the log.
namespace core {

/// Where a check stands, as reports name it: a source file's base name and a line.
/// Both are part of the interface (people exclude and search by them), so sites
/// with fixed numbers are named constants beside the code they belong to.
struct CheckSite {
    const char* file; ///< without folders
    int32_t line;     ///< as reports name it
};

/// Takes the condition's text (null is allowed), the site, the check's level and the
/// message. True means: stop the program at once. Called on the failing thread, any
/// thread; must not throw. Checks that fail inside it call it again; beyond
/// kMaxNestedFailures of them on one thread, no more are reported.
using FailureHandler = bool (*)(const char* condition, const char* file, int32_t line,
                                int32_t level, const std::string& message);

/// The handler in the check slot; `failDefault` at start, never null.
FailureHandler failureHandler();

/// How many nested failures are reported, see FailureHandler.
inline constexpr int32_t kMaxNestedFailures = 16;

/// A check of level L runs only while the assertion level is at least L. It is 1 at
/// start; a negative level turns off all reports, but no fallback.
int32_t assertionLevel();
void setAssertionLevel(int32_t level);

/// Reports a failed check to the handler if the assertion level admits it, and
/// stops the program by `deliberateFault` when the handler says so.
void raise(const char* condition, const CheckSite& site, int32_t level, const std::string& message);

/// Reports a failed alert to `alertDefault` under the same rules.
void raiseAlert(const char* condition, const CheckSite& site, const std::string& message);

/// Ends the process by an access fault, which the crash guard sees first; exits with
/// status 0 if no fault happens.
[[noreturn]] void deliberateFault();

/// The default handlers of core_assert.h; the slot starts with the first.
bool failDefault(const char* condition, const char* file, int32_t line, int32_t level,
                 const std::string& message);
bool alertDefault(const char* condition, const char* file, int32_t line, int32_t level,
                  const std::string& message);

/// Writes "GASSERT failed at FILE:LINE (MESSAGE)" to standard error; never stops.
bool consoleHandler(const char* condition, const char* file, int32_t line, int32_t level,
                    const std::string& message);

/// Re-entry guards of the diagnostics, one set per thread. Plain data without a
/// destructor, so it may be touched at any time of a thread's or the process's life.
struct ThreadFlags {
    bool inAssert;    ///< inside failDefault
    bool inAlert;     ///< inside alertDefault
    bool inWrite;     ///< inside the master logger's write path
    int32_t failures; ///< how many failed checks are being handled
};
/// Of the calling thread.
ThreadFlags& threadFlags();

namespace detail {

/// Replaces the handler, whatever the lock says; null puts `failDefault` back. For
/// core::Assert::setFailureHandler, and for tests.
void storeFailureHandler(FailureHandler handler);

/// See core::Assert::lockHandler.
bool handlerLocked();
void storeHandlerLock(bool locked);

/// Raises and returns false, so that a check is one expression with its condition's
/// value; inline, so that compilers see that value.
inline bool failed(const char* condition, const CheckSite& site, int32_t level,
                   const std::string& message) {
    raise(condition, site, level, message);
    return false;
}

constexpr const char* baseName(const char* path) {
    const char* base = path;
    for (const char* p = path; *p != '\0'; ++p) {
        if (*p == '/' || *p == '\\')
            base = p + 1;
    }
    return base;
}

inline std::string messageOf() { return {}; }
inline const std::string& messageOf(const std::string& message) { return message; }

} // namespace detail
} // namespace core

#define CORE_CHECK_HERE (core::CheckSite{core::detail::baseName(__FILE__), __LINE__})

/// Level-0 check with a fixed site. An expression with the condition's value; the
/// message is evaluated only for a report:
///     if (!CHECKF_AT(kAlreadyOpen, !isOpen(), core::format("'%s' is open", d_name)))
///         return false;
#define CHECKF_AT(site, condition, ...)                                                            \
    ((condition)                                                                                   \
         ? true                                                                                    \
         : (core::assertionLevel() >= 0 &&                                                         \
            core::detail::failed("CHECKF", (site), 0, core::detail::messageOf(__VA_ARGS__))))

/// Level-0 check that is reported with this file and line.
#define CHECKF(condition, ...) CHECKF_AT(CORE_CHECK_HERE, condition __VA_OPT__(, ) __VA_ARGS__)

/// Level-1 assertion: a statement, reported with the condition's own text. Below
/// level 1 the condition is not even evaluated.
#define GASSERT_AT(site, condition, ...)                                                           \
    CORE_ASSERT_IMPL(#condition, site, condition, core::detail::messageOf(__VA_ARGS__))
#define GASSERT(condition, ...)                                                                    \
    CORE_ASSERT_IMPL(#condition, CORE_CHECK_HERE, condition, core::detail::messageOf(__VA_ARGS__))
#define CORE_ASSERT_IMPL(text, site, condition, message)                                           \
    do {                                                                                           \
        if (core::assertionLevel() >= 1 && !(condition))                                           \
            core::raise(text, (site), 1, message);                                                 \
    } while (false)

/// Level-0 alert: something worth a report that is nobody's bug. A statement.
#define GALERT_AT(site, condition, ...)                                                            \
    CORE_ALERT_IMPL(#condition, site, condition, core::detail::messageOf(__VA_ARGS__))
#define GALERT(condition, ...)                                                                     \
    CORE_ALERT_IMPL(#condition, CORE_CHECK_HERE, condition, core::detail::messageOf(__VA_ARGS__))
#define CORE_ALERT_IMPL(text, site, condition, message)                                            \
    do {                                                                                           \
        if (core::assertionLevel() >= 0 && !(condition))                                           \
            core::raiseAlert(text, (site), message);                                               \
    } while (false)
