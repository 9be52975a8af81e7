#include "core_inet.h" // which starts the network
#include "internal/kern_pollloop_system.h"

#include <winsock2.h>

#include <algorithm>
#include <limits>

namespace kern {
namespace {

SOCKET socketOf(intptr_t descriptor) { return static_cast<SOCKET>(descriptor); }

/// Binds the socket on the loopback interface and lets it send to itself.
bool joinToItself(SOCKET socket) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    int length = sizeof address;
    u_long nonBlocking = 1;
    return ::bind(socket, generic, length) == 0 && getsockname(socket, generic, &length) == 0 &&
           ::connect(socket, generic, length) == 0 &&
           ioctlsocket(socket, static_cast<long>(FIONBIO), &nonBlocking) == 0;
}

} // namespace

void PollLoop::System::poll(std::vector<detail::PollEntry>& entries, int64_t timeout) const {
    std::vector<WSAPOLLFD> descriptors;
    descriptors.reserve(entries.size());
    for (const detail::PollEntry& entry : entries)
        descriptors.push_back({.fd = socketOf(entry.descriptor),
                               .events = static_cast<SHORT>((entry.wantsRead ? POLLRDNORM : 0) |
                                                            (entry.wantsWrite ? POLLWRNORM : 0)),
                               .revents = 0});
    const int64_t limit = std::numeric_limits<INT>::max();
    if (WSAPoll(descriptors.data(), static_cast<ULONG>(descriptors.size()),
                static_cast<INT>(std::min(timeout, limit))) <= 0)
        return;
    for (size_t i = 0; i < entries.size(); ++i) {
        const int results = descriptors[i].revents;
        entries[i].canRead =
            entries[i].wantsRead && (results & (POLLRDNORM | POLLERR | POLLHUP)) != 0;
        entries[i].canWrite =
            entries[i].wantsWrite && (results & (POLLWRNORM | POLLERR | POLLHUP)) != 0;
        entries[i].invalid = (results & POLLNVAL) != 0;
    }
}

intptr_t PollLoop::System::makeWaker() const {
    const SOCKET waker = ::socket(AF_INET, SOCK_DGRAM, 0);
    if (waker == INVALID_SOCKET || joinToItself(waker))
        return static_cast<intptr_t>(waker);
    closesocket(waker);
    return -1;
}

void PollLoop::System::wake(intptr_t waker) const { (void)::send(socketOf(waker), "", 1, 0); }

void PollLoop::System::settle(intptr_t waker) const {
    char byte = 0;
    while (::recv(socketOf(waker), &byte, 1, 0) >= 0) {
    }
}

void PollLoop::System::closeWaker(intptr_t waker) const { closesocket(socketOf(waker)); }

} // namespace kern
