#include "core_assert.h"

#include "check_recorder.h"
#include "child_process.h"
#include "core_globals.h"
#include "core_log.h"
#include "core_testinterface.h"
#include "core_timespec.h"
#include "core_varargs.h"
#include "log_recorder.h"
#include "output_capture.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr core::CheckSite kSite{"some_module.cpp", 7};

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
    test::LogRecorder log;
    EXPECT_TRUE(core::Assert::setConsoleHandler());
    core::Assert::lockHandler(true);
    EXPECT_FALSE(core::Assert::setFailureHandler(core::alertDefault));
    const test::Output output = test::captureOutput([] { CHECKF_AT(kSite, false, "100% bad"); });
    EXPECT_EQ(output.out + output.err, "GASSERT failed at some_module.cpp:7 (100% bad)\n");
    EXPECT_THAT(log.take(), ElementsAre("WARN core::Assert::setFailureHandler - handler locked"));
    core::Assert::lockHandler(false);
    EXPECT_TRUE(core::Assert::setFailureHandler(nullptr));
    EXPECT_EQ(core::failureHandler(), core::failDefault);
}

TEST_F(AssertTest, GlobalsHoldLogAndHandlerForTheirLifetime) {
    std::string seen;
    {
        const core::Globals globals(std::make_unique<test::ScriptedImpl>(
            [&](const std::string& line) { seen += line; }, [&] { seen += " destroyed"; }));
        core::logText(core::kChannelInfo, "line");
        EXPECT_EQ(core::failureHandler(), core::failDefault);
        EXPECT_EQ(seen, "0 INFO line");
    }
    core::logText(core::kChannelInfo, "line");
    EXPECT_EQ(seen, "0 INFO line destroyed");
    EXPECT_EQ(core::failureHandler(), core::consoleHandler);
}

CHILD_CASE(failsAroundMain) {} // see core_check_early_test.cpp

TEST(AssertProcess, HandlersAreReadyBeforeAndAfterMain) {
    const std::string failed = "[CRIT] GASSERT failed at some_module.cpp:7 (CHECKF) ";
    EXPECT_THAT(test::runChild("failsAroundMain").out,
                AllOf(StartsWith(failed + "(early)\n"), EndsWith(failed + "(late)\n")));
}

CHILD_CASE(failsAtTwoSites) {
    using Type = core::FailureType;
    std::filesystem::current_path(argument);
    const core::DefaultGlobals globals;
    for (const char* list : {"assert.exclude", "settings/assert.exclude"})
        std::filesystem::remove(list); // has been read
    CHECKF_AT(kSite, false, "why");
    CHECKF_AT((core::CheckSite{"some_module.cpp", 8}), false);
    GALERT_AT(kSite, 1 > 2); // alerts are never excluded
    for (const Type type : {Type::Assertion, Type::Alert})
        std::printf("%d,", static_cast<int>(core::TestInterface::instance().reportCount(type)));
}

TEST(AssertProcess, ExcludedChecksAreLoggedOnly) {
    const test::TempFolder folder;
    const core::CivilTime now = core::localCivilTime(core::now());
    const std::string today = core::format(" %04d-%02d-%02d\n", now.year, now.month, now.day);
    test::writeFile(folder / "assert.exclude", "some_module.cpp 7" + today);
    EXPECT_THAT(test::runChild("failsAtTwoSites", folder.path()).out,
                EndsWith("[CRIT] EXCLUDED_ASSERT failed at some_module.cpp:7 (CHECKF) (why)\n"
                         "[CRIT] GASSERT failed at some_module.cpp:8 (CHECKF) ()\n"
                         "[CRIT] GALERT at some_module.cpp:7 (1 > 2)\n1,1,"));
    // A list in the settings folder takes the place of the other.
    std::filesystem::create_directory(test::systemPath(folder / "settings"));
    test::writeFile(folder / "settings/assert.exclude", "some_module.cpp 8" + today);
    EXPECT_THAT(test::runChild("failsAtTwoSites", folder.path()).out,
                HasSubstr("[CRIT] GASSERT failed at some_module.cpp:7 (CHECKF) (why)\n"
                          "[CRIT] EXCLUDED_ASSERT failed at some_module.cpp:8 (CHECKF)\n"));
}

} // namespace
