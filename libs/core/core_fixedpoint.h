#pragma once

#include <cstdint>
#include <string>

namespace core {

/// `value` / 10^`digits` as a decimal number with all its fraction digits, leading zeros
/// included: (-50, 3) is "-0.050"; without fraction digits no point is written. The power
/// is computed modulo 2^64: from 20 digits on that remainder divides the value; at 64
/// digits it is 0, and the number is all fraction. More than 64 digits: a failed check,
/// and "0.0".
std::string fixedPointText(int64_t value, uint32_t digits);

} // namespace core
