#pragma once

#include "collect_options.h"
#include "collect_table.h"

#include <string>

namespace collect {

/// The table for other programs, one row or object for each site, version and station,
/// the latest first. CSV is that of RFC 4180 with a line of names; no cell is taken for
/// a formula by a spreadsheet.
std::string exportTable(const Table& table, Options::Format format);

} // namespace collect
