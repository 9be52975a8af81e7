#include "core_timespec.h"

#include <windows.h>

#include <ctime>

namespace core {
namespace {

// Between 1601-01-01, where the system begins to count, and 1970-01-01.
constexpr int64_t kTicksToEpoch = 116'444'736'000'000'000;
constexpr int64_t kNanosecondsPerTick = 100;

} // namespace

int64_t now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    const auto high = static_cast<uint64_t>(time.dwHighDateTime);
    const auto ticks = static_cast<int64_t>(high << 32 | time.dwLowDateTime);
    return (ticks - kTicksToEpoch) * kNanosecondsPerTick;
}

bool detail::systemLocalTime(int64_t seconds, CivilTime& local) {
    // A negative time is handed to the runtime's invalid-parameter handler, which logs it.
    if (seconds < 0)
        return false;
    const __time64_t time = seconds;
    tm fields{};
    if (_localtime64_s(&fields, &time) != 0)
        return false;
    local = {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
             fields.tm_hour,        fields.tm_min,     fields.tm_sec};
    return true;
}

} // namespace core
