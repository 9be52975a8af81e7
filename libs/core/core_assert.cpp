#include "core_assert.h"

#include "core_log.h"
#include "core_testinterface.h"

#include <cstdio>

namespace core {
namespace {

/// Sets a re-entry flag for a scope.
class Entered {
public:
    explicit Entered(bool& flag) : d_flag(flag) { d_flag = true; }
    ~Entered() { d_flag = false; }
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;

private:
    bool& d_flag;
};

/// Logs "WHAT FILE:LINE (CONDITION)", with the message in brackets of its own if
/// there is one.
void logFailure(const char* what, const char* condition, const char* file, int32_t line,
                const std::string& message) {
    if (message.empty())
        CORE_LOGF(kChannelCrit, "%s %s:%d (%s)", what, file, line, condition);
    else
        CORE_LOGF(kChannelCrit, "%s %s:%d (%s) (%s)", what, file, line, condition, message);
}

/// False, and nothing else is done, where the question finds too little memory.
template <typename Question>
bool isSo(Question&& question) {
    try {
        return question();
    } catch (...) {
        return false;
    }
}

/// Leaves the answer to the settings even where there is no memory for a report.
bool reportAndAnswer(FailureType type, const char* condition, const char* file, int32_t line,
                     int32_t level, const std::string& message) {
    TestInterface& tests = TestInterface::instance();
    (void)isSo([&] {
        tests.report(type, condition, file, line, level, message);
        return true;
    });
    return isSo([&] { return tests.abortsOn(type); });
}

bool handleAssertion(const char* condition, const char* file, int32_t line, int32_t level,
                     const std::string& message) {
    if (isSo([&] { return TestInterface::instance().isExcluded(file, line); })) {
        logFailure("EXCLUDED_ASSERT failed at", condition, file, line, message);
        return false;
    }
    // Unlike its siblings this line always shows the message, an empty one as "()".
    CORE_LOGF(kChannelCrit, "GASSERT failed at %s:%d (%s) (%s)", file, line, condition, message);
    return reportAndAnswer(FailureType::Assertion, condition, file, line, level, message);
}

bool handleAlert(const char* condition, const char* file, int32_t line, int32_t level,
                 const std::string& message) {
    logFailure("GALERT at", condition, file, line, message);
    return reportAndAnswer(FailureType::Alert, condition, file, line, level, message);
}

const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

} // namespace

bool Assert::setFailureHandler(FailureHandler handler) {
    if (detail::handlerLocked()) {
        logFrom(kChannelWarn, "core::Assert::setFailureHandler", "handler locked");
        return false;
    }
    detail::storeFailureHandler(handler);
    return true;
}

bool Assert::setConsoleHandler() { return setFailureHandler(consoleHandler); }

void Assert::lockHandler(bool locked) { detail::storeHandlerLock(locked); }

bool failDefault(const char* condition, const char* file, int32_t line, int32_t level,
                 const std::string& message) {
    const char* const where = orEmpty(file);
    if (condition == nullptr) {
        CORE_LOGF(kChannelCrit, "ERROR!! ASSERT failed at %s:%d", where, line);
        return false;
    }
    bool& inAssert = threadFlags().inAssert;
    if (inAssert) {
        std::fputs("Assert:failDefault - recursive call\n", stderr);
        return false;
    }
    const Entered entered(inAssert);
    return handleAssertion(condition, where, line, level, message);
}

bool alertDefault(const char* condition, const char* file, int32_t line, int32_t level,
                  const std::string& message) {
    bool& inAlert = threadFlags().inAlert;
    if (inAlert) {
        std::fputs("Assert:alertDefault - recursive call\n", stderr);
        return false;
    }
    const Entered entered(inAlert);
    return handleAlert(orEmpty(condition), orEmpty(file), line, level, message);
}

} // namespace core
