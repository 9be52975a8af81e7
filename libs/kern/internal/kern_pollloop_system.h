#pragma once

#include "kern_pollloop.h"

#include <cstdint>
#include <vector>

/// Between kern_pollloop.cpp, its platform halves and its tests; not for other code.
namespace kern {

struct detail::PollEntry {
    intptr_t descriptor;
    bool wantsRead = false;
    bool wantsWrite = false;
    // Results.
    bool canRead = false; ///< or has failed, as with the next
    bool canWrite = false;
    bool invalid = false; ///< nothing with this number is open
};

class PollLoop::System {
public:
    /// Milliseconds of a clock that nobody sets.
    virtual int64_t now() const;
    /// Waits until something is ready, or for that many milliseconds; -1 means for ever.
    /// May return early, without results.
    virtual void poll(std::vector<detail::PollEntry>& entries, int64_t timeout) const;

    /// Something that becomes readable once any thread or signal handler has called `wake`,
    /// and stays so until `settle`. -1 when the system refuses.
    virtual intptr_t makeWaker() const;
    virtual void wake(intptr_t waker) const;
    virtual void settle(intptr_t waker) const;
    virtual void closeWaker(intptr_t waker) const;

protected:
    ~System() = default; // trivial, so the process's one is never destroyed
};

} // namespace kern
