#pragma once

#include "core_v2masterlogger.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// While it lives, what all threads log on some channels is recorded here as well. The
/// channels are switched on for it, as for every observer.
class LogRecorder : private core::GlobalLogObserver {
public:
    /// On these channels.
    explicit LogRecorder(std::initializer_list<int32_t> channels = {core::kChannelWarn}) {
        for (const int32_t channel : channels)
            watch(channel);
        core::MasterLogger::registerObserver(this);
    }
    /// Instead of a list.
    enum class Channels {
        All ///< those that are defined later, too
    };
    /// On all channels.
    explicit LogRecorder(Channels) {
        for (int32_t channel = core::kChannelCrit; channel < core::kChannelCount; ++channel)
            watch(channel);
        core::MasterLogger::registerObserver(this);
    }
    ~LogRecorder() override { detach(); }

    /// The lines since the last call, in order, each as "WARN the disk is full": the channel's
    /// name and the text.
    std::vector<std::string> take() {
        const std::lock_guard lock(d_mutex);
        return std::exchange(d_lines, {});
    }

private:
    void observe(int32_t, uint32_t, const core::ChannelRecord& record, const char* text,
                 size_t length) override {
        const std::lock_guard lock(d_mutex);
        d_lines.push_back(std::string(record.name) + ' ' + std::string(text, length));
    }

    std::mutex d_mutex;
    std::vector<std::string> d_lines;
};

} // namespace test
