#pragma once

#include "collect_table.h"

#include <cstdint>
#include <string>

namespace collect {

/// What the program saw since it started.
struct Counts {
    int64_t started = 0; ///< core::now()
    uint64_t reports = 0;
    uint64_t malformed = 0;
};

/// The page: an HTML document that needs no other file and no network. Nothing in a report
/// can become markup. `time` says when it was made.
std::string makePage(const Table& table, const Counts& counts, int64_t time);

} // namespace collect
