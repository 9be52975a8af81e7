// Checks, and what happens when they fail.

#include "child_process.h"
#include "core_assert.h"
#include "core_check.h"
#include "core_globals.h"
#include "core_log.h"
#include "core_testinterface.h"
#include "core_timespec.h"
#include "core_varargs.h"
#include "output_capture.h"
#include "scripted_log.h"
#include "temp_folder.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"
#include "testing_matchers.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <tuple>

namespace {

using test::FailedCheck;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr core::CheckSite kSite{"some_module.cpp", 7};

TEST(Check, FailsWithItsSiteAndAnswersItsCondition) {
    test::CheckRecorder checks;
    EXPECT_TRUE(CHECKF_AT(kSite, 1 + 1 == 2, "never made"));
    EXPECT_FALSE(CHECKF_AT(kSite, 1 + 1 == 3, "what"));
    EXPECT_FALSE(CHECKF(false));
    const int32_t checkf = __LINE__ - 1;
    GASSERT(checkf < 0);
    if (false)
        GASSERT_AT(kSite, false); // each macro is one statement
    else
        GASSERT_AT(kSite, checkf > 0 && checkf < 0, "impossible");
    EXPECT_THAT(checks.take(),
                ElementsAre(FailedCheck{"CHECKF", "some_module.cpp", 7, 0, "what"},
                            FailedCheck{"CHECKF", "core_assert_test.cpp", checkf, 0, ""},
                            FailedCheck{"checkf < 0", "core_assert_test.cpp", checkf + 2, 1, ""},
                            FailedCheck{"checkf > 0 && checkf < 0", "some_module.cpp", 7, 1,
                                        "impossible"}));
}

TEST(Check, LevelsDecideWhatIsReportedAndWhatIsEvaluated) {
    test::CheckRecorder checks;
    int evaluated = 0;
    const auto refuse = [&] { return ++evaluated < 0; };
    const auto message = [&] { return std::to_string(++evaluated); };
    // Levels, reports, and evaluations of two conditions and two messages.
    const std::tuple<int32_t, size_t, int> rows[] = {{1, 2, 4}, {0, 1, 2}, {-1, 0, 1}};
    for (const auto& [level, reports, evaluations] : rows) {
        evaluated = 0;
        const test::ScopedAssertionLevel scope(level);
        EXPECT_FALSE(CHECKF_AT(kSite, refuse(), message()));
        GASSERT_AT(kSite, refuse(), message());
        EXPECT_EQ(checks.take().size(), reports) << level;
        EXPECT_EQ(evaluated, evaluations) << level;
    }
}

bool failsItself(const char*, const char*, int32_t, int32_t, const std::string&) {
    std::fputs("x", stderr);
    return !CHECKF_AT(kSite, false) && false;
}

TEST(Check, HandlersThatFailThemselvesComeToAnEnd) {
    const test::CheckRecorder restores;
    core::detail::storeFailureHandler(&failsItself);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(test::captureOutput([] { EXPECT_FALSE(CHECKF_AT(kSite, false)); }).err,
                  std::string(core::kMaxNestedFailures, 'x'));
    }
}

/// Puts the check slot's state back.
class AssertTest : public testing::Test {
protected:
    ~AssertTest() override {
        core::detail::storeHandlerLock(false);
        core::detail::storeFailureHandler(nullptr);
    }
};

TEST_F(AssertTest, HandlersLogWhatFailedAndContinue) {
    test::LogRecorder log({core::kChannelCrit});
    EXPECT_FALSE(core::failDefault("a > b", "f.cpp", 7, 0, "50% off"));
    EXPECT_FALSE(core::failDefault(nullptr, "f.cpp", 7, 0, "not reported"));
    EXPECT_FALSE(core::alertDefault("a > b", "f.cpp", 7, 0, "m"));
    EXPECT_FALSE(core::failDefault("a > b", nullptr, 7, 0, "m"));
    EXPECT_FALSE(core::alertDefault("a > b", nullptr, 7, 0, ""));
    EXPECT_FALSE(core::alertDefault(nullptr, "f.cpp", 7, 0, ""));
    EXPECT_THAT(log.take(), ElementsAre("CRIT GASSERT failed at f.cpp:7 (a > b) (50% off)",
                                        "CRIT ERROR!! ASSERT failed at f.cpp:7",
                                        "CRIT GALERT at f.cpp:7 (a > b) (m)",
                                        "CRIT GASSERT failed at :7 (a > b) (m)",
                                        "CRIT GALERT at :7 (a > b)", "CRIT GALERT at f.cpp:7 ()"));
}

TEST_F(AssertTest, FailuresInsideTheirOwnHandlingAreRefused) {
    // The check's observer raises an alert, whose line the log refuses as recursive.
    const test::ScriptedObserver observer({core::kChannelCrit}, [](const std::string&) {
        CHECKF_AT(kSite, false);
        GALERT_AT(kSite, false);
    });
    EXPECT_THAT(test::captureOutput([] { CHECKF_AT(kSite, false); }).err,
                StartsWith("Assert:failDefault - recursive call\n"));
    EXPECT_THAT(test::captureOutput([] { GALERT_AT(kSite, false); }).err,
                EndsWith("Assert:alertDefault - recursive call\n"));
    EXPECT_FALSE(core::threadFlags().inAssert);
    EXPECT_FALSE(core::threadFlags().inAlert);
}

TEST_F(AssertTest, LockedHandlersStay) {
    EXPECT_TRUE(core::Assert::setConsoleHandler());
    core::Assert::lockHandler(true);
    EXPECT_THAT([] { EXPECT_FALSE(core::Assert::setFailureHandler(core::alertDefault)); },
                test::Logs("WARN core::Assert::setFailureHandler - handler locked"));
    const test::Output output = test::captureOutput([] { CHECKF_AT(kSite, false, "100% bad"); });
    EXPECT_EQ(output.out + output.err, "GASSERT failed at some_module.cpp:7 (100% bad)\n");
    core::Assert::lockHandler(false);
    EXPECT_TRUE(core::Assert::setFailureHandler(nullptr));
    EXPECT_EQ(core::failureHandler(), core::failDefault);
}

TEST_F(AssertTest, GlobalsHoldLogAndHandlerForTheirLifetime) {
    std::string seen;
    {
        const core::Globals globals(
            std::make_unique<test::ScriptedImpl>([&](const std::string& line) { seen += line; }));
        core::logText(core::kChannelInfo, "line");
        EXPECT_EQ(core::failureHandler(), core::failDefault);
    }
    core::logText(core::kChannelInfo, "line");
    EXPECT_EQ(seen, "0 INFO line");
    EXPECT_EQ(core::failureHandler(), core::consoleHandler);
}

CHILD_CASE(failsAroundMain) {} // see core_check_early_test.cpp

TEST(AssertProcess, HandlersAreReadyBeforeAndAfterMain) {
    const std::string failed = "[CRIT] GASSERT failed at some_module.cpp:7 (CHECKF) ";
    EXPECT_THAT(test::runChild("failsAroundMain").out,
                AllOf(StartsWith(failed + "(early)\n"), EndsWith(failed + "(late)\n")));
}

CHILD_CASE(failsAtTwoSites) {
    std::filesystem::current_path(argument);
    const core::DefaultGlobals globals;
    for (const char* list : {"assert.exclude", "settings/assert.exclude"})
        std::filesystem::remove(list); // has been read
    CHECKF_AT(kSite, false, "why");
    CHECKF_AT((core::CheckSite{"some_module.cpp", 8}), false);
    GALERT_AT(kSite, 1 > 2); // alerts are never excluded
    auto& reports = core::TestInterface::instance();
    std::printf("%d,%d", static_cast<int>(reports.reportCount(core::FailureType::Assertion)),
                static_cast<int>(reports.reportCount(core::FailureType::Alert)));
}

TEST(AssertProcess, ExcludedChecksAreLoggedOnly) {
    const test::TempFolder folder;
    const core::CivilTime now = core::localCivilTime(core::now());
    const std::string today = core::format(" %04d-%02d-%02d\n", now.year, now.month, now.day);
    test::writeFile(folder / "assert.exclude", "some_module.cpp 7" + today);
    EXPECT_THAT(test::runChild("failsAtTwoSites", folder.path()).out,
                EndsWith("[CRIT] EXCLUDED_ASSERT failed at some_module.cpp:7 (CHECKF) (why)\n"
                         "[CRIT] GASSERT failed at some_module.cpp:8 (CHECKF) ()\n"
                         "[CRIT] GALERT at some_module.cpp:7 (1 > 2)\n1,1"));
    // A list in the settings folder takes the place of the other.
    std::filesystem::create_directory(test::systemPath(folder / "settings"));
    test::writeFile(folder / "settings/assert.exclude", "some_module.cpp 8" + today);
    EXPECT_THAT(test::runChild("failsAtTwoSites", folder.path()).out,
                HasSubstr("[CRIT] GASSERT failed at some_module.cpp:7 (CHECKF) (why)\n"
                          "[CRIT] EXCLUDED_ASSERT failed at some_module.cpp:8 (CHECKF)\n"));
}

} // namespace
