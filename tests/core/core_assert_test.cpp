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

#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace {

using core::TestInterface;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

constexpr core::CheckSite kSite{"some_module.cpp", 7};

/// Puts the check slot's state back.
class AssertTest : public testing::Test {
protected:
    ~AssertTest() override {
        core::storeHandlerLock(false);
        core::storeFailureHandler(nullptr);
    }

    static uint64_t reports(TestInterface::ReportType type) {
        return TestInterface::instance().reportCount(type);
    }
};

TEST_F(AssertTest, HandlersLogWhatFailedAndContinue) {
    using Handler = core::FailureHandler;
    const struct {
        Handler handler;
        const char* condition;
        const char* message;
        const char* logged;
        uint64_t assertions;
        uint64_t alerts;
    } rows[] = {
        {core::failDefault, "a > b", "50% off", "GASSERT failed at f.cpp:7 (a > b) (50% off)", 1,
         0},
        {core::failDefault, "a > b", "", "GASSERT failed at f.cpp:7 (a > b) ()", 1, 0},
        {core::failDefault, nullptr, "m", "ERROR!! ASSERT failed at f.cpp:7", 0, 0},
        {core::alertDefault, "a > b", "m", "GALERT at f.cpp:7 (a > b) (m)", 0, 1},
        {core::alertDefault, "a > b", "", "GALERT at f.cpp:7 (a > b)", 0, 1},
    };
    test::LogRecorder log({core::kChannelCrit});
    for (const auto& row : rows) {
        const uint64_t assertions = reports(TestInterface::ReportType::Assertion);
        const uint64_t alerts = reports(TestInterface::ReportType::Alert);
        EXPECT_FALSE(row.handler(row.condition, "f.cpp", 7, 0, row.message));
        EXPECT_THAT(log.take(), ElementsAre(std::string("CRIT ") + row.logged));
        EXPECT_EQ(reports(TestInterface::ReportType::Assertion) - assertions, row.assertions);
        EXPECT_EQ(reports(TestInterface::ReportType::Alert) - alerts, row.alerts);
    }
}

/// Fails a check and an alert of its own about every line it sees.
class FailingObserver : public core::GlobalLogObserver {
public:
    FailingObserver() {
        watch(core::kChannelCrit);
        core::MasterLogger::registerObserver(this);
    }
    ~FailingObserver() override { detach(); }

    void observe(int32_t, uint32_t, const core::ChannelRecord&, const char*, size_t) override {
        CHECKF_AT(kSite, false);
        GALERT_AT(kSite, false);
    }
};

TEST_F(AssertTest, FailuresInsideTheirOwnHandlingAreRefused) {
    FailingObserver observer;
    // The check's observer raises an alert, whose line the log refuses as recursive.
    const std::string checkErr = test::captureOutput([] { CHECKF_AT(kSite, false); }).err;
    EXPECT_THAT(checkErr, StartsWith("Assert:failDefault - recursive call\n"));
    const std::string alertErr = test::captureOutput([] { GALERT_AT(kSite, false); }).err;
    EXPECT_THAT(alertErr, EndsWith("Assert:alertDefault - recursive call\n"));
    EXPECT_FALSE(core::threadFlags().inAssert);
    EXPECT_FALSE(core::threadFlags().inAlert);
}

TEST_F(AssertTest, LockedHandlersStay) {
    test::LogRecorder log;
    EXPECT_TRUE(core::Assert::setConsoleHandler());
    EXPECT_EQ(core::failureHandler(), core::consoleHandler);
    core::Assert::lockHandler(true);
    EXPECT_FALSE(core::Assert::setFailureHandler(core::alertDefault));
    EXPECT_EQ(core::failureHandler(), core::consoleHandler);
    EXPECT_THAT(log.take(), ElementsAre("WARN core::Assert::setFailureHandler - handler locked"));
    core::Assert::lockHandler(false);
    EXPECT_TRUE(core::Assert::setFailureHandler(nullptr));
    EXPECT_EQ(core::failureHandler(), core::failDefault);
}

TEST_F(AssertTest, TestInterfaceBeginsWithItsDefaults) {
    const TestInterface::Settings settings = TestInterface::instance().settings();
    EXPECT_EQ(settings.assertLevel, 1);
    EXPECT_EQ(settings.sendAddress.size(), 14U);
    EXPECT_EQ(settings.sendPort, 25000);
    EXPECT_EQ(settings.symbolServerAddress, "");
    EXPECT_EQ(settings.flags, 0U);
}

// Fails before main, as an initialiser of another module might, in one child only.
[[maybe_unused]] const bool failedEarly = [] {
    const char* name = std::getenv(test::detail::kChildCase);
    return name != nullptr && name == std::string_view("failsBeforeMain") &&
           !CHECKF_AT(kSite, false, "early");
}();

CHILD_CASE(failsBeforeMain) {}

TEST(AssertProcess, HandlersAreReadyBeforeMain) {
    EXPECT_THAT(test::runChild("failsBeforeMain").out,
                StartsWith("[CRIT] GASSERT failed at some_module.cpp:7 (CHECKF) (early)\n"));
}

CHILD_CASE(failsExcluded) {
    std::filesystem::current_path(argument);
    CHECKF_AT(kSite, false, "why");
    CHECKF_AT(kSite, false);
    CHECKF_AT((core::CheckSite{"some_module.cpp", 8}), false);
    GALERT_AT(kSite, 1 > 2); // alerts are never excluded
    std::printf("%d reports\n", static_cast<int>(TestInterface::instance().reportCount(
                                    TestInterface::ReportType::Assertion)));
}

TEST(AssertProcess, ExcludedChecksAreLoggedOnly) {
    const test::TempFolder folder;
    const core::CivilTime now = core::localCivilTime(core::now());
    test::writeFile(folder / "assert.exclude", core::format("some_module.cpp 7 %04d-%02d-%02d\n",
                                                            now.year, now.month, now.day));
    EXPECT_THAT(test::runChild("failsExcluded", folder.path()).out,
                EndsWith("[CRIT] EXCLUDED_ASSERT failed at some_module.cpp:7 (CHECKF) (why)\n"
                         "[CRIT] EXCLUDED_ASSERT failed at some_module.cpp:7 (CHECKF)\n"
                         "[CRIT] GASSERT failed at some_module.cpp:8 (CHECKF) ()\n"
                         "[CRIT] GALERT at some_module.cpp:7 (1 > 2)\n"
                         "1 reports\n"));
}

/// Counts its writes and notes its end.
class CountingLog : public core::LogImpl {
public:
    CountingLog(int* writes, bool* alive) : d_writes(writes), d_alive(alive) { *d_alive = true; }
    ~CountingLog() override { *d_alive = false; }
    void write(int32_t, uint32_t, const core::ChannelRecord&, const char*, size_t) override {
        ++*d_writes;
    }

private:
    int* d_writes;
    bool* d_alive;
};

TEST_F(AssertTest, GlobalsHoldLogAndHandlerForTheirLifetime) {
    int writes = 0;
    bool alive = false;
    {
        const core::Globals globals(new CountingLog(&writes, &alive));
        core::logText(core::kChannelInfo, "line");
        EXPECT_EQ(core::failureHandler(), core::failDefault);
        EXPECT_TRUE(alive);
    }
    EXPECT_FALSE(alive);
    core::logText(core::kChannelInfo, "line");
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(core::failureHandler(), core::consoleHandler);

    core::storeFailureHandler(nullptr);
    core::Assert::lockHandler(true);
    { const core::DefaultGlobals globals; }
    EXPECT_EQ(core::failureHandler(), core::failDefault);
}

} // namespace
