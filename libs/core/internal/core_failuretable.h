#pragma once

#include "core_failurereport.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

namespace core {

/// Collects failures by their sites and counts them.
///
/// Any thread. Its lock is held only for the table's own work, never during calls to
/// other code: failures come from everywhere, even from the log's write path.
class FailureTable {
public:
    /// A failure of a known site replaces its texts and raises both counts by one.
    void add(FailureReport failure);

    /// What failed since it was last taken.
    std::vector<FailureReport> takeUnsent(FailureType type);

    /// Makes reports that were taken, but did not reach anyone, unsent again.
    void putBack(const FailureReport& report);

    /// Failures of this type since the start.
    uint64_t total(FailureType type) const;

private:
    mutable std::mutex d_mutex;
    std::map<FailureSite, FailureReport> d_reports;
};

} // namespace core
