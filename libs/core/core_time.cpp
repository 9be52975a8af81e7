#include "core_time.h"

#include "core_check.h"
#include "core_varargs.h"

namespace core {
namespace {

constexpr CheckSite kBadDto{"core_time.cpp", 1026};
constexpr CheckSite kNoDto{"core_time.cpp", 1610};

// Shifts rather than bit-fields, whose order is the compiler's choice.
struct Field {
    uint32_t shift;
    uint32_t width;

    constexpr uint64_t mask() const { return (uint64_t{1} << width) - 1; }
    constexpr uint64_t pack(int32_t value) const {
        return (static_cast<uint64_t>(value) & mask()) << shift;
    }
    constexpr int32_t of(uint64_t bits) const {
        return static_cast<int32_t>(bits >> shift & mask());
    }
};
constexpr Field kYear{0, 16};
constexpr Field kMonth{16, 4};
constexpr Field kDay{20, 5};
constexpr Field kHour{25, 5};
constexpr Field kMinute{30, 6};
constexpr Field kSecond{36, 6};
constexpr Field kDto{42, 6};
constexpr Field kFraction{48, 16};

constexpr int64_t kSecondsPerDto = 1800;
constexpr int64_t kFractionsPerSecond = 65536;
constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

constexpr bool isOffset(int32_t dto) {
    return dto >= -DateTime::kMaxDto && dto <= DateTime::kMaxDto;
}

// The most negative number has a magnitude, too.
constexpr uint64_t magnitude(int64_t value) {
    const auto bits = static_cast<uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

const char* sign(int64_t value) { return value < 0 ? "-" : ""; }

} // namespace

DateTime::DateTime(const CivilTime& civil, uint16_t fraction)
    : d_bits(kYear.pack(civil.year) | kMonth.pack(civil.month) | kDay.pack(civil.day) |
             kHour.pack(civil.hour) | kMinute.pack(civil.minute) | kSecond.pack(civil.second) |
             kDto.pack(UnknownDto) | kFraction.pack(fraction)) {}

DateTime::DateTime(int32_t year, int32_t month, int32_t day)
    : DateTime(CivilTime{year, month, day, 0, 0, 0}) {}

CivilTime DateTime::civil() const {
    return {kYear.of(d_bits), kMonth.of(d_bits),  kDay.of(d_bits),
            kHour.of(d_bits), kMinute.of(d_bits), kSecond.of(d_bits)};
}

int32_t DateTime::dto() const {
    const int32_t bits = kDto.of(d_bits);
    const int32_t signBit = 1 << (kDto.width - 1);
    return bits < signBit ? bits : bits - 2 * signBit;
}

uint16_t DateTime::fraction() const { return static_cast<uint16_t>(kFraction.of(d_bits)); }

void DateTime::setDto(int32_t i_dto) {
    const bool known = isOffset(i_dto);
    if (!known)
        GASSERT_AT(kBadDto, i_dto == UnknownDto);
    d_bits &= ~(kDto.mask() << kDto.shift);
    d_bits |= kDto.pack(known ? i_dto : UnknownDto);
}

bool DateTime::isDtoSet() const { return isOffset(dto()); }

int64_t DateTime::toSeconds() const {
    GASSERT_AT(kNoDto, isDtoSet());
    return isDtoSet() ? secondsOfCivilTime(civil()) - dto() * kSecondsPerDto : 0;
}

TimeSpan difference(const DateTime& later, const DateTime& earlier) {
    int64_t seconds = later.toSeconds() - earlier.toSeconds();
    int64_t fractions = int64_t{later.fraction()} - earlier.fraction();
    if (fractions < 0) {
        --seconds;
        fractions += kFractionsPerSecond;
    }
    return {seconds, static_cast<int32_t>(fractions * kNanosecondsPerSecond / kFractionsPerSecond)};
}

std::string secondsText(int64_t seconds) {
    const uint64_t s = magnitude(seconds);
    if (s < 60)
        return format("%s%us", sign(seconds), s);
    if (s < 3600)
        return format("%s%um %02us", sign(seconds), s / 60, s % 60);
    return format("%s%uh %um %02us", sign(seconds), s / 3600, s / 60 % 60, s % 60);
}

std::string millisecondsText(int64_t milliseconds) {
    const uint64_t s = magnitude(milliseconds / 1000);
    const uint64_t r = magnitude(milliseconds % 1000);
    const char* const minus = sign(milliseconds);
    if (r == 0)
        return secondsText(milliseconds / 1000);
    if (s == 0)
        return format("%s%ums", minus, r);
    if (s < 60)
        return format("%s%u.%03us", minus, s, r);
    if (s < 3600)
        return format("%s%um %02u.%03us", minus, s / 60, s % 60, r);
    return format("%s%uh %um %02u.%03us", minus, s / 3600, s / 60 % 60, s % 60, r);
}

} // namespace core
