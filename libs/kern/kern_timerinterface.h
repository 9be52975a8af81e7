#pragma once

#include <cstdint>
#include <string>

// moc reads headers without the compiler's own macros.
#if !defined(__cpp_rtti) && !defined(Q_MOC_RUN)
#error "kern::TimerInterface names classes by their type at run time: compile without -fno-rtti"
#endif

namespace kern {

/// One timer as its user keeps it: empty until restartTimer starts one, and again after
/// killTimer.
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
/// destructor. Intervals are in the manager's unit, milliseconds for Qt's event loop,
/// and less than 2^31. Killing timers and destroying the object are allowed in
/// timerExpired.
///
/// An object lives on one thread, within the time in which that thread has a manager.
/// Calls outside it are failed checks and do nothing else. Nothing here throws or locks.
/// Users are compiled with RTTI, by which name() knows their classes.
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
    /// manager is asked for it. A manager that knows how many are running puts the count
    /// right, as Qt's does after a failed check; with others the destructor may forget
    /// timers that run. A TimerHandle cannot be killed twice.
    void killTimer(int64_t id);

    /// Kills the handle's timer, if it has one, and clears the handle.
    void killTimer(TimerHandle& handle);

    /// Kills the handle's timer, if it has one, and starts another. Returns its id,
    /// which the handle keeps; 0 after a failed check.
    int64_t restartTimer(TimerHandle& handle, uint32_t interval);

    /// Timers started and not yet killed.
    int32_t activeTimers() const { return d_num_active_timers; }

protected:
    TimerInterface() = default;

    /// Has the manager remove the timers that are left. Objects are not destroyed
    /// through this class, which is only ever a second base.
    ~TimerInterface();

private:
    void killActive(int64_t id);

    int32_t d_num_active_timers = 0;
};

} // namespace kern
