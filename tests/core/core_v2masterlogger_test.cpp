#include "core_v2masterlogger.h"

#include "child_process.h"
#include "core_log.h"
#include "log_recorder.h"
#include "output_capture.h"

#include <array>
#include <atomic>
#include <gmock/gmock.h>
#include <optional>
#include <thread>

namespace {

using core::MasterLogger;
using test::captureOutput;
using test::ScriptedImpl;
using test::ScriptedObserver;
using testing::ElementsAre;

std::string faultText(int number) {
    return "\nERROR in core_v2masterlogger.cpp:" + std::to_string(number);
}

class MasterLog : public testing::Test {
protected:
    ~MasterLog() override {
        MasterLogger::setImplementation(nullptr);
        MasterLogger::setChannelEnabled(core::kChannelNorm, false);
        MasterLogger::enableHistory(false);
    }

    /// Notes lines with what is put in front of them.
    test::OnLine note(const char* prefix = "") {
        return [this, prefix](const std::string& line) { seen.push_back(prefix + line); };
    }
    std::vector<std::string> take() { return std::exchange(seen, {}); }

    std::vector<std::string> seen;
};

TEST_F(MasterLog, LinesOfEnabledChannelsReachTheImplementation) {
    MasterLogger::setImplementation(new ScriptedImpl(note()));
    const auto logEach = [](const char* text) {
        for (int32_t channel = 2; channel <= 4; ++channel)
            core::logf(channel, "%s", text);
    };
    logEach("at start");
    MasterLogger::setChannelEnabled(core::kChannelWarn, false);
    MasterLogger::setChannelEnabled(core::kChannelNorm, true);
    {
        test::LogRecorder observer({core::kChannelNorm}); // recomputes the channel
    }
    logEach("switched");
    MasterLogger::setChannelEnabled(core::kChannelWarn, true);
    EXPECT_THAT(take(), ElementsAre("0 WARN at start", "0 INFO at start", "0 INFO switched",
                                    "0 NORM switched"));
}

TEST_F(MasterLog, EchoShowsChannelIdAndText) {
    core::Logger logger(42);
    const int32_t channel = MasterLogger::defineChannel("ABCDEFGHIJKLMNOPQ", "1;34;56");
    MasterLogger::setChannelEcho(channel, true);
    const test::Output output = captureOutput([&] {
        core::logText(logger, core::kChannelCrit, "with id");
        core::logText(core::kChannelWarn, "elsewhere");
        core::logf(channel, "cut");
    });
    EXPECT_EQ(output.out, "[CRIT] {42} with id\n[ABCDEFGHIJKLMNO] cut\n");
    MasterLogger::setChannelEcho(channel, false);
    EXPECT_FALSE(core::channelEnabled(channel));
}

TEST_F(MasterLog, ChannelNumbersOutOfRangeAreFaults) {
    const test::Output output = captureOutput([] {
        MasterLogger::setChannelEnabled(0, true);
        MasterLogger::setChannelEnabled(1024, true);
        core::logText(1000, "100% text");
        core::logText(-3, "t");
    });
    EXPECT_EQ(output.out, faultText(638) + faultText(638) + faultText(387) + "[1000??] 100% text" +
                              faultText(387) + "[-3??] t");
}

TEST_F(MasterLog, LoggingFromInsideIsRefusedOnceAndOnlyOnceLong) {
    const auto logInside = [this](const std::string& line) {
        seen.push_back(line);
        core::logText(core::kChannelCrit, "inside");
    };
    const std::string refused = "MasterLogger:implLog - called recursively!\n"
                                "  <[CRIT] {0} inside>\n";
    MasterLogger::setImplementation(new ScriptedImpl(logInside));
    const ScriptedObserver observer({core::kChannelWarn}, logInside);
    for (int i = 0; i < 2; ++i) { // the thread must not stay mute
        const test::Output output =
            captureOutput([] { core::logText(core::kChannelWarn, "outside"); });
        EXPECT_EQ(output.err, refused + refused);
        EXPECT_EQ(output.out, "[CRIT] inside\n[CRIT] inside\n");
        EXPECT_THAT(take(), ElementsAre("0 WARN outside", "WARN outside"));
    }
}

TEST_F(MasterLog, ReplacedImplementationCannotLogAnyMore) {
    const auto installNote = [this] { MasterLogger::setImplementation(new ScriptedImpl(note())); };
    MasterLogger::setImplementation(
        new ScriptedImpl([&](const std::string&) { installNote(); })); // from inside
    core::logText(core::kChannelWarn, "first");
    core::logText(core::kChannelWarn, "second");
    EXPECT_THAT(take(), ElementsAre("0 WARN second"));

    MasterLogger::setImplementation(new ScriptedImpl(
        [](const std::string&) {}, [] { core::logText(core::kChannelWarn, "farewell"); }));
    EXPECT_EQ(captureOutput(installNote).out, "MasterLogger:implLog - log while setting impl\n"
                                              "  <[WARN] {0} farewell>\n");
    core::logText(core::kChannelWarn, "after");
    EXPECT_THAT(take(), ElementsAre("0 WARN after"));
}

TEST_F(MasterLog, ObserversSeeTheirChannelsInOrderAfterTheImplementation) {
    MasterLogger::setImplementation(new ScriptedImpl(note("impl ")));
    const ScriptedObserver first({core::kChannelWarn}, note("first "));
    {
        ScriptedObserver second({core::kChannelInfo, core::kChannelNorm}, note("second "));
        second.watch(core::kChannelWarn);
        second.unwatch(core::kChannelInfo);
        core::logText(core::kChannelWarn, "w");
        core::logText(core::kChannelInfo, "i");
        core::logf(core::kChannelNorm, "n");
    }
    EXPECT_FALSE(core::channelEnabled(core::kChannelNorm));
    EXPECT_THAT(take(), ElementsAre("impl 0 WARN w", "first WARN w", "second WARN w",
                                    "impl 0 INFO i", "second NORM n"));
}

TEST_F(MasterLog, ObserverMayUnregisterOthersAndDestroyItself) {
    std::optional<ScriptedObserver> victim, suicidal;
    ScriptedObserver first({core::kChannelWarn}, [&](const std::string& line) {
        MasterLogger::unregisterObserver(&*victim);
        seen.push_back("first " + line);
    });
    victim.emplace({core::kChannelWarn}, note("victim "));
    suicidal.emplace({core::kChannelWarn}, [&](const std::string& line) {
        seen.push_back("suicidal " + line);
        suicidal.reset();
    });
    const auto log = [] { core::logText(core::kChannelWarn, "t"); };
    EXPECT_EQ(captureOutput(log).out, faultText(785));
    first.setBusy(true);
    EXPECT_EQ(captureOutput(log).out, faultText(802));
    EXPECT_THAT(take(), ElementsAre("first WARN t", "suicidal WARN t"));
}

TEST_F(MasterLog, HistoryKeepsTheLastFourHundredLines) {
    MasterLogger::setHistory(core::kChannelInfo, true);
    MasterLogger::enableHistory(true);
    for (int i = 1; i <= 401; ++i)
        core::logf(core::kChannelInfo, "%d", i);
    core::logText(core::kChannelWarn, "not kept");
    MasterLogger::setHistory(core::kChannelInfo, false);
    const std::vector<core::HistoryEntry> history = MasterLogger::history();
    ASSERT_EQ(history.size(), 400U);
    EXPECT_EQ(history.front().text, "2");
    EXPECT_EQ(history.back().channel + history.back().text, "INFO401");
    MasterLogger::enableHistory(false);
    EXPECT_TRUE(MasterLogger::history().empty());
}

// Lines, implementations and observers come and go on several threads; the thread
// sanitizer watches.
TEST_F(MasterLog, SurvivesReplacementUnderLoad) {
    std::atomic<bool> stop{false};
    std::atomic<int64_t> lines{0};
    const auto count = [&lines](const std::string&) { ++lines; };
    MasterLogger::enableHistory(true);
    captureOutput([&] { // refusals during a replacement go to standard output
        std::array<std::thread, 3> threads;
        for (std::thread& thread : threads) {
            thread = std::thread([&stop] {
                for (int line = 0; !stop; ++line)
                    core::logf(core::kChannelWarn, "%d", line);
            });
        }
        for (int i = 0; i < 300; ++i) {
            MasterLogger::setImplementation(new ScriptedImpl(count));
            const ScriptedObserver observer({core::kChannelWarn}, count);
            MasterLogger::setHistory(core::kChannelWarn, i % 2 == 0);
            std::this_thread::yield();
        }
        while (lines == 0)
            std::this_thread::yield();
        stop = true;
        for (std::thread& thread : threads)
            thread.join();
    });
    MasterLogger::setHistory(core::kChannelWarn, false);
}

// After shutdown nothing is lost but lines: each entry says so and does nothing.
CHILD_CASE(meetsLimits) {
    int32_t last = 0;
    for (int32_t channel = 0; channel >= 0; channel = MasterLogger::defineChannel("N"))
        last = channel;
    std::printf("%d %d", static_cast<int>(last), core::channelEnabled(last) ? 1 : 0);

    ScriptedObserver observer({core::kChannelCrit}, [](const std::string&) {});
    MasterLogger::shutdown();
    MasterLogger::shutdown();
    core::logf(core::kChannelCrit, "silently dropped");
    core::logText(core::kChannelCrit, "direct");
    MasterLogger::setChannelEnabled(core::kChannelNorm, true);
    MasterLogger::registerObserver(&observer);
    MasterLogger::unregisterObserver(&observer);
    MasterLogger::setImplementation(
        new ScriptedImpl([](const std::string&) {}, [] { std::printf("\ndestroyed"); }));
    core::logRepeated("rule", core::kChannelCrit, "key", [] { return std::string(); });
}

TEST(MasterLogProcess, HasItsLimits) {
    EXPECT_THAT(test::runChild("meetsLimits").out,
                testing::EndsWith("1023 0" + faultText(387) + "[1??] direct" + faultText(632) +
                                  faultText(687) + faultText(687) + "\ndestroyed" +
                                  faultText(687)));
}

} // namespace
