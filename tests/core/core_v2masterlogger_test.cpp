#include "core_v2masterlogger.h"

#include "child_process.h"
#include "core_check.h"
#include "core_globals.h"
#include "core_guard.h"
#include "core_log.h"
#include "output_capture.h"
#include "scripted_log.h"
#include "testing_logrecorder.h"

#include <atomic>
#include <chrono>
#include <gmock/gmock.h>
#include <optional>
#include <stdexcept>
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

constexpr const char* kOfWorker = "of the worker";

void ignore(const std::string&) {}
void warn(const char* text) { core::logText(core::kChannelWarn, text); }

/// An implementation whose own thread logs, and is inside of it nearly always; it must not
/// be destroyed meanwhile.
class WorkingImpl : public ScriptedImpl {
public:
    using ScriptedImpl::ScriptedImpl;
    ~WorkingImpl() override {
        d_stop = true;
        d_worker.join();
        if (d_inside != 0)
            std::abort();
    }
    void write(int32_t channel, uint32_t id, const core::ChannelRecord& record, const char* text,
               size_t length) override {
        ++d_inside;
        for (int i = 0; i < 20; ++i)
            std::this_thread::yield();
        ScriptedImpl::write(channel, id, record, text, length);
        --d_inside;
    }

private:
    std::atomic<int> d_inside{0};
    std::atomic<bool> d_stop{false};
    std::thread d_worker{[this] {
        while (!d_stop)
            core::logText(core::kChannelInfo, kOfWorker);
    }};
};

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
    MasterLogger::setImplementation(std::make_unique<ScriptedImpl>(note()));
    const auto logEach = [](const char* text) {
        for (int32_t channel = 2; channel <= 4; ++channel)
            core::logf(channel, "%s", text);
    };
    logEach("at start");
    MasterLogger::setChannelEnabled(core::kChannelWarn, false);
    {
        const test::LogRecorder observer({core::kChannelNorm}); // recomputes the channel
        MasterLogger::setChannelEnabled(core::kChannelNorm, true);
    }
    logEach("switched");
    MasterLogger::setChannelEnabled(core::kChannelWarn, true);
    MasterLogger::setChannelEnabled(core::kChannelNorm, false);
    core::logf(core::kChannelNorm, "switched off");
    const int32_t own = MasterLogger::defineChannel("OWN", "", 8);
    MasterLogger::setChannelEnabled(own, false);
    core::logText(own, "finished texts pass");
    EXPECT_THAT(take(), ElementsAre("0 WARN at start", "0 INFO at start", "0 INFO switched",
                                    "0 NORM switched", "0 OWN finished texts pass"));
}

TEST_F(MasterLog, StandardOutputShowsEchoesAndChannelsThatAreNone) {
    core::Logger logger(42);
    const int32_t channel = MasterLogger::defineChannel("ABCDEFGHIJKLMNOPQ", "1;34;56");
    MasterLogger::setChannelEcho(channel, true);
    const test::Output output = captureOutput([&] {
        core::logText(logger, core::kChannelCrit, "with id");
        warn("elsewhere");
        core::logf(channel, "cut");
        MasterLogger::setChannelEcho(channel, false);
        core::logf(channel, "off");
        MasterLogger::setChannelEnabled(0, true);
        MasterLogger::setChannelEnabled(1024, true);
        core::logText(1000, "100% text");
        core::logText(channel + 1, "n");
        core::logText(-3, "t");
    });
    EXPECT_EQ(output.out, "[CRIT] {42} with id\n[ABCDEFGHIJKLMNO] cut\n" + faultText(638) +
                              faultText(638) + faultText(387) + "[1000??] 100% text" +
                              faultText(387) + "[" + std::to_string(channel + 1) + "??] n" +
                              faultText(387) + "[-3??] t");
}

TEST_F(MasterLog, LoggingFromInsideIsRefusedOnceAndOnlyOnceLong) {
    const auto logInside = [this](const std::string& line) {
        seen.push_back(line);
        core::logText(core::kChannelCrit, "inside");
    };
    const std::string refused = "MasterLogger:implLog - called recursively!\n"
                                "  <[CRIT] {0} inside>\n";
    MasterLogger::setImplementation(std::make_unique<ScriptedImpl>(logInside));
    const ScriptedObserver observer({core::kChannelWarn}, logInside);
    for (int i = 0; i < 2; ++i) { // the thread must not stay mute
        const test::Output output = captureOutput([] { warn("outside"); });
        EXPECT_EQ(output.err, refused + refused);
        EXPECT_EQ(output.out, "[CRIT] inside\n[CRIT] inside\n");
        EXPECT_THAT(take(), ElementsAre("0 WARN outside", "WARN outside"));
    }
}

TEST_F(MasterLog, ReplacedImplementationCannotLogAnyMore) {
    MasterLogger::setImplementation(
        std::make_unique<ScriptedImpl>(ignore, [] { warn("farewell"); }));
    EXPECT_EQ(captureOutput([] { MasterLogger::setImplementation(nullptr); }).out,
              "MasterLogger:implLog - log while setting impl\n  <[WARN] {0} farewell>\n");
}

TEST_F(MasterLog, ImplementationsGoOnceNobodyIsInside) {
    const auto replace = [](const std::string&) { MasterLogger::setImplementation(nullptr); };
    std::thread::id goneOn;
    const auto impl = [&goneOn](const test::OnLine& onLine) {
        return std::make_unique<WorkingImpl>(onLine,
                                             [&goneOn] { goneOn = std::this_thread::get_id(); });
    };
    const auto replaceAndStay = [&](const std::string& line) {
        if (line.ends_with(kOfWorker))
            return;
        replace(line);
        EXPECT_EQ(goneOn, std::thread::id());
    };
    const std::function<void()> ways[] = {
        [&] { const core::Globals globals(impl(ignore)); },
        [&] { // from inside of itself
            MasterLogger::setImplementation(impl(replaceAndStay));
            warn("now");
        },
        [&] { // from an observer
            MasterLogger::setImplementation(impl(ignore));
            const ScriptedObserver observer({core::kChannelWarn}, replace);
            warn("now");
        },
        [&] { // from a destructor
            MasterLogger::setImplementation(std::make_unique<ScriptedImpl>(
                ignore, [&] { MasterLogger::setImplementation(impl(ignore)), replace(""); }));
            replace("");
        }};
    captureOutput([&] { // refusals during a replacement go to standard output
        for (size_t i = 0; i < 50; ++i) {
            goneOn = {};
            ways[i % std::size(ways)]();
            EXPECT_EQ(goneOn, std::this_thread::get_id()) << i;
            replace("");
        }
    });
    core::detail::storeFailureHandler(nullptr); // which the end of Globals replaced
}

TEST_F(MasterLog, ObserversSeeTheirChannelsInOrderAfterTheImplementation) {
    MasterLogger::setImplementation(std::make_unique<ScriptedImpl>(note("impl ")));
    const ScriptedObserver first({core::kChannelWarn}, note("first "));
    {
        ScriptedObserver second({core::kChannelInfo, core::kChannelNorm}, note("second "));
        second.watch(core::kChannelWarn);
        second.unwatch(core::kChannelInfo);
        warn("w");
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
        MasterLogger::unregisterObserver(&first); // registered anew below
        seen.push_back("first " + line);
    });
    MasterLogger::registerObserver(nullptr);
    victim.emplace({core::kChannelWarn}, note("victim "));
    suicidal.emplace({core::kChannelWarn}, [&](const std::string& line) {
        seen.push_back("suicidal " + line);
        suicidal.reset();
    });
    const auto log = [] { warn("t"); };
    EXPECT_EQ(captureOutput(log).out, faultText(785));
    MasterLogger::registerObserver(&first);
    EXPECT_EQ(captureOutput(log).out, "");
    MasterLogger::registerObserver(&first);
    first.setBusy(true);
    EXPECT_EQ(captureOutput(log).out, faultText(802));
    MasterLogger::unregisterObserver(&first); // busy no more
    MasterLogger::registerObserver(&first);
    EXPECT_EQ(captureOutput(log).out, "");
    EXPECT_THAT(take(),
                ElementsAre("first WARN t", "suicidal WARN t", "first WARN t", "first WARN t"));
}

// As would those of a check, which is logged as well.
TEST_F(MasterLog, ExceptionsStayWhereTheyAre) {
    const auto refuse = [this](const std::string& line) {
        seen.push_back(line);
        throw std::runtime_error("out of paper");
    };
    MasterLogger::setImplementation(std::make_unique<ScriptedImpl>(refuse));
    const ScriptedObserver first({core::kChannelWarn}, refuse);
    const ScriptedObserver second({core::kChannelWarn}, note("second "));
    core::logRepeated("rule", core::kChannelWarn, "key",
                      []() -> std::string { throw std::runtime_error("no text"); });
    for (int i = 0; i < 2; ++i) { // nothing stays busy
        warn("t");
        EXPECT_THAT(take(), ElementsAre("0 WARN t", "WARN t", "second WARN t"));
    }
}

TEST_F(MasterLog, HistoryKeepsTheLastFourHundredLines) {
    MasterLogger::setHistory(core::kChannelInfo, true);
    MasterLogger::enableHistory(true);
    for (int i = 1; i <= 401; ++i)
        core::logf(core::kChannelInfo, "%d", i);
    warn("not kept");
    MasterLogger::setHistory(core::kChannelInfo, false);
    const std::vector<core::HistoryEntry> history = MasterLogger::history();
    ASSERT_EQ(history.size(), 400U);
    EXPECT_EQ(history.front().text, "2");
    EXPECT_EQ(history.back().channel + history.back().text, "INFO401");
    MasterLogger::setHistoryLimit(2);
    EXPECT_EQ(MasterLogger::history().front().text, "400");
    MasterLogger::setHistoryLimit(MasterLogger::kHistoryLimit);
    MasterLogger::enableHistory(false);
    EXPECT_TRUE(MasterLogger::history().empty());
}

void replaceFromInside() {
    const auto replace = [](const std::string& line) {
        if (line.ends_with(kOfWorker)) // which would have to join itself
            return;
        MasterLogger::setImplementation(std::make_unique<WorkingImpl>(ignore));
        MasterLogger::setRepeatImplementation(nullptr);
    };
    const ScriptedObserver observer({core::kChannelInfo}, replace);
    MasterLogger::setImplementation(std::make_unique<ScriptedImpl>(replace));
    core::logRepeated("rule", core::kChannelInfo, "key", [&] {
        replace("");
        return std::string("repeated");
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(2)); // meanwhile lines are refused
}

void outliveAnObserver() {
    static std::atomic<ScriptedObserver*> observer;
    observer = new ScriptedObserver({core::kChannelWarn}, [](const std::string&) {
        delete observer.exchange(nullptr); // null as long as it has no name
    });
    while (observer != nullptr)
        std::this_thread::yield();
}

void switchEverything() {
    static int round = 0;
    const bool on = ++round % 2 == 0;
    MasterLogger::setChannelEnabled(1 + round % 4, on);
    MasterLogger::setChannelEcho(core::kChannelNorm, on);
    MasterLogger::enableHistory(round % 9 != 0);
    MasterLogger::setHistory(1 + round % 4, on);
    MasterLogger::setHistoryLimit(MasterLogger::history().size() + 1);
}

constexpr void (*kStresses[])() = {
    [] { core::logf(core::kChannelWarn, "%d of %s", 1, "many"); },
    [] { CHECKF(false); },
    [] { GALERT(false); },
    [] {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        MasterLogger::setImplementation(std::make_unique<WorkingImpl>(ignore));
    },
    [] { MasterLogger::setRepeatImplementation(nullptr); },
    [] {
        const test::LogRecorder observer({core::kChannelCrit, core::kChannelInfo});
    },
    outliveAnObserver,
    replaceFromInside,
    switchEverything,
};

// Each on a thread of its own, until the process ends amid them. The argument says after
// how many milliseconds; the thread sanitizer watches.
CHILD_CASE(stressed) {
    for (const auto& stress : kStresses) {
        std::thread([stress] {
            for (;;)
                stress();
        }).detach();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(argument)));
    // Windows stops all other threads before the runtime cleans up, also amid an allocation
    // that the clean-up then waits for.
    MasterLogger::shutdown();
    core::endProcess(0);
}

TEST(MasterLogProcess, SurvivesStressAndEndsAmidIt) {
    const test::ChildResult child = test::runChild("stressed", "1000");
    EXPECT_EQ(child.status, 0) << child.err;
}

// After shutdown nothing is lost but lines: each entry says so and does nothing.
CHILD_CASE(meetsLimits) {
    int32_t last = 0;
    for (int32_t channel = 0; channel >= 0; channel = MasterLogger::defineChannel("N"))
        last = channel;
    std::printf("%d %d", static_cast<int>(last), core::channelEnabled(last) ? 1 : 0);

    ScriptedObserver observer({core::kChannelCrit}, ignore);
    MasterLogger::shutdown();
    MasterLogger::shutdown();
    core::logf(core::kChannelCrit, "silently dropped");
    MasterLogger::logEnabled(MasterLogger::defaultLogger(), core::kChannelCrit, "found enabled");
    core::logText(core::kChannelCrit, "direct");
    MasterLogger::setChannelEnabled(core::kChannelNorm, true);
    MasterLogger::setChannelEcho(core::kChannelNorm, true);
    MasterLogger::enableHistory(true);
    MasterLogger::setHistory(core::kChannelNorm, true);
    MasterLogger::registerObserver(&observer);
    MasterLogger::unregisterObserver(&observer);
    MasterLogger::setImplementation(
        std::make_unique<ScriptedImpl>(ignore, [] { std::printf("\ndestroyed"); }));
    core::logRepeated("rule", core::kChannelCrit, "key", [] { return std::string(); });
}

TEST(MasterLogProcess, HasItsLimits) {
    EXPECT_THAT(test::runChild("meetsLimits").out,
                testing::EndsWith("1023 0" + faultText(387) + "[1??] direct" + faultText(632) +
                                  faultText(632) + faultText(632) + faultText(632) +
                                  faultText(687) + faultText(687) + faultText(632) + "\ndestroyed" +
                                  faultText(687)));
}

} // namespace
