#include "testing_matchers.h"

#include "core_log.h"
#include "testing_checkrecorder.h"

#include <gtest/gtest-spi.h>

#include <functional>
#include <string>

namespace {

using namespace test;
using testing::_;
using testing::HasSubstr;
using testing::Not;

constexpr core::CheckSite kNoCamera{"viewer.cpp", 12};

using Call = std::function<void()>;
const Call failOnce = [] { (void)CHECKF_AT(kNoCamera, false, std::string("there are 0")); };
const Call failTwice = [] {
    failOnce();
    GASSERT_AT(kNoCamera, 1 > 2);
};
const Call doNothing = [] {};
const Call logTwo = [] {
    core::logf(core::kChannelWarn, "the disk is full");
    core::logf(core::kChannelNorm, "going on");
};

TEST(Matchers, KnowWhatACallDoes) {
    EXPECT_THAT(failOnce, FailsCheck(kNoCamera));
    EXPECT_THAT(failOnce, FailsCheck(kNoCamera, "there are 0"));
    EXPECT_THAT(failOnce, FailsCheck({"viewer.cpp", 12}, HasSubstr("are")));
    EXPECT_THAT(failOnce, FailsCheck("there are 0"));
    for (const CallMatcher& wrong :
         {FailsCheck({"viewer.h", 12}), FailsCheck({"viewer.cpp", 13}), FailsCheck("there are 1"),
          FailsCheck(kNoCamera, "there are 1"), FailsNoCheck()})
        EXPECT_THAT(failOnce, Not(wrong));
    EXPECT_THAT(failTwice, Not(FailsCheck(kNoCamera))) << "one alone";
    EXPECT_THAT(doNothing, AllOf(FailsNoCheck(), LogsNothing()));
    EXPECT_THAT(doNothing, Not(FailsCheck(_)));
    EXPECT_THAT(logTwo, AllOf(Logs("WARN the disk is full"), Logs("NORM going on")));
    EXPECT_THAT(logTwo, Not(Logs("WARN the disk")));
    EXPECT_THAT(logTwo, Not(LogsNothing()));
}

TEST(Matchers, SayWhatCameInstead) {
    const struct {
        const Call& call;
        CallMatcher matcher;
        const char* expected;
        const char* actual;
    } rows[] = {
        {doNothing, FailsCheck(kNoCamera, "there are 1"),
         "fails the check at viewer.cpp:12 with a message that is equal to \"there are 1\"",
         "which fails no check"},
        {failTwice, FailsCheck(kNoCamera),
         "fails the check at viewer.cpp:12 with a message that is anything",
         "which fails\n    CHECKF at viewer.cpp:12 level 0 (there are 0)"
         "\n    1 > 2 at viewer.cpp:12 level 1 ()"},
        {failOnce, FailsCheck(HasSubstr("1")),
         "fails a check with a message that has substring \"1\"",
         "which fails\n    CHECKF at viewer.cpp:12 level 0 (there are 0)"},
        {logTwo, Logs("INFO x"), "logs a line that is equal to \"INFO x\"",
         "which logs\n    WARN the disk is full\n    NORM going on"},
        {doNothing, Logs(_), "logs a line that is anything", "which logs nothing"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(testing::DescribeMatcher<Call>(row.matcher), row.expected);
        testing::StringMatchResultListener said;
        EXPECT_FALSE(testing::ExplainMatchResult(row.matcher, row.call, &said));
        EXPECT_EQ(said.str(), row.actual);
    }
}

TEST(Matchers, MakeTheCallOnce) {
    int calls = 0;
    const auto count = [&] { ++calls; };
    EXPECT_NONFATAL_FAILURE(EXPECT_THAT(count, FailsCheck(_)), "which fails no check");
    EXPECT_EQ(calls, 1);
}

TEST(CheckRecorder, TheNewestRecords) {
    CheckRecorder outer;
    failOnce();
    EXPECT_THAT(failTwice, Not(FailsNoCheck()));
    failOnce();
    EXPECT_EQ(outer.take().size(), 2U);
}

} // namespace
