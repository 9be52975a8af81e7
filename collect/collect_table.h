#pragma once

#include "collect_report.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace collect {

/// One run of a program on a station, and its latest count.
struct Run {
    std::string sender;
    int64_t total = 0;
};

/// What is known of one site in one version of a program on one station.
struct Entry {
    Report report;     ///< the latest one
    int64_t first = 0; ///< arrival of the first one; core::now()
    int64_t last = 0;
    int64_t arrived = 0;   ///< failures that the reports speak of
    int64_t total = 0;     ///< failures that the station counted
    std::vector<Run> runs; ///< those whose counts are in `total`, the latest first

    /// Failures whose reports were lost, or sent before anybody collected them.
    int64_t missing() const { return total > arrived ? total - arrived : 0; }
};

/// What fails where, the latest first. Its memory grows with the number of sites and
/// stations, not of reports, and is limited: beyond kMaxEntries the oldest entry is
/// dropped, and texts longer than kMaxText are cut.
class Table {
public:
    static constexpr size_t kMaxEntries = 4096;
    static constexpr size_t kMaxText = 8192;
    static constexpr size_t kMaxRuns = 16; // of an entry; older ones only count in its total

    void add(const Arrival& arrival);

    /// Restores an entry as it was, as the latest.
    void restore(Entry entry);

    const std::list<Entry>& entries() const { return d_entries; }

    /// Entries dropped so far.
    uint64_t givenUp() const { return d_givenUp; }

private:
    using Key =
        std::tuple<std::string, std::string, int64_t, std::string, std::string, std::string>;

    static Key keyOf(const Report& report);
    void insert(Entry entry);

    std::list<Entry> d_entries; // the latest first
    std::map<Key, std::list<Entry>::iterator> d_byKey;
    uint64_t d_givenUp = 0;
};

} // namespace collect
