#include "core_log.h"

#include "output_capture.h"
#include "testing_logrecorder.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

constexpr core::CheckSite kSite{"core_x.cpp", 12};

TEST(Log, FormatsOnlyForEnabledChannels) {
    test::LogRecorder lines({core::kChannelWarn, core::kChannelInfo});
    int evaluated = 0;
    core::Logger logger;
    logger.pushLabel(core::kChannelWarn, "label ");
    CORE_LOGF(core::kChannelNorm, "%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    int32_t channel = core::kChannelWarn;
    CORE_LOGF(channel++, "%d of %s", ++evaluated, "two");
    CORE_LOGF_TO(logger, --channel, "%d of %s", ++evaluated, "two");
    core::logText(core::kChannelInfo, "a text, 100%s");
    for (const int32_t off : {core::kChannelNorm, -1, core::kChannelCount})
        EXPECT_EQ(test::captureOutput([&] { core::logf(off, "not logged"); }).out, "");
    EXPECT_THAT(lines.take(),
                ElementsAre("WARN 1 of two", "WARN label 2 of two", "INFO a text, 100%s"));
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
    EXPECT_EQ(core::withFunction("utl::f", "(path) - why"), "utl::f(path) - why");
}

TEST(Logger, LabelsIndentAChannel) {
    core::Logger logger;
    logger.popLabel(2);
    logger.pushLabel(2, "");
    logger.pushLabel(3, "");
    logger.pushLabel(2, "job:");
    logger.pushLabel(2, "");
    EXPECT_EQ(logger.prefix(2), " |job: |-");
    logger.popLabel(2);
    EXPECT_EQ(logger.prefix(2), " |job:") << "the cached prefix is stale";
    test::LogRecorder lines({core::kChannelInfo});
    core::logText(logger, core::kChannelInfo, "text");
    EXPECT_THAT(lines.take(), ElementsAre("INFO  |-text"));
}

TEST(Logger, CollectorsTakeChannelZeroUpToTheirLimit) {
    core::Logger logger;
    core::StringCollector unlimited;
    core::StringCollector two{.text = {}, .lineCount = 0, .lineLimit = 2};
    logger.pushLabel(0, "label");
    for (core::StringCollector* collector :
         {&two, &unlimited, static_cast<decltype(&two)>(nullptr)})
        logger.addCollector(collector);
    const std::string a(20, 'a'); // beyond what a string keeps in itself
    for (const std::string& text : {std::string(), a, std::string("b")})
        core::logText(logger, core::kChannelString, text);
    unlimited.text.shrink_to_fit(); // so that it moves as it grows
    core::logText(logger, core::kChannelString, unlimited.text);
    logger.removeCollector(&unlimited);
    core::logText(logger, core::kChannelString, "d");
    EXPECT_EQ(unlimited.text, a + "\nb\n" + a + "\nb") << "an empty one takes no separator";
    EXPECT_EQ(unlimited.lineCount, 4);
    EXPECT_EQ(two.text, a);
}

int64_t seconds = 0; // on a clock that the test steps
int64_t steppedClock() { return seconds; }

/// Reports a key under a rule at each of the times. Texts are made only for a report.
void logAtTimes(const char* rule, const char* key, std::initializer_list<int64_t> times,
                int32_t channel = core::kChannelWarn) {
    static int produced = 0;
    for (const int64_t time : times) {
        seconds = time;
        core::logRepeated(rule, channel, key, [&] { return key + std::to_string(++produced); });
    }
}

TEST(RepeatedLog, RulesCountOrWaitForEachMessageAndChannel) {
    auto limits = std::make_unique<core::DefaultLogRImpl>(&steppedClock);
    limits->setRule("thirds", 3, 1000);
    limits->setRule("minutely", 0, 60);
    core::MasterLogger::setRepeatImplementation(std::move(limits));
    test::LogRecorder lines;
    logAtTimes("thirds", "a", {100, 101, 102, 103, 104, 105, 106, 107});
    logAtTimes("minutely", "b", {100, 159, 160, 219});
    logAtTimes("none", "c", {100, 100}); // without a rule nothing is suppressed
    // Counters move on channels that are off or do not exist.
    logAtTimes("thirds", "a", {107, 107}, core::kChannelNorm);
    logAtTimes("thirds", "a", {107, 107}, core::kChannelCount);
    logAtTimes("thirds", "d", {107, 107});
    core::MasterLogger::setRepeatImplementation(nullptr);
    EXPECT_THAT(lines.take(),
                ElementsAre("WARN a1 [1 times in 0 seconds]", "WARN a2 [3 times in 3 seconds]",
                            "WARN a3 [3 times in 3 seconds]", "WARN b4 [1 times in 0 seconds]",
                            "WARN b5 [2 times in 60 seconds]", "WARN c6 [1 times in 0 seconds]",
                            "WARN c7 [1 times in 0 seconds]", "WARN d10 [1 times in 0 seconds]"));
}

} // namespace
