#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace textmarkup {

/// Where a reference stands. In a value, a name without a semicolon does not count before
/// letters, digits and '=', for addresses such as "?a=1&copy=2".
enum class ReferenceIn { Text, Value };

/// Decodes the HTML reference at the front of `text`, which begins with '&', appends its
/// meaning to the output and returns its length; 0, with nothing appended, if it is none.
size_t decodeReference(std::string_view text, ReferenceIn place, std::string& out);

} // namespace textmarkup
