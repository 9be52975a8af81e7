#pragma once

#include "core_timespec.h"

#include <cstdint>
#include <string>

namespace core {

/// A calendar date and time with its offset from UTC, packed into 64 bits, from the
/// least significant on:
///
///     16 year | 4 month | 5 day | 5 hour | 6 minute | 6 second | 6 dto | 16 fraction
///
/// `dto` is signed and counts half-hours, positive to the east; `fraction` counts
/// 1/65536 s. The fields of a date and time keep their low bits and are not checked.
class DateTime {
public:
    static constexpr int32_t kMaxDto = 24;    ///< twelve hours, in both directions
    static constexpr int32_t UnknownDto = 25; ///< the offset is not known

    /// The offset is unknown until it is set.
    explicit DateTime(const CivilTime& civil, uint16_t fraction = 0);

    /// Midnight of a date.
    DateTime(int32_t year, int32_t month, int32_t day);

    /// The 64 bits, to store and to restore.
    static DateTime fromPacked(uint64_t packed) { return DateTime(packed); }
    uint64_t packed() const { return d_bits; }

    /// The fields; `dto` and `fraction` in the units above.
    CivilTime civil() const;
    int32_t dto() const;
    uint16_t fraction() const;

    /// Stores an offset. One beyond kMaxDto becomes UnknownDto, after a failed check of
    /// level 1 unless it was that already.
    void setDto(int32_t i_dto);
    /// Whether the offset is known.
    bool isDtoSet() const;

    /// Whole seconds since 1970-01-01 00:00 UTC. Without an offset: a failed check of
    /// level 1, and 0. Fields beyond their ranges count on, as in secondsOfCivilTime.
    int64_t toSeconds() const;

private:
    explicit DateTime(uint64_t packed) : d_bits(packed) {}

    uint64_t d_bits;
};

/// A signed length of time; the nanoseconds always count forward, so that -0.25 s is
/// {-1, 750000000}.
struct TimeSpan {
    int64_t seconds;     ///< whole ones, rounded down
    int32_t nanoseconds; ///< 0..999999999

    bool operator==(const TimeSpan&) const = default;
};

/// From `earlier` to `later`; both need an offset, see DateTime::toSeconds.
TimeSpan difference(const DateTime& later, const DateTime& earlier);

/// A duration as text: "59s", "1m 01s", "1h 1m 01s", "-1m 01s".
std::string secondsText(int64_t seconds);

/// The same with three decimals where there are milliseconds: "1s", "1.500s",
/// "1m 01.500s"; below a second "-250ms".
std::string millisecondsText(int64_t milliseconds);

} // namespace core
