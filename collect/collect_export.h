#pragma once

#include "collect_options.h"
#include "collect_table.h"

#include <string>

namespace collect {

/// The table for other programs: one row or object per site, version and station, the
/// latest first. CSV follows RFC 4180 and has a header row; its cells are written so that
/// no spreadsheet takes them for formulas.
std::string exportTable(const Table& table, Options::Format format);

} // namespace collect
