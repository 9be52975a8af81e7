#include "core_check.h"

#include "check_recorder.h"
#include "output_capture.h"

#include <gmock/gmock.h>
#include <tuple>

namespace {

using test::FailedCheck;
using testing::ElementsAre;

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
                            FailedCheck{"CHECKF", "core_check_test.cpp", checkf, 0, ""},
                            FailedCheck{"checkf < 0", "core_check_test.cpp", checkf + 2, 1, ""},
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

} // namespace
