#include "internal/core_historycopy.h"

#include <cstring>

namespace core {
namespace {

constexpr size_t kWords = sizeof(detail::HistoryLine) / sizeof(uint64_t);
static_assert(sizeof(detail::HistoryLine) % sizeof(uint64_t) == 0);

/// A line and how often it was begun and completed: odd while it is being written.
struct Place {
    std::atomic<uint32_t> changes{0};
    std::array<std::atomic<uint64_t>, kWords> words{};
};
constinit std::atomic<size_t> copied{0};

} // namespace

/// Named, so that it can be found in dumps.
constinit std::array<Place, detail::kHistoryCopyLines> historyCopy{};

void detail::copyToHistory(int64_t time, std::string_view channel, std::string_view text) {
    HistoryLine line{};
    line.time = time;
    line.channelSize =
        static_cast<uint32_t>(channel.copy(line.channel.data(), line.channel.size()));
    line.textSize = static_cast<uint32_t>(text.copy(line.text.data(), line.text.size()));
    std::array<uint64_t, kWords> words;
    std::memcpy(words.data(), &line, sizeof line);

    const size_t number = copied.load(std::memory_order_relaxed);
    Place& place = historyCopy[number % kHistoryCopyLines];
    const uint32_t changes = place.changes.load(std::memory_order_relaxed);
    place.changes.store(changes + 1, std::memory_order_seq_cst);
    for (size_t i = 0; i < kWords; ++i)
        place.words[i].store(words[i], std::memory_order_release);
    place.changes.store(changes + 2, std::memory_order_release);
    copied.store(number + 1, std::memory_order_release);
}

bool detail::readHistoryCopy(size_t age, HistoryLine& line) {
    const size_t count = copied.load(std::memory_order_acquire);
    if (age >= count || age >= kHistoryCopyLines)
        return false;
    const Place& place = historyCopy[(count - 1 - age) % kHistoryCopyLines];
    const uint32_t before = place.changes.load(std::memory_order_acquire);
    std::array<uint64_t, kWords> words;
    for (size_t i = 0; i < kWords; ++i)
        words[i] = place.words[i].load(std::memory_order_acquire);
    std::memcpy(&line, words.data(), sizeof line);
    return before % 2 == 0 && place.changes.load(std::memory_order_acquire) == before;
}

} // namespace core
