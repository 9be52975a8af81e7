#pragma once

#include "kern_servermanagers.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test {

/// Timers for the objects of this thread, by a clock that moves only when the test says so:
///
///     test::ManualTimers timers; // before the objects that it serves
///     Blinker blinker;           // starts a timer of 500 ms
///     timers.advance(499);       // nothing yet
///     timers.advance(1);         // it blinks
///
/// It is the thread's timer manager as long as it lives; see kern::TimerManager.
class ManualTimers : public kern::TimerManager {
public:
    ManualTimers();
    ~ManualTimers() override;

    /// Moves the clock on, by milliseconds. What is due by then expires in the order of its time,
    /// repeatedly if its interval is short; at the same time, what was started first. An
    /// interval of 0 counts as 1.
    void advance(uint32_t time);

    /// Moves the clock to the next timer and lets it expire; false if none is running.
    bool expire();

    /// How many timers are running, of all objects.
    size_t running() const { return d_timers.size(); }

    int64_t startTimer(uint32_t interval, kern::TimerInterface* owner) override;
    int32_t removeTimers(kern::TimerInterface* owner) override;
    void killTimer(int64_t id, kern::TimerInterface* owner) override;
    int32_t runningTimers(const kern::TimerInterface* owner) const override;

private:
    struct Timer {
        int64_t id;
        kern::TimerInterface* owner;
        uint32_t interval;
        uint64_t due;
    };
    bool expireUntil(uint64_t time);

    std::vector<Timer> d_timers; // in the order of their starts
    uint64_t d_now = 0;
    int64_t d_lastId = 0;
};

} // namespace test
