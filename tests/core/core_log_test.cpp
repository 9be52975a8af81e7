#include "core_log.h"

#include "log_recorder.h"
#include "output_capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr core::CheckSite kSite{"core_x.cpp", 12};

TEST(Log, FormatsOnlyForEnabledChannels) {
    test::LogRecorder lines({core::kChannelWarn, core::kChannelInfo});
    core::logf(core::kChannelWarn, "%d of %s", 1, "two");
    core::logText(core::kChannelInfo, "a text, 100%s");
    EXPECT_THAT(lines.take(), ElementsAre("WARN 1 of two", "INFO a text, 100%s"));
    for (const int32_t channel : {core::kChannelNorm, -1, core::kChannelCount}) {
        const test::Output output =
            test::captureOutput([channel] { core::logf(channel, "%s", "not logged"); });
        EXPECT_EQ(output.out, "") << channel;
    }
}

TEST(Log, MacroEvaluatesItsArgumentsOnlyWhenEnabled) {
    test::LogRecorder lines({core::kChannelWarn});
    int evaluated = 0;
    CORE_LOGF(core::kChannelNorm, "%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    CORE_LOGF(core::kChannelWarn, "%d", ++evaluated);
    EXPECT_THAT(lines.take(), ElementsAre("WARN 1"));
}

TEST(Log, LocationHasFourForms) {
    test::LogRecorder lines;
    core::logAt(core::kChannelWarn, kSite, "utl::f", "why");
    core::logAt(core::kChannelWarn, kSite, "utl::f", "");
    core::logAt(core::kChannelWarn, kSite, nullptr, "100% why");
    core::logAt(core::kChannelWarn, kSite);
    core::logAt(core::kChannelNorm, kSite);
    EXPECT_THAT(lines.take(),
                ElementsAre("WARN Log at core_x.cpp:12 (utl::f) - why",
                            "WARN Log at core_x.cpp:12 (utl::f)",
                            "WARN Log at core_x.cpp:12 - 100% why", "WARN Log at core_x.cpp:12"));
}

TEST(Log, FunctionNamesAreJoinedByTheMessagesBeginning) {
    EXPECT_EQ(core::withFunction("utl::f", "(path) - why"), "utl::f(path) - why");
    EXPECT_EQ(core::withFunction("utl::f", "why"), "utl::f - why");
    EXPECT_EQ(core::withFunction("utl::f", ""), "utl::f - ");
}

TEST(Logger, LabelsIndentAChannel) {
    core::Logger logger;
    EXPECT_EQ(logger.prefix(2), "");
    logger.popLabel(2);
    logger.pushLabel(2, "");
    EXPECT_EQ(logger.prefix(2), " |-");
    logger.pushLabel(2, "job:");
    logger.pushLabel(3, "");
    EXPECT_EQ(logger.prefix(2), " |job:");
    EXPECT_EQ(logger.prefix(3), " |-");
    EXPECT_EQ(logger.prefix(4), "");
    logger.pushLabel(2, "");
    EXPECT_EQ(logger.prefix(2), " |job: |-");
    logger.popLabel(2);
    EXPECT_EQ(logger.prefix(2), " |job:") << "the cached prefix is stale";
    logger.popLabel(2);
    logger.popLabel(2);
    EXPECT_EQ(logger.prefix(2), "");

    test::LogRecorder lines({core::kChannelInfo});
    core::logText(logger, core::kChannelInfo, "text");
    EXPECT_THAT(lines.take(), ElementsAre("INFO  |-text"));
}

TEST(Logger, CollectorsTakeChannelZeroUpToTheirLimit) {
    core::Logger logger;
    core::StringCollector unlimited;
    core::StringCollector two{.text = {}, .lineCount = 0, .lineLimit = 2};
    logger.pushLabel(0, "label");
    logger.addCollector(&two);
    logger.addCollector(&unlimited);
    for (const char* text : {"", "a", "b", "c"})
        core::logText(logger, core::kChannelString, text);
    EXPECT_EQ(unlimited.text, "a\nb\nc") << "an empty collector takes no separator";
    EXPECT_EQ(unlimited.lineCount, 4);
    EXPECT_EQ(two.text, "a");
    EXPECT_EQ(two.lineCount, 2);

    logger.removeCollector(&unlimited);
    core::logText(logger, core::kChannelString, "d");
    EXPECT_EQ(unlimited.text, "a\nb\nc");
}

// ---- Repeat limits, with a clock that the tests step

int64_t seconds = 0;
int64_t steppedClock() { return seconds; }

class RepeatedLog : public testing::Test {
protected:
    RepeatedLog() {
        seconds = 100;
        auto* const limits = new core::DefaultLogRImpl(&steppedClock);
        limits->setRule("thirds", 3, 1000);
        limits->setRule("minutely", 0, 60);
        core::MasterLogger::setRepeatImplementation(limits);
    }
    ~RepeatedLog() override { core::MasterLogger::setRepeatImplementation(nullptr); }

    void log(const char* rule, const char* key, int32_t channel = core::kChannelWarn) {
        core::logRepeated(rule, channel, key, [this, key] {
            ++produced;
            return std::string(key);
        });
    }

    test::LogRecorder lines;
    int produced = 0;
};

TEST_F(RepeatedLog, CountThresholdReportsEveryNth) {
    for (int i = 0; i < 8; ++i, ++seconds)
        log("thirds", "k");
    EXPECT_THAT(lines.take(),
                ElementsAre("WARN k [1 times in 0 seconds]", "WARN k [3 times in 3 seconds]",
                            "WARN k [3 times in 3 seconds]"));
    EXPECT_EQ(produced, 3) << "the text is made only for a report";
}

TEST_F(RepeatedLog, TimeThresholdCountsFromTheLastReport) {
    log("minutely", "k");
    seconds += 59;
    log("minutely", "k");
    seconds += 1;
    log("minutely", "k");
    seconds += 59;
    log("minutely", "k");
    EXPECT_THAT(lines.take(),
                ElementsAre("WARN k [1 times in 0 seconds]", "WARN k [2 times in 60 seconds]"));
}

TEST_F(RepeatedLog, MessagesAndChannelsCountApartAndNoRuleSuppressesNothing) {
    log("none", "a");
    log("none", "a");
    log("thirds", "b");
    log("thirds", "a", core::kChannelInfo);
    EXPECT_THAT(lines.take(),
                ElementsAre("WARN a [1 times in 0 seconds]", "WARN a [1 times in 0 seconds]",
                            "WARN b [1 times in 0 seconds]"));
}

TEST_F(RepeatedLog, CountersMoveOnDisabledChannelsToo) {
    log("thirds", "k", core::kChannelNorm);
    log("thirds", "k", core::kChannelNorm);
    log("thirds", "k", core::kChannelCount);
    EXPECT_EQ(produced, 2);
    EXPECT_THAT(lines.take(), IsEmpty());
}

TEST_F(RepeatedLog, ChannelZeroGoesToTheDefaultHandlesCollectors) {
    core::StringCollector collector;
    core::MasterLogger::defaultLogger().addCollector(&collector);
    log("none", "k", core::kChannelString);
    core::MasterLogger::defaultLogger().removeCollector(&collector);
    EXPECT_EQ(collector.text, "k [1 times in 0 seconds]");
}

} // namespace
