#include "core_timespec.h"

#include <absl/time/civil_time.h>

namespace core {
namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr absl::CivilSecond kEpoch(1970);

// Rounds down, so that times before the epoch are in 1969.
int64_t wholeSeconds(int64_t time) {
    const int64_t seconds = time / kNanosecondsPerSecond;
    return time % kNanosecondsPerSecond < 0 ? seconds - 1 : seconds;
}

} // namespace

CivilTime localCivilTime(int64_t time) {
    CivilTime local{};
    return detail::systemLocalTime(wholeSeconds(time), local) ? local : utcCivilTime(time);
}

CivilTime utcCivilTime(int64_t time) {
    const absl::CivilSecond civil = kEpoch + wholeSeconds(time);
    return {static_cast<int32_t>(civil.year()),
            civil.month(),
            civil.day(),
            civil.hour(),
            civil.minute(),
            civil.second()};
}

int64_t secondsOfCivilTime(const CivilTime& civil) {
    return absl::CivilSecond(civil.year, civil.month, civil.day, civil.hour, civil.minute,
                             civil.second) -
           kEpoch;
}

} // namespace core
