#pragma once

#include <cstdint>

/// The clock and the calendar. Points in time are nanoseconds since 1970-01-01
/// 00:00 UTC, signed, without leap seconds. Nothing here fails. Any thread.
namespace core {

/// The system's wall clock. It can be set, so it may jump, also backwards.
int64_t now();

/// A date and a time of day as people read them, in no particular time zone.
struct CivilTime {
    int32_t year;   ///< of the Gregorian calendar
    int32_t month;  ///< 1..12
    int32_t day;    ///< 1..31
    int32_t hour;   ///< 0..23
    int32_t minute; ///< 0..59
    int32_t second; ///< 0..59
};

/// `time` on a clock in the computer's time zone; in UTC where the system knows no
/// local time for it (Windows: before 1970).
CivilTime localCivilTime(int64_t time);

/// `time` in UTC. Only computes: neither locks nor allocates.
CivilTime utcCivilTime(int64_t time);

/// Seconds since the epoch of `civil` taken as UTC. Fields beyond their ranges
/// count on: 32 January is 1 February, month 0 is December of the year before.
/// Only computes.
int64_t secondsOfCivilTime(const CivilTime& civil);

namespace detail {
/// Whole seconds since the epoch on the system's local clock. False, with `local`
/// unchanged, when the system has no local time for them.
bool systemLocalTime(int64_t seconds, CivilTime& local);
} // namespace detail

} // namespace core
