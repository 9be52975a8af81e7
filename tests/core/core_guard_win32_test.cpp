#include "core_guard.h"
#include "core_v2masterlogger.h"
#include "testing_logrecorder.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace {

// msvcrt.dll itself asks no handler, so the tests do it in its stead.
int reportInvalidParameters(int, char**) {
    const auto handler = _get_invalid_parameter_handler();
    handler(L"größe > 0", L"strcpy_s", L"strcpy.c", 57, 0);
    handler(nullptr, nullptr, nullptr, 0, 0);
    return 0;
}

TEST(Guard, TakesTheReportsOfInvalidParametersAndGoesOn) {
    const auto before = _get_invalid_parameter_handler();
    test::LogRecorder log({core::kChannelCrit});
    EXPECT_EQ(core::runGuardedWith(reportInvalidParameters, 0, nullptr), 0);
    EXPECT_THAT(
        log.take(),
        testing::ElementsAre(
            "CRIT Invalid parameter detected (exp=größe > 0) (func=strcpy_s) (file=strcpy.c:57)",
            "CRIT Invalid parameter detected (exp=(null)) (func=(null)) (file=(null):0)"));
    EXPECT_EQ(_get_invalid_parameter_handler(), before);
}

} // namespace
