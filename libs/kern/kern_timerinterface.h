#pragma once

#include <cstdint>
#include <string>

// moc reads headers without the compiler's own macros.
#if !defined(__cpp_rtti) && !defined(Q_MOC_RUN)
#error "kern::TimerInterface names classes by their type at run time: compile without -fno-rtti"
#endif

namespace kern {

/// One timer as its user keeps it: empty at first and after killTimer, in use once
/// restartTimer has started one.
struct TimerHandle {
    int64_t id = 0;        ///< 0 or less: no timer
    uint32_t interval = 0; ///< the one last asked for
};

/// Base class of objects that own timers, scheduled by the TimerManager of the thread:
///
///     class Blinker final : public kern::TimerInterface {
///         void start() { restartTimer(d_blink, 500); }
///         void timerExpired(int64_t id) override { ... }
///         kern::TimerHandle d_blink;
///     };
///
/// A timer expires again and again until it is killed, at the latest by the object's
/// destructor. Intervals are in the manager's unit (milliseconds for Qt's event loop) and
/// below 2^31. timerExpired may kill timers and destroy the object.
///
/// An object lives on one thread, while that thread has a manager; calls outside that time
/// are failed checks and do nothing else. Nothing here throws or locks. Users are compiled
/// with RTTI, from which name() gets their classes.
class TimerInterface {
public:
    TimerInterface(const TimerInterface&) = delete;
    TimerInterface& operator=(const TimerInterface&) = delete;

    /// The object's class, as reports name it.
    virtual std::string name() const;

    /// Called by the manager when a timer of this object has expired.
    virtual void timerExpired(int64_t id) = 0;

    /// Starts a timer and returns its id, above 0; 0 after a failed check.
    int64_t startTimer(uint32_t interval);

    /// Kills a timer of this object. An id of 0 or less is a failed check.
    ///
    /// Do not kill a timer twice: any other id counts as one that has ended, before the
    /// manager is asked. A manager that knows how many timers run, such as Qt's, corrects
    /// the count after a failed check; with others the destructor may forget running
    /// timers. A TimerHandle cannot be killed twice.
    void killTimer(int64_t id);

    /// Kills the handle's timer, if any, and clears the handle.
    void killTimer(TimerHandle& handle);

    /// Kills the handle's timer, if any, and starts another. Returns the new id, which the
    /// handle keeps; 0 after a failed check.
    int64_t restartTimer(TimerHandle& handle, uint32_t interval);

    /// Timers started and not yet killed.
    int32_t activeTimers() const { return d_num_active_timers; }

protected:
    TimerInterface() = default;

    /// Makes the manager remove the remaining timers. Objects are not destroyed through
    /// this class, which is only ever a second base.
    ~TimerInterface();

private:
    void killActive(int64_t id);

    int32_t d_num_active_timers = 0;
};

} // namespace kern
