#include "testing_manualtimers.h"

#include "kern_timerinterface.h"

#include <algorithm>

namespace test {

ManualTimers::ManualTimers() = default;
ManualTimers::~ManualTimers() = default;

void ManualTimers::advance(uint32_t time) {
    const uint64_t end = d_now + time;
    while (expireUntil(end)) {
    }
    d_now = end;
}

bool ManualTimers::expire() { return expireUntil(UINT64_MAX); }

bool ManualTimers::expireUntil(uint64_t time) {
    const auto next =
        std::min_element(d_timers.begin(), d_timers.end(),
                         [](const Timer& a, const Timer& b) { return a.due < b.due; });
    if (next == d_timers.end() || next->due > time)
        return false;
    d_now = next->due;
    next->due += next->interval;
    next->owner->timerExpired(next->id);
    return true;
}

int64_t ManualTimers::startTimer(uint32_t interval, kern::TimerInterface* owner) {
    interval = std::max(interval, 1U);
    d_timers.push_back({++d_lastId, owner, interval, d_now + interval});
    return d_lastId;
}

int32_t ManualTimers::removeTimers(kern::TimerInterface* owner) {
    return static_cast<int32_t>(
        std::erase_if(d_timers, [owner](const Timer& timer) { return timer.owner == owner; }));
}

void ManualTimers::killTimer(int64_t id, kern::TimerInterface* owner) {
    std::erase_if(d_timers, [id, owner](const Timer& timer) {
        return timer.id == id && timer.owner == owner;
    });
}

int32_t ManualTimers::runningTimers(const kern::TimerInterface* owner) const {
    return static_cast<int32_t>(
        std::count_if(d_timers.begin(), d_timers.end(),
                      [owner](const Timer& timer) { return timer.owner == owner; }));
}

} // namespace test
