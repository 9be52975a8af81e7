#pragma once

#include "core_v2masterlogger.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// While it lives, the named channels are watched and their lines kept, each as
/// "CHANNEL text", for example "WARN handler locked".
class LogRecorder : public core::GlobalLogObserver {
public:
    explicit LogRecorder(std::initializer_list<int32_t> channels = {core::kChannelWarn}) {
        for (const int32_t channel : channels)
            watch(channel);
        core::MasterLogger::registerObserver(this);
    }
    ~LogRecorder() override { detach(); }

    /// The lines since the last call, in order.
    std::vector<std::string> take() {
        const std::lock_guard lock(d_mutex);
        return std::exchange(d_lines, {});
    }

    void observe(int32_t, uint32_t, const core::ChannelRecord& record, const char* text,
                 size_t length) override {
        const std::lock_guard lock(d_mutex);
        d_lines.push_back(std::string(record.name) + ' ' + std::string(text, length));
    }

private:
    std::mutex d_mutex;
    std::vector<std::string> d_lines;
};

} // namespace test
