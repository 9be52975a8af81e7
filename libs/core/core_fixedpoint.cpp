#include "core_fixedpoint.h"

#include "core_check.h"
#include "core_varargs.h"

namespace core {
namespace {

constexpr CheckSite kTooManyDigits{"core_fixedpoint.cpp", 28};
constexpr uint32_t kMaxDigits = 64;

// Unsigned arithmetic, which may wrap; 10^64 is 0 in it.
uint64_t powerOfTen(uint32_t exponent) {
    uint64_t power = 1;
    for (uint32_t i = 0; i < exponent; ++i)
        power *= 10;
    return power;
}

} // namespace

std::string fixedPointText(int64_t value, uint32_t digits) {
    if (!CHECKF_AT(kTooManyDigits, digits <= kMaxDigits))
        return "0.0";
    if (digits == 0)
        return format("%d", value);

    const auto bits = static_cast<uint64_t>(value);
    const uint64_t magnitude = value < 0 ? 0 - bits : bits;
    const uint64_t divisor = powerOfTen(digits);
    const uint64_t whole = divisor != 0 ? magnitude / divisor : 0;
    const uint64_t fraction = divisor != 0 ? magnitude % divisor : magnitude;

    // The sign is written apart, since the whole part of -0.05 has none; the width goes
    // into the format, since `*` is not supported.
    const std::string form = format("%s%%llu.%%0%ullu", value < 0 ? "-" : "", digits);
    return format(runtimeFormat(form.c_str()), whole, fraction);
}

} // namespace core
