#pragma once

#include "core_smartsocket.h"

#include <cstdint>

/// Between the modules of the socket layer, its platform halves and its tests; not for others.
namespace core {

/// A group and the interface it was joined on, in network byte order, laid out as the
/// system's own pair.
struct detail::Membership {
    uint32_t group;
    uint32_t onInterface;
};

/// False and negative results are failures, whose number `lastSocketError` has.
class SmartSocket::System {
public:
    virtual SocketHandle open(int32_t family, int32_t type, int32_t protocol) const;
    virtual int close(SocketHandle socket) const;
    virtual bool setReuseAddr(SocketHandle socket) const;
    virtual void setNonBlocking(SocketHandle socket) const;
    virtual bool join(SocketHandle socket, const detail::Membership& membership) const;
    virtual bool leave(SocketHandle socket, const detail::Membership& membership) const;

protected:
    ~System() = default; // trivial, so that the one of the process is never destroyed
};

} // namespace core
