#include "internal/core_repeatlimits.h"

namespace core {

void RepeatLimits::setRule(std::string_view identity, const Rule& rule) {
    const std::lock_guard lock(d_mutex);
    d_rules[std::string(identity)] = rule;
}

std::optional<RepeatLimits::Report> RepeatLimits::count(std::string_view identity, int32_t channel,
                                                        std::string_view key, int64_t time) {
    const std::lock_guard lock(d_mutex);
    const auto found = d_rules.find(std::string(identity));
    const Rule rule = found != d_rules.end() ? found->second : Rule{};
    Record& record = d_records[{channel, std::string(key)}];
    ++record.count;
    if (suppressed(rule, record, time))
        return std::nullopt;
    const Report report{record.count - record.countAtReport,
                        time - record.firstTime.value_or(time)};
    record.firstTime = time;
    record.countAtReport = record.count;
    return report;
}

bool RepeatLimits::suppressed(const Rule& rule, const Record& record, int64_t time) {
    if (record.count == 1)
        return false;
    if (rule.everyCount >= 1)
        return record.count - record.countAtReport < rule.everyCount;
    return rule.everySeconds >= 1 && time - record.firstTime.value_or(time) < rule.everySeconds;
}

} // namespace core
