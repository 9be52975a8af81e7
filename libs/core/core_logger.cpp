#include "core_logger.h"

#include <algorithm>

namespace core {

void Logger::pushLabel(int32_t channel, std::string label) {
    forgetPrefix();
    if (Labels* labels = labelsOf(channel))
        labels->push_back(std::move(label));
    else
        d_nesting.emplace_back(channel, Labels{std::move(label)});
}

void Logger::popLabel(int32_t channel) {
    Labels* const labels = labelsOf(channel);
    if (labels == nullptr)
        return;
    forgetPrefix();
    labels->pop_back();
    if (labels->empty())
        std::erase_if(d_nesting, [channel](const auto& entry) { return entry.first == channel; });
}

std::string_view Logger::prefix(int32_t channel) {
    // Writes nothing if there are no labels: all threads share such a handle.
    if (d_nesting.empty())
        return {};
    if (d_prefixChannel == channel)
        return d_prefix;
    const Labels* const labels = labelsOf(channel);
    if (labels == nullptr)
        return {};
    d_prefix.clear();
    for (const std::string& label : *labels) {
        if (!label.empty())
            d_prefix += label;
        else
            d_prefix += &label == &labels->back() ? " |-" : " |";
    }
    d_prefixChannel = channel;
    return d_prefix;
}

void Logger::addCollector(StringCollector* collector) {
    if (collector != nullptr)
        d_stringTargets.push_back(collector);
}

void Logger::removeCollector(StringCollector* collector) { std::erase(d_stringTargets, collector); }

void Logger::collect(std::string_view text) {
    if (d_stringTargets.empty())
        return;
    const std::string line(text); // a view of what grows here would not last
    for (StringCollector* target : d_stringTargets) {
        if (!target->text.empty())
            target->text += '\n';
        target->text += line;
        ++target->lineCount;
    }
    std::erase_if(d_stringTargets, [](const StringCollector* target) {
        return target->lineLimit > 0 && target->lineCount >= target->lineLimit;
    });
}

Logger::Labels* Logger::labelsOf(int32_t channel) {
    const auto found =
        std::find_if(d_nesting.begin(), d_nesting.end(),
                     [channel](const auto& entry) { return entry.first == channel; });
    return found != d_nesting.end() ? &found->second : nullptr;
}

void Logger::forgetPrefix() { d_prefixChannel = -1; }

} // namespace core
