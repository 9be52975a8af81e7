#include "core_check.h"

#include "check_recorder.h"
#include "output_capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using test::FailedCheck;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr core::CheckSite kSite{"some_module.cpp", 7};

TEST(Check, FailsWithItsSiteAndAnswersItsCondition) {
    test::CheckRecorder checks;
    EXPECT_TRUE(CHECKF_AT(kSite, 1 + 1 == 2, "never made"));
    EXPECT_FALSE(CHECKF_AT(kSite, 1 + 1 == 3, "what"));
    EXPECT_FALSE(CHECKF_AT(kSite, false));
    constexpr int32_t kHere = __LINE__ + 1;
    EXPECT_FALSE(CHECKF(false, "here"));
    EXPECT_THAT(checks.take(),
                ElementsAre(FailedCheck{"CHECKF", "some_module.cpp", 7, 0, "what"},
                            FailedCheck{"CHECKF", "some_module.cpp", 7, 0, ""},
                            FailedCheck{"CHECKF", "core_check_test.cpp", kHere, 0, "here"}));
}

TEST(Check, LevelsDecideWhatIsReportedAndWhatIsEvaluated) {
    test::CheckRecorder checks;
    int evaluated = 0;
    const auto refuse = [&evaluated] {
        ++evaluated;
        return false;
    };
    const auto message = [&evaluated] {
        ++evaluated;
        return std::string("m");
    };
    struct {
        int level;
        size_t reports;
        int evaluations; // of two conditions and two messages
    } const rows[] = {{1, 2, 4}, {2, 2, 4}, {0, 1, 2}, {-1, 0, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE("level " + std::to_string(row.level));
        const test::ScopedAssertionLevel level(row.level);
        evaluated = 0;
        EXPECT_FALSE(CHECKF_AT(kSite, refuse(), message()));
        GASSERT_AT(kSite, refuse(), message());
        EXPECT_EQ(checks.take().size(), row.reports);
        EXPECT_EQ(evaluated, row.evaluations);
    }
}

TEST(Assertion, NamesItsOwnCondition) {
    test::CheckRecorder checks;
    const int span = 101;
    GASSERT_AT(kSite, span > 0 && span <= 100, "too wide");
    GASSERT(span < 0);
    const auto failed = checks.take();
    ASSERT_EQ(failed.size(), 2U);
    EXPECT_EQ(failed[0],
              (FailedCheck{"span > 0 && span <= 100", "some_module.cpp", 7, 1, "too wide"}));
    EXPECT_EQ(failed[1].condition, "span < 0");
    EXPECT_EQ(failed[1].file, "core_check_test.cpp");
}

TEST(Check, MacrosAreSingleStatements) {
    test::CheckRecorder checks;
    if (false)
        GASSERT(false);
    else
        GALERT(true);
    EXPECT_THAT(checks.take(), IsEmpty());
}

TEST(ConsoleHandler, PrintsTheMessageAndContinues) {
    bool stop = true;
    const test::Output output = test::captureOutput(
        [&stop] { stop = core::consoleHandler("condition", "file.cpp", 12, 0, "100% bad"); });
    EXPECT_FALSE(stop);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "GASSERT failed at file.cpp:12 (100% bad)\n");
}

TEST(CheckDeathTest, StopIsAnAccessFault) { EXPECT_DEATH(core::deliberateFault(), ""); }

} // namespace
