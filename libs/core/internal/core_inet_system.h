#pragma once

#include "core_inet.h"

#include <cstdint>
#include <functional>

/// Between the modules of the socket layer and its platform halves; not for others.
namespace core::detail {

/// What the system answers to a start of the network.
struct NetworkStart {
    int error;         ///< 0 for success
    uint8_t low, high; ///< of the version granted, "low.high"
};
struct NetworkCalls {
    std::function<NetworkStart()> start;
    std::function<void()> stop;
};
NetworkStart systemStart();
void systemStop();

void startNetwork(const NetworkCalls& calls);
/// Once for all starts.
void stopNetwork(const NetworkCalls& calls);

/// A group and the interface it was joined on, in network byte order, laid out as the
/// system's own pair.
struct Membership {
    uint32_t group;
    uint32_t onInterface;
};

/// The system's calls on a socket, which tests replace one by one. False and negative
/// results are failures, whose number `lastSocketError` has.
class SocketCalls {
public:
    virtual SocketHandle open(int32_t family, int32_t type, int32_t protocol) const;
    virtual int close(SocketHandle socket) const;
    virtual bool setReuseAddr(SocketHandle socket) const;
    virtual void setNonBlocking(SocketHandle socket) const;
    virtual bool join(SocketHandle socket, const Membership& membership) const;
    virtual bool leave(SocketHandle socket, const Membership& membership) const;

protected:
    ~SocketCalls() = default; // trivial, so that the system's calls are never destroyed
};

/// Of this thread's last call that failed.
uint32_t lastSocketError();

/// Whether the error only says that no datagram was there, or came in time.
bool nothingReceived(uint32_t error);

} // namespace core::detail
