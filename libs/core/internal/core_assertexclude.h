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
/// They are in a text file, one on each line; fields are separated by blanks and tabs,
/// lines that begin with "#" or do not look like this are skipped:
///
///     core_time.cpp 1026 2024-05-31
///
/// A line holds for less than three days before and after midnight of its date: on
/// purpose, so that no failing check is forgotten here.
///
/// One thread reads; afterwards any thread may ask.
class AssertExclude {
public:
    /// Adds what "settings/assert.exclude" holds today, or "assert.exclude" if that does
    /// not open, both in the working folder. Does nothing if neither opens.
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
