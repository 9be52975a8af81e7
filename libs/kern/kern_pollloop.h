#pragma once

#include "kern_servermanagers.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace kern {

namespace detail {
struct PollEntry;
} // namespace detail

/// An event loop of its own, without a toolkit: the timers and descriptors of its
/// thread, on the system's poll.
///
///     kern::PollLoop loop;
///     Receiver receiver; // a kern::DescriptorInterface, a kern::TimerInterface, or both
///     loop.run();
///
/// On Windows only sockets can be watched. One object watches a descriptor for reading,
/// the same or another one for writing.
///
/// Intervals are milliseconds of a clock that nobody sets. Timers repeat; one that is
/// late expires once for all it has missed, and 0 means in each turn of the loop. Ids
/// are never used twice by a loop. Killing an id that the object does not own does
/// nothing. Callbacks may end any timers, watches and objects, but not the loop itself.
///
/// Everything is for the thread that made it, but `stop`.
class PollLoop final : public TimerManager, public DescriptorManager {
public:
    class System; ///< what it needs of the system, for tests to replace

    PollLoop();
    /// The system must outlive the loop.
    explicit PollLoop(const System& system);
    ~PollLoop() override;

    /// Whether the system gave it what `stop` needs. If not, that was logged, and `run`
    /// returns at once.
    bool isReady() const;

    /// Waits for timers and descriptors and calls their objects, until `stop`.
    void run();

    /// Has `run` return when the callbacks of this turn are done; outside of it the next
    /// `run` returns at once. Any thread, and signal handlers.
    void stop();

    // TimerManager
    void setLabel(const char*) override {}
    int64_t startTimer(uint32_t interval, TimerInterface* owner) override;
    int32_t removeTimers(TimerInterface* owner) override;
    void killTimer(int64_t id, TimerInterface* owner) override;
    int32_t runningTimers(const TimerInterface* owner) const override;

    // DescriptorManager; a descriptor that is watched for the same already is refused
    bool watchRead(intptr_t descriptor, DescriptorInterface* owner) override;
    bool watchWrite(intptr_t descriptor, DescriptorInterface* owner) override;
    void unwatchRead(intptr_t descriptor) override;
    void unwatchWrite(intptr_t descriptor) override;
    int32_t removeDescriptors(DescriptorInterface* owner) override;
    bool isWatched(intptr_t descriptor) const override;

private:
    struct Timer {
        int64_t due; // milliseconds of the system's clock
        uint32_t interval;
        TimerInterface* owner;
    };
    struct Watch {
        DescriptorInterface* reader = nullptr;
        DescriptorInterface* writer = nullptr;
    };
    using Timers = std::map<int64_t, Timer>; // by id

    void erase(Timers::iterator timer);
    int64_t timeout() const;
    void expireTimers();
    void tellOwners(const std::vector<detail::PollEntry>& entries);
    bool watch(intptr_t descriptor, DescriptorInterface* Watch::*side, DescriptorInterface* owner);
    void unwatch(intptr_t descriptor, DescriptorInterface* Watch::*side);

    const System& d_system;
    const intptr_t d_waker;
    int64_t d_lastId = 0;
    Timers d_timers;
    std::set<std::pair<int64_t, int64_t>> d_order; // of the timers: due, id
    std::map<intptr_t, Watch> d_watches;
};

} // namespace kern
