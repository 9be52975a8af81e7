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

/// An event loop without a toolkit, on the system's poll: it serves the timers and
/// descriptors of its thread.
///
///     kern::PollLoop loop;
///     Receiver receiver; // a kern::DescriptorInterface, a kern::TimerInterface, or both
///     loop.run();
///
/// On Windows only sockets can be watched. A descriptor has one object that watches it for
/// reading, and one, perhaps another, for writing.
///
/// Intervals are milliseconds of a clock that nobody can set. Timers repeat; one that is
/// late expires once for all that it missed, and 0 means every turn of the loop. A loop
/// never uses an id twice. Killing an id that the object does not own does nothing.
/// Callbacks may end any timers, watches and objects, but not the loop itself.
///
/// Everything but `stop` is for the thread that made the loop.
class PollLoop final : public TimerManager, public DescriptorManager {
public:
    class System; ///< its system calls; tests replace it

    PollLoop();
    /// The system must outlive the loop.
    explicit PollLoop(const System& system);
    ~PollLoop() override;

    /// Whether the system provided what `stop` needs. If not, that was logged, and `run`
    /// returns at once.
    bool isReady() const;

    /// Waits for timers and descriptors and calls their objects, until `stop`.
    void run();

    /// Makes `run` return after the callbacks of this turn; if it is not running, the next
    /// `run` returns at once. For any thread, and for signal handlers.
    void stop();

    // TimerManager
    void setLabel(const char*) override {}
    int64_t startTimer(uint32_t interval, TimerInterface* owner) override;
    int32_t removeTimers(TimerInterface* owner) override;
    void killTimer(int64_t id, TimerInterface* owner) override;
    int32_t runningTimers(const TimerInterface* owner) const override;

    // DescriptorManager; refuses a descriptor that is already watched for the same
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
    std::vector<int64_t> dueTimers(int64_t now) const;
    void expireTimers();
    bool wait(std::vector<detail::PollEntry>& entries) const;
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
