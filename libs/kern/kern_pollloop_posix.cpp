#include "internal/kern_pollloop_system.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace kern {

void PollLoop::System::poll(std::vector<detail::PollEntry>& entries, int64_t timeout) const {
    std::vector<pollfd> descriptors;
    descriptors.reserve(entries.size());
    for (const detail::PollEntry& entry : entries)
        descriptors.push_back({.fd = static_cast<int>(entry.descriptor),
                               .events = static_cast<short>((entry.wantsRead ? POLLIN : 0) |
                                                            (entry.wantsWrite ? POLLOUT : 0)),
                               .revents = 0});
    const int64_t limit = std::numeric_limits<int>::max();
    if (::poll(descriptors.data(), descriptors.size(),
               static_cast<int>(std::min(timeout, limit))) <= 0)
        return;
    for (size_t i = 0; i < entries.size(); ++i) {
        const int results = descriptors[i].revents;
        entries[i].canRead = entries[i].wantsRead && (results & (POLLIN | POLLERR | POLLHUP)) != 0;
        entries[i].canWrite =
            entries[i].wantsWrite && (results & (POLLOUT | POLLERR | POLLHUP)) != 0;
        entries[i].invalid = (results & POLLNVAL) != 0;
    }
}

intptr_t PollLoop::System::makeWaker() const { return eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); }

void PollLoop::System::wake(intptr_t waker) const {
    const int error = errno; // of the code that a signal may have interrupted
    (void)eventfd_write(static_cast<int>(waker), 1);
    errno = error;
}

void PollLoop::System::settle(intptr_t waker) const {
    eventfd_t count = 0;
    (void)eventfd_read(static_cast<int>(waker), &count);
}

void PollLoop::System::closeWaker(intptr_t waker) const { (void)::close(static_cast<int>(waker)); }

} // namespace kern
