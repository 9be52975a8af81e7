#include "collect_table.h"

#include "utf_character.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace collect {
namespace {

constexpr std::string_view kCut = "...";

void cut(std::string& text) {
    if (text.size() <= Table::kMaxText)
        return;
    const size_t end = utf::lengthWithin(Table::kMaxText - kCut.size(), text);
    text.replace(end, std::string::npos, kCut);
}

Report cutTexts(Report report) {
    for (const TextField& field : kTextFields)
        cut(report.*field.text);
    return report;
}

/// Adds what a run has counted. A run's first report begins its count anew, since another
/// program may have been given the same port.
void count(Entry& entry, const Arrival& arrival) {
    const Report& report = arrival.report;
    entry.arrived += report.count;
    const auto found = std::find_if(entry.runs.begin(), entry.runs.end(),
                                    [&](const Run& run) { return run.sender == arrival.sender; });
    Run run{arrival.sender, 0};
    if (found != entry.runs.end()) {
        if (report.total != report.count)
            run.total = found->total;
        entry.runs.erase(found);
    }
    entry.total += std::max<int64_t>(0, report.total - run.total);
    run.total = std::max(run.total, report.total);
    entry.runs.insert(entry.runs.begin(), std::move(run));
    if (entry.runs.size() > Table::kMaxRuns)
        entry.runs.pop_back();
}

} // namespace

Table::Key Table::keyOf(const Report& report) {
    return {report.file, report.type, report.line, report.product, report.swver, report.hostname};
}

void Table::add(const Arrival& arrival) {
    Report report = cutTexts(arrival.report);
    const auto found = d_byKey.find(keyOf(report));
    if (found == d_byKey.end()) {
        Entry fresh;
        fresh.report = std::move(report);
        fresh.first = arrival.time;
        insert(std::move(fresh));
    } else {
        d_entries.splice(d_entries.begin(), d_entries, found->second);
        d_entries.front().report = std::move(report);
    }
    Entry& entry = d_entries.front();
    entry.last = arrival.time;
    count(entry, arrival);
}

void Table::restore(Entry entry) {
    entry.report = cutTexts(std::move(entry.report));
    const auto found = d_byKey.find(keyOf(entry.report));
    if (found != d_byKey.end()) {
        d_entries.erase(found->second);
        d_byKey.erase(found);
    }
    insert(std::move(entry));
}

void Table::insert(Entry entry) {
    if (d_entries.size() == kMaxEntries) {
        d_byKey.erase(keyOf(d_entries.back().report));
        d_entries.pop_back();
        ++d_givenUp;
    }
    d_entries.push_front(std::move(entry));
    d_byKey[keyOf(d_entries.front().report)] = d_entries.begin();
}

} // namespace collect
