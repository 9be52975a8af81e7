#pragma once

#include "kern_pollloop.h"

#include <cstdint>
#include <vector>

/// Between kern_pollloop.cpp, its platform halves and its tests; not for others.
namespace kern {

struct detail::PollEntry {
    intptr_t descriptor;
    bool wantsRead = false;
    bool wantsWrite = false;
    // Results.
    bool canRead = false; ///< or has failed, as the next
    bool canWrite = false;
    bool invalid = false; ///< nothing with this number is open
};

class PollLoop::System {
public:
    /// Milliseconds of a clock that nobody sets.
    virtual int64_t now() const;
    /// Waits until something can be done, or for so many milliseconds; -1: for ever. May
    /// return early, with no results.
    virtual void poll(std::vector<detail::PollEntry>& entries, int64_t timeout) const;

    /// Something that can be read as soon as `wake` was called, by any thread or signal
    /// handler, and until `settle`. -1 when the system refuses.
    virtual intptr_t makeWaker() const;
    virtual void wake(intptr_t waker) const;
    virtual void settle(intptr_t waker) const;
    virtual void closeWaker(intptr_t waker) const;

protected:
    ~System() = default; // trivial, so that the one of the process is never destroyed
};

} // namespace kern
