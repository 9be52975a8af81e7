#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// A copy of the newest lines of the log's history in static storage, which dumps contain
/// and damage to the heap does not reach.
namespace core::detail {

struct HistoryLine {
    int64_t time; ///< nanoseconds since the epoch
    std::array<char, 16> channel;
    std::array<char, 232> text; ///< cut where it is longer
    uint32_t channelSize;
    uint32_t textSize;
};
inline constexpr size_t kHistoryCopyLines = 64;

/// One caller at a time.
void copyToHistory(int64_t time, std::string_view channel, std::string_view text);

/// The line that came so many lines before the newest. False if there is none, or if it
/// is being written at this moment. Never waits; any thread, signal handlers, too.
bool readHistoryCopy(size_t age, HistoryLine& line);

} // namespace core::detail
