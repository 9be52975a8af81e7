#include "internal/core_failuretable.h"

#include <utility>

namespace core {

void FailureTable::add(FailureReport failure) {
    const std::lock_guard lock(d_mutex);
    const auto [entry, isNew] = d_reports.try_emplace(failure.site, failure);
    if (isNew)
        return;
    failure.count = entry->second.count + 1;
    failure.total = entry->second.total + 1;
    entry->second = std::move(failure);
}

std::vector<FailureReport> FailureTable::takeUnsent(FailureType type) {
    std::vector<FailureReport> unsent;
    const std::lock_guard lock(d_mutex);
    for (const auto& [site, report] : d_reports) {
        if (site.type == type && report.count != 0)
            unsent.push_back(report);
    }
    for (auto& [site, report] : d_reports) { // once nothing can fail any more
        if (site.type == type)
            report.count = 0;
    }
    return unsent;
}

void FailureTable::putBack(const FailureReport& report) {
    const std::lock_guard lock(d_mutex);
    d_reports[report.site].count += report.count;
}

uint64_t FailureTable::total(FailureType type) const {
    uint64_t sum = 0;
    const std::lock_guard lock(d_mutex);
    for (const auto& [site, report] : d_reports) {
        if (site.type == type)
            sum += report.total;
    }
    return sum;
}

} // namespace core
