#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace textmarkup {

/// Where a reference stands: in a value, names without semicolon do not count before
/// letters, digits and '=', for the sake of addresses such as "?a=1&copy=2".
enum class ReferenceIn { Text, Value };

/// Decodes the HTML reference at the front of `text`, which begins with '&', appends
/// what it stands for, and yields its length; 0, with nothing appended, for none.
size_t decodeReference(std::string_view text, ReferenceIn place, std::string& out);

} // namespace textmarkup
