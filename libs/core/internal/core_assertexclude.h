#pragma once

#include "core_timespec.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace core {

/// Checks that are known to fail and need no report for a few days, by their sites.
///
/// They stand in a text file, one to a line; fields are separated by blanks and
/// tabs, lines that begin with "#" or do not look like this are skipped:
///
///     core_time.cpp 1026 2024-05-31
///
/// A line holds for less than three days before and after midnight of its date: on
/// purpose, so that no failing check is forgotten here.
///
/// Reading is one thread's; afterwards any thread may ask.
class AssertExclude {
public:
    /// Adds what "settings/assert.exclude" holds today, or "assert.exclude" when that
    /// does not open, both in the working folder. Nothing when neither opens.
    void load();

    /// Adds the lines that hold at `now`, local time. The file stays open.
    void read(FILE* file, const CivilTime& now);

    bool contains(std::string_view file, int32_t line) const;

private:
    struct Site {
        std::string file;
        int32_t line;
    };
    std::vector<Site> d_sites; // sorted by file, then line
};

} // namespace core
