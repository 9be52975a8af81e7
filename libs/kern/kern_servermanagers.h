#pragma once

#include <cstdint>

/// The event kernel: objects get timer callbacks from whatever event loop runs on their
/// thread, without knowing that loop. An event loop takes part by installing managers for
/// its thread; a thread has at most one of each kind at a time.
///
/// Everything here is per thread and takes no locks.
namespace kern {

class DescriptorInterface;
class DescriptorManager;
class TimerInterface;
class TimerManager;

/// What the kernel knows about one thread. Plain data without a destructor: it may be used
/// at any time in the life of a thread or the process.
struct ThreadState {
    TimerManager* timerManager;             ///< installed; null for none
    DescriptorManager* descriptorManager;   ///< installed; null for none
    uint64_t timersStarted;                 ///< successful starts so far
    uint64_t interfacesDestroyed;           ///< TimerInterface objects destroyed so far
    uint64_t interfacesDestroyedWithTimers; ///< those that still had timers to remove
};

/// The calling thread's.
ThreadState& threadState();

/// Schedules the timers of a thread; implemented by its event loop. Applications do
/// not call it: they derive from TimerInterface.
/// Constructing a manager installs it for the calling thread and replaces any other; it is
/// destroyed on the same thread. Destroying one that is not installed is a failed check,
/// and the installed one stays.
class TimerManager {
public:
    virtual ~TimerManager();
    TimerManager(const TimerManager&) = delete;
    TimerManager& operator=(const TimerManager&) = delete;

    /// Names the manager for its own reports. The kernel does not call it; does nothing
    /// by default.
    virtual void setLabel(const char* label);

    /// Allows the object's timers to be late by up to `slack`, to save wake-ups. The
    /// kernel does not call it; does nothing by default.
    virtual void setSlack(TimerInterface* owner, uint32_t slack);

    /// Starts a timer that calls the owner's timerExpired(id) each time `interval`
    /// has passed, until it is killed; the manager sets the interval's unit. Returns
    /// the id, above 0; 0 or less when there is no timer to be had.
    virtual int64_t startTimer(uint32_t interval, TimerInterface* owner) = 0;

    /// Kills all timers of an owner and returns how many there were, or -1 if that is not
    /// known. The owner may be half destroyed: it must not be called any more.
    virtual int32_t removeTimers(TimerInterface* owner) = 0;

    /// Kills a timer. It does not expire any more, even if it was about to.
    virtual void killTimer(int64_t id, TimerInterface* owner) = 0;

    /// How many timers the object has running; -1, the default, if that is not known.
    virtual int32_t runningTimers(const TimerInterface* owner) const;

protected:
    TimerManager();
};

/// Watches descriptors (sockets, handles) for a thread; implemented by its event loop.
/// Installed and removed like a TimerManager.
///
/// A descriptor is the system's number for it. The event loop that defines a
/// DescriptorInterface decides what that is told.
class DescriptorManager {
public:
    virtual ~DescriptorManager();
    DescriptorManager(const DescriptorManager&) = delete;
    DescriptorManager& operator=(const DescriptorManager&) = delete;

    /// Names the manager in its own reports; does nothing by default.
    virtual void setLabel(const char* label);

    /// Tells the interface when the descriptor can be read or written. False if it cannot
    /// be watched.
    virtual bool watchRead(intptr_t descriptor, DescriptorInterface* owner) = 0;
    virtual bool watchWrite(intptr_t descriptor, DescriptorInterface* owner) = 0;

    /// Ends the watch, if there is one.
    virtual void unwatchRead(intptr_t descriptor) = 0;
    virtual void unwatchWrite(intptr_t descriptor) = 0;

    /// Ends all watches of an interface and returns how many there were, or -1 if that is
    /// not known.
    virtual int32_t removeDescriptors(DescriptorInterface* owner) = 0;

    /// For reading, for writing, or both.
    virtual bool isWatched(intptr_t descriptor) const = 0;

protected:
    DescriptorManager();
};

} // namespace kern
