#include "core_v2masterlogger.h"

#include "core_log.h"
#include "log_recorder.h"
#include "output_capture.h"

#include <atomic>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using core::MasterLogger;
using test::captureOutput;
using testing::ElementsAre;
using testing::IsEmpty;

std::string faultText(int number) {
    return "\nERROR in core_v2masterlogger.cpp:" + std::to_string(number);
}

/// Hands its lines to a function and tells when it is destroyed.
class ScriptedImpl : public core::LogImpl {
public:
    explicit ScriptedImpl(
        std::function<void(const std::string&)> onLine, std::function<void()> onDestroyed = [] {})
        : d_onLine(std::move(onLine)), d_onDestroyed(std::move(onDestroyed)) {}
    ~ScriptedImpl() override { d_onDestroyed(); }
    void write(int32_t, uint32_t id, const core::ChannelRecord& record, const char* text,
               size_t length) override {
        d_onLine(std::string(record.name) + " " + std::to_string(id) + " " +
                 std::string(text, length));
    }

private:
    std::function<void(const std::string&)> d_onLine;
    std::function<void()> d_onDestroyed;
};

class ScriptedObserver : public core::GlobalLogObserver {
public:
    explicit ScriptedObserver(std::function<void(const std::string&)> onLine,
                              int32_t channel = core::kChannelWarn)
        : d_onLine(std::move(onLine)) {
        watch(channel);
        MasterLogger::registerObserver(this);
    }
    ~ScriptedObserver() override { detach(); }
    void observe(int32_t, uint32_t, const core::ChannelRecord&, const char* text,
                 size_t length) override {
        d_onLine(std::string(text, length));
    }
    void setBusy(bool busy) { d_busy = busy; }

private:
    std::function<void(const std::string&)> d_onLine;
};

class MasterLog : public testing::Test {
protected:
    ~MasterLog() override {
        MasterLogger::setImplementation(nullptr);
        MasterLogger::setChannelEnabled(core::kChannelNorm, false);
        MasterLogger::enableHistory(false);
    }

    void installRecordingImpl() {
        MasterLogger::setImplementation(
            new ScriptedImpl([this](const std::string& line) { written.push_back(line); }));
    }

    std::vector<std::string> written;
};

TEST_F(MasterLog, PredefinedChannelsReachTheImplementationByTheirMask) {
    installRecordingImpl();
    captureOutput([] {
        for (int32_t channel = 1; channel <= 4; ++channel)
            core::logf(channel, "text");
    });
    EXPECT_THAT(written, ElementsAre("CRIT 0 text", "WARN 0 text", "INFO 0 text"));
}

TEST_F(MasterLog, CritIsEchoedWithTheIdOfItsLogger) {
    core::Logger logger(42);
    EXPECT_EQ(captureOutput([&] {
                  core::logText(core::kChannelCrit, "plain");
                  core::logText(logger, core::kChannelCrit, "with id");
                  core::logText(core::kChannelWarn, "elsewhere");
              }).out,
              "[CRIT] plain\n[CRIT] {42} with id\n");
}

TEST_F(MasterLog, NormPassesOnceEnabledAndReachesTheImplementation) {
    installRecordingImpl();
    core::logf(core::kChannelNorm, "dropped");
    MasterLogger::setChannelEnabled(core::kChannelNorm, true);
    core::logf(core::kChannelNorm, "kept");
    {
        test::LogRecorder observer({core::kChannelNorm}); // recomputes the channel
    }
    core::logf(core::kChannelNorm, "still kept");
    MasterLogger::setChannelEnabled(core::kChannelNorm, false);
    core::logf(core::kChannelNorm, "dropped");
    EXPECT_THAT(written, ElementsAre("NORM 0 kept", "NORM 0 still kept"));
}

TEST_F(MasterLog, EveryChannelCanBeSwitchedOff) {
    MasterLogger::setChannelEnabled(core::kChannelWarn, false);
    EXPECT_FALSE(core::channelEnabled(core::kChannelWarn));
    MasterLogger::setChannelEnabled(core::kChannelWarn, true);
    EXPECT_TRUE(core::channelEnabled(core::kChannelWarn));
    EXPECT_TRUE(core::channelEnabled(0));
}

TEST_F(MasterLog, ChannelNumbersOutOfRangeAreFaults) {
    struct {
        std::function<void()> run;
        std::string out;
    } const rows[] = {
        {[] { MasterLogger::setChannelEnabled(0, true); }, faultText(638)},
        {[] { MasterLogger::setChannelEnabled(1024, true); }, faultText(638)},
        {[] { core::logText(1000, "100% text"); }, faultText(387) + "[1000??] 100% text"},
        {[] { core::logText(1024, "t"); }, faultText(387) + "[1024??] t"},
        {[] { core::logText(-3, "t"); }, faultText(387) + "[-3??] t"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(captureOutput(row.run).out, row.out);
}

TEST_F(MasterLog, DefinedChannelsAreCutToTheirPlacesAndEchoOnRequest) {
    const int32_t channel = MasterLogger::defineChannel("ABCDEFGHIJKLMNOPQ", "1;34;56");
    ASSERT_GE(channel, 5);
    EXPECT_FALSE(core::channelEnabled(channel));
    MasterLogger::setChannelEcho(channel, true);
    EXPECT_EQ(captureOutput([channel] { core::logf(channel, "x"); }).out, "[ABCDEFGHIJKLMNO] x\n");
    MasterLogger::setChannelEcho(channel, false);
    EXPECT_FALSE(core::channelEnabled(channel));
}

TEST_F(MasterLog, LoggingFromInsideIsRefusedOnceAndOnlyOnceLong) {
    MasterLogger::setImplementation(new ScriptedImpl([this](const std::string& line) {
        written.push_back(line);
        core::logText(core::kChannelInfo, "from inside");
    }));
    core::Logger logger(7);
    const test::Output output =
        captureOutput([&] { core::logText(logger, core::kChannelWarn, "outside"); });
    EXPECT_EQ(output.err, "MasterLogger:implLog - called recursively!\n"
                          "  <[INFO] {0} from inside>\n");
    EXPECT_EQ(output.out, "");
    EXPECT_THAT(written, ElementsAre("WARN 7 outside"));
    captureOutput([] { core::logText(core::kChannelWarn, "again"); });
    EXPECT_EQ(written.size(), 2U) << "the thread must not stay mute";
}

TEST_F(MasterLog, ReplacedImplementationCannotLogAnyMore) {
    MasterLogger::setImplementation(new ScriptedImpl(
        [](const std::string&) {}, [] { core::logText(core::kChannelWarn, "farewell"); }));
    const test::Output output = captureOutput([this] { installRecordingImpl(); });
    EXPECT_EQ(output.out, "MasterLogger:implLog - log while setting impl\n"
                          "  <[WARN] {0} farewell>\n");
    core::logText(core::kChannelWarn, "after");
    EXPECT_THAT(written, ElementsAre("WARN 0 after"));
}

TEST_F(MasterLog, ImplementationMayReplaceItself) {
    MasterLogger::setImplementation(
        new ScriptedImpl([this](const std::string&) { installRecordingImpl(); }));
    core::logText(core::kChannelWarn, "first");
    core::logText(core::kChannelWarn, "second");
    EXPECT_THAT(written, ElementsAre("WARN 0 second"));
}

TEST_F(MasterLog, ObserversSeeTheirChannelsInOrderAfterTheImplementation) {
    installRecordingImpl();
    const auto record = [this](const char* who) {
        return [this, who](const std::string& text) { written.push_back(who + text); };
    };
    ScriptedObserver first(record("first "));
    ScriptedObserver second(record("second "), core::kChannelInfo);
    core::logText(core::kChannelWarn, "w");
    second.watch(core::kChannelWarn);
    second.unwatch(core::kChannelInfo);
    core::logText(core::kChannelWarn, "x");
    core::logText(core::kChannelInfo, "i");
    EXPECT_THAT(written,
                ElementsAre("WARN 0 w", "first w", "WARN 0 x", "first x", "second x", "INFO 0 i"));
}

TEST_F(MasterLog, ObservationEnablesAChannelForItsTime) {
    {
        test::LogRecorder lines({core::kChannelNorm});
        EXPECT_TRUE(core::channelEnabled(core::kChannelNorm));
        core::logf(core::kChannelNorm, "seen");
        EXPECT_THAT(lines.take(), ElementsAre("NORM seen"));
    }
    EXPECT_FALSE(core::channelEnabled(core::kChannelNorm));
}

TEST_F(MasterLog, ObserverMayUnregisterOthersAndDestroyItself) {
    std::unique_ptr<ScriptedObserver> victim;
    std::unique_ptr<ScriptedObserver> suicidal;
    ScriptedObserver first([&](const std::string&) {
        if (victim)
            MasterLogger::unregisterObserver(victim.get());
        written.emplace_back("first");
    });
    victim = std::make_unique<ScriptedObserver>(
        [&](const std::string&) { written.emplace_back("victim"); });
    suicidal = std::make_unique<ScriptedObserver>([&](const std::string&) {
        written.emplace_back("suicidal");
        suicidal.reset();
    });
    const test::Output output = captureOutput([] {
        core::logText(core::kChannelWarn, "1");
        core::logText(core::kChannelWarn, "2");
    });
    EXPECT_THAT(written, ElementsAre("first", "suicidal", "first"));
    EXPECT_EQ(output.out, faultText(785));
}

TEST_F(MasterLog, BusyObserverIsSkipped) {
    ScriptedObserver observer([this](const std::string& text) { written.push_back(text); });
    observer.setBusy(true);
    EXPECT_EQ(captureOutput([] { core::logText(core::kChannelWarn, "t"); }).out, faultText(802));
    observer.setBusy(false);
    core::logText(core::kChannelWarn, "u");
    EXPECT_THAT(written, ElementsAre("u"));
}

TEST_F(MasterLog, ObserverThatLogsIsRefusedButEchoed) {
    ScriptedObserver observer(
        [](const std::string&) { core::logText(core::kChannelCrit, "inner"); });
    const test::Output output = captureOutput([] { core::logText(core::kChannelWarn, "t"); });
    EXPECT_EQ(output.out, "[CRIT] inner\n");
    EXPECT_EQ(output.err, "MasterLogger:implLog - called recursively!\n  <[CRIT] {0} inner>\n");
}

TEST_F(MasterLog, HistoryKeepsTheLastFourHundredLines) {
    MasterLogger::setHistory(core::kChannelInfo, true);
    core::logText(core::kChannelInfo, "before there is one");
    MasterLogger::enableHistory(true);
    for (int i = 1; i <= 401; ++i)
        core::logf(core::kChannelInfo, "%d", i);
    core::logText(core::kChannelWarn, "not kept");
    MasterLogger::setHistory(core::kChannelInfo, false);
    const std::vector<core::HistoryEntry> history = MasterLogger::history();
    ASSERT_EQ(history.size(), 400U);
    EXPECT_EQ(history.front().text, "2");
    EXPECT_EQ(history.back().text, "401");
    EXPECT_EQ(history.back().channel, "INFO");
    EXPECT_GE(history.back().time, history.front().time);
    MasterLogger::enableHistory(false);
    EXPECT_THAT(MasterLogger::history(), IsEmpty());
}

// Lines, implementations and observers come and go on several threads; the thread
// sanitizer watches.
TEST_F(MasterLog, SurvivesReplacementUnderLoad) {
    std::atomic<bool> stop{false};
    std::atomic<int64_t> seen{0};
    const auto count = [&seen](const std::string&) { ++seen; };
    MasterLogger::enableHistory(true);
    captureOutput([&] { // refusals during a replacement go to standard output
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&stop] {
                for (int line = 0; !stop; ++line)
                    core::logf(core::kChannelWarn, "%d", line);
            });
        }
        for (int i = 0; i < 300; ++i) {
            MasterLogger::setImplementation(new ScriptedImpl(count));
            const ScriptedObserver observer(count);
            MasterLogger::setHistory(core::kChannelWarn, i % 2 == 0);
            MasterLogger::setChannelEnabled(core::kChannelNorm, i % 2 == 0);
            std::this_thread::yield();
        }
        while (seen == 0)
            std::this_thread::yield();
        stop = true;
        for (std::thread& thread : threads)
            thread.join();
    });
    MasterLogger::setHistory(core::kChannelWarn, false);
    EXPECT_GT(seen, 0);
}

TEST(MasterLogDeathTest, DefinesNoMoreThanAllChannels) {
    EXPECT_EXIT(
        {
            int32_t last = 0;
            for (int32_t channel = 0; channel >= 0; channel = MasterLogger::defineChannel("N"))
                last = channel;
            std::exit(last == 1023 && !core::channelEnabled(last) ? 17 : 1);
        },
        testing::ExitedWithCode(17), "");
}

// After shutdown nothing is lost but lines: each entry says so and does nothing.
TEST(MasterLogDeathTest, IsHarmlessAfterShutdown) {
    const auto afterShutdown = [] {
        auto observer = std::make_unique<ScriptedObserver>([](const std::string&) {});
        bool destroyed = false;
        MasterLogger::shutdown();
        MasterLogger::shutdown();
        const std::string out = test::captureStdout([&] {
            core::logf(core::kChannelCrit, "silently dropped");
            core::logText(core::kChannelCrit, "direct");
            MasterLogger::setChannelEnabled(core::kChannelNorm, true);
            MasterLogger::registerObserver(observer.get());
            MasterLogger::unregisterObserver(observer.get());
            MasterLogger::setImplementation(
                new ScriptedImpl([](const std::string&) {}, [&] { destroyed = true; }));
            core::logRepeated("rule", core::kChannelCrit, "key", [] { return std::string(); });
            observer.reset();
        });
        const std::string expected = faultText(387) + "[1??] direct" + faultText(632) +
                                     faultText(687) + faultText(687) + faultText(687);
        std::exit(out == expected && destroyed ? 17 : 1);
    };
    EXPECT_EXIT(afterShutdown(), testing::ExitedWithCode(17), "");
}

} // namespace
