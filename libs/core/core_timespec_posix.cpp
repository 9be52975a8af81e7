#include "core_timespec.h"

#include <ctime>

namespace core {

int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

bool detail::systemLocalTime(int64_t seconds, CivilTime& local) {
    const auto time = static_cast<time_t>(seconds);
    tm fields{};
    if (localtime_r(&time, &fields) == nullptr)
        return false;
    local = {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
             fields.tm_hour,        fields.tm_min,     fields.tm_sec};
    return true;
}

} // namespace core
