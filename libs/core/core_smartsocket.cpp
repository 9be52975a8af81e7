#include "core_smartsocket.h"

#include "core_inet_types.h"
#include "core_log.h"
#include "internal/core_smartsocket_system.h"

#include <utility>

namespace core {
namespace {

constexpr CheckSite kReuseFailed{"core_smartsocket.cpp", 72};
constexpr CheckSite kNonBlockingFailed{"core_smartsocket.cpp", 79};
constexpr CheckSite kNonBlockingClosed{"core_smartsocket.cpp", 440};

struct TheSystem final : SmartSocket::System {};
constinit const TheSystem realSystem;

/// An option that only succeeds or fails.
template <typename Value>
bool setOption(SocketHandle socket, int level, int option, const Value& value) {
    return setsockopt(static_cast<detail::SystemSocket>(socket), level, option,
                      reinterpret_cast<const char*>(&value), sizeof value) == 0;
}

} // namespace

const SmartSocket::System& SmartSocket::theSystem() { return realSystem; }

bool SmartSocket::System::setReuseAddr(SocketHandle socket) const {
    const int32_t on = 1;
    return setOption(socket, SOL_SOCKET, SO_REUSEADDR, on);
}

bool SmartSocket::System::join(SocketHandle socket, const detail::Membership& membership) const {
    return setOption(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, membership);
}

bool SmartSocket::System::leave(SocketHandle socket, const detail::Membership& membership) const {
    return setOption(socket, IPPROTO_IP, IP_DROP_MEMBERSHIP, membership);
}

bool SmartSocket::create(int32_t family, int32_t type, int32_t protocol, uint32_t flags) {
    close();
    d_handle = d_system->open(family, type, protocol);
    if (!isOpen()) {
        logFrom(kChannelWarn, "core::SmartSocket::create", "(%d,%d,%d) - failed to open socket",
                family, type, protocol);
        return false;
    }
    if ((flags & kReuseAddr) != 0 && !setReuseAddr()) {
        logAt(kChannelWarn, kReuseFailed);
        close();
        return false;
    }
    if ((flags & kNonBlocking) != 0 && !setNonBlocking()) {
        logAt(kChannelWarn, kNonBlockingFailed);
        close();
        return false;
    }
    return true;
}

bool SmartSocket::setReuseAddr() {
    if (!CHECKF(isOpen()))
        return false;
    const bool set = d_system->setReuseAddr(d_handle);
    if (!set)
        logFrom(kChannelWarn, "core::SmartSocket::setReuseAddr", "failed to set REUSEADDR");
    return set;
}

bool SmartSocket::setNonBlocking() {
    if (!CHECKF_AT(kNonBlockingClosed, isOpen()))
        return false;
    d_system->setNonBlocking(d_handle);
    return true;
}

int SmartSocket::close() {
    return isOpen() ? d_system->close(std::exchange(d_handle, kInvalidSocket)) : -1;
}

void SmartSocket::swap(SmartSocket& other) noexcept {
    std::swap(d_handle, other.d_handle);
    std::swap(d_system, other.d_system);
}

} // namespace core
