#include "internal/core_repeatlimits.h"

#include "core_timespec.h"
#include "core_v2masterlogger.h"
#include "core_varargs.h"

namespace core {
namespace {

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

int64_t secondsNow() { return now() / kNanosecondsPerSecond; }

} // namespace

void RepeatLimits::setRule(std::string_view identity, const Rule& rule) {
    const std::lock_guard lock(d_mutex);
    d_rules[std::string(identity)] = rule;
}

std::optional<RepeatLimits::Report> RepeatLimits::count(std::string_view identity, int32_t channel,
                                                        std::string_view key, int64_t time) {
    const std::lock_guard lock(d_mutex);
    const auto found = d_rules.find(identity);
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

DefaultLogRImpl::DefaultLogRImpl() : DefaultLogRImpl(&secondsNow) {}

DefaultLogRImpl::DefaultLogRImpl(Clock clock)
    : d_limits(std::make_unique<RepeatLimits>()), d_clock(clock) {}

DefaultLogRImpl::~DefaultLogRImpl() = default;

void DefaultLogRImpl::setRule(std::string_view identity, int32_t everyCount, int32_t everySeconds) {
    d_limits->setRule(identity, {everyCount, everySeconds});
}

// The producer runs outside the lock, even if the channel is disabled: its call is the
// report.
void DefaultLogRImpl::log(std::string_view identity, int32_t channel, std::string_view key,
                          const TextProducer& produce) {
    const auto report = d_limits->count(identity, channel, key, d_clock());
    if (!report)
        return;
    const std::string text = produce();
    if (channelEnabled(channel)) {
        MasterLogger::logEnabled(
            MasterLogger::defaultLogger(), channel,
            core::format("%s [%d times in %ld seconds]", text, report->times, report->seconds));
    }
}

} // namespace core
