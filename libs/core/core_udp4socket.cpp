#include "core_udp4socket.h"

#include "core_inet_types.h"
#include "core_log.h"
#include "core_wrapper.h"
#include "internal/core_inet_system.h"
#include "internal/core_smartsocket_system.h"

#include <algorithm>
#include <new>
#include <utility>

namespace core {
namespace {

constexpr CheckSite kSendClosed{"core_udp4socket.cpp", 88};
constexpr CheckSite kLeaveClosed{"core_udp4socket.cpp", 534};

constexpr char kAnyInterface[] = "0.0.0.0";
constexpr size_t kReceiveLimit = 65536; // more than any datagram holds

static_assert(sizeof(detail::Membership) == sizeof(ip_mreq));

detail::SystemSocket systemSocket(const SmartSocket& socket) {
    return static_cast<detail::SystemSocket>(socket.handle());
}

sockaddr_in endpoint(uint32_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    return address;
}

std::string textOf(uint32_t ip) {
    sockaddr_in address{};
    address.sin_addr.s_addr = ip;
    return addressText(address);
}

/// Logs "ARGUMENTS - failed in CALL (NUMBER: TEXT)" for the call that just failed.
void logCallFailed(const char* function, const std::string& arguments, const char* call,
                   uint32_t error) {
    logFrom(kChannelWarn, function, "%s - failed in %s (%u: %s)", arguments, call, error,
            Wrapper::systemErrorText(error));
}

} // namespace

Udp4Socket::Udp4Socket() : Udp4Socket(SmartSocket::theSystem()) {}

Udp4Socket::Udp4Socket(const SmartSocket::System& system) : Socket(system) {}

Udp4Socket::~Udp4Socket() { close(); }

bool Udp4Socket::open(uint32_t flags, int32_t receiveTimeout) {
    if (!openAs(AF_INET, SOCK_DGRAM, 0, flags, receiveTimeout))
        return false;
    const detail::ReceiveTimeout timeout = detail::receiveTimeout(receiveTimeout);
    setsockopt(systemSocket(d_socket), SOL_SOCKET, SO_RCVTIMEO,
               reinterpret_cast<const char*>(&timeout), sizeof timeout);
    return true;
}

bool Udp4Socket::bind(const std::string& ip, uint16_t port) try {
    sockaddr_in address = endpoint(port);
    if (!CHECKF(isOpen()) || !SetSockAddr(address, ip))
        return false;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    detail::AddressLength length = sizeof address;
    if (::bind(systemSocket(d_socket), generic, length) != 0 ||
        getsockname(systemSocket(d_socket), generic, &length) != 0) {
        logCallFailed("core::Udp4Socket::bind", format("(%s,%u)", ip, port), "bind",
                      detail::lastSocketError());
        return false;
    }
    d_localPort = ntohs(address.sin_port);
    return true;
} catch (const std::bad_alloc&) {
    return logNoMemory("core::Udp4Socket::bind");
}

int32_t Udp4Socket::setReceiveBuffer(int32_t bytes) {
    if (!CHECKF(isOpen()))
        return -1;
    const detail::SystemSocket socket = systemSocket(d_socket);
    const auto* const wanted = reinterpret_cast<const char*>(&bytes);
    if (setsockopt(socket, SOL_SOCKET, detail::kUnlimitedReceiveBuffer, wanted, sizeof bytes) != 0)
        setsockopt(socket, SOL_SOCKET, SO_RCVBUF, wanted, sizeof bytes);
    int32_t granted = -1;
    detail::AddressLength length = sizeof granted;
    const bool known =
        getsockopt(socket, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<char*>(&granted), &length) == 0;
    return known ? granted : -1;
}

bool Udp4Socket::send(const sockaddr_in& to, const void* data, int32_t length) const {
    // A negative length becomes one that is refused.
    return sendBytes(to, {static_cast<const char*>(data), static_cast<uint32_t>(length)});
}

bool Udp4Socket::send(const std::string& ip, uint32_t port, std::string_view data) const {
    sockaddr_in to = endpoint(port);
    if (!std::in_range<uint16_t>(port) || !SetSockAddr(to, ip)) {
        logFrom(kChannelWarn, "core::Udp4Socket::send", "(%u,%u,%s) - failed to set sockaddr",
                data.size(), port, ip);
        return false;
    }
    return sendBytes(to, data);
}

bool Udp4Socket::sendBytes(const sockaddr_in& to, std::string_view data) const try {
    if (!CHECKF_AT(kSendClosed, isOpen()))
        return false;
    uint32_t error = detail::kMessageTooLong; // the system's lengths may be shorter than ours
    if (data.size() <= kMaxLength) {
        if (sendto(systemSocket(d_socket), data.data(), data.size(), 0,
                   reinterpret_cast<const sockaddr*>(&to), sizeof to) >= 0)
            return true;
        error = detail::lastSocketError();
    }
    logCallFailed("core::Udp4Socket::send",
                  format("(%u,%u,%s)", data.size(), ntohs(to.sin_port), addressText(to)), "sendto",
                  error);
    return false;
} catch (const std::bad_alloc&) {
    return logNoMemory("core::Udp4Socket::send");
}

std::optional<Udp4Socket::Datagram> Udp4Socket::receive() try {
    if (!CHECKF(isOpen()))
        return std::nullopt;
    Datagram datagram;
    datagram.data.resize(kReceiveLimit);
    sockaddr_in from{};
    detail::AddressLength length = sizeof from;
    const auto received = recvfrom(systemSocket(d_socket), datagram.data.data(), kReceiveLimit, 0,
                                   reinterpret_cast<sockaddr*>(&from), &length);
    if (received < 0) {
        const uint32_t error = detail::lastSocketError();
        if (!detail::nothingReceived(error))
            logCallFailed("core::Udp4Socket::receive", format("(%d)", d_localPort), "recvfrom",
                          error);
        return std::nullopt;
    }
    datagram.data.resize(static_cast<size_t>(received));
    datagram.ip = addressText(from);
    datagram.port = ntohs(from.sin_port);
    return datagram;
} catch (const std::bad_alloc&) {
    logNoMemory("core::Udp4Socket::receive");
    return std::nullopt;
}

bool Udp4Socket::joinMulticastGroup(const std::string& group, const std::string& interfaceIp) try {
    sockaddr_in groupAddress{};
    sockaddr_in interfaceAddress{};
    if (!CHECKF(isOpen()) || !SetSockAddr(groupAddress, group))
        return false;
    if (!SetSockAddr(interfaceAddress, interfaceIp)) {
        logFrom(kChannelWarn, "core::Udp4Socket::joinMulticastGroup",
                "(%s) - invalid inteface ip '%s'", group, interfaceIp);
        return false;
    }
    d_memberships.reserve(d_memberships.size() + 1); // before there is one to leave again
    const detail::Membership membership{groupAddress.sin_addr.s_addr,
                                        interfaceAddress.sin_addr.s_addr};
    if (!d_socket.system().join(d_socket.handle(), membership)) {
        const uint32_t error = detail::lastSocketError();
        logFrom(kChannelWarn, "core::Udp4Socket::joinMulticastGroup",
                "(%s) - failed adding membership for interface %s (%u: %s)", group, interfaceIp,
                error, Wrapper::systemErrorText(error));
        return false;
    }
    d_memberships.push_back(membership);
    return true;
} catch (const std::bad_alloc&) {
    return logNoMemory("core::Udp4Socket::joinMulticastGroup");
}

bool Udp4Socket::leaveMulticastGroup(const std::string& interfaceIp) {
    sockaddr_in address{};
    if (!CHECKF_AT(kLeaveClosed, isOpen()) || !SetSockAddr(address, interfaceIp))
        return false;
    const uint32_t ip = address.sin_addr.s_addr;
    const auto kept = std::stable_partition(
        d_memberships.begin(), d_memberships.end(),
        [ip](const detail::Membership& m) { return ip != INADDR_ANY && m.onInterface != ip; });
    bool allLeft = true;
    for (auto membership = kept; membership != d_memberships.end(); ++membership)
        allLeft = leave(*membership) && allLeft;
    d_memberships.erase(kept, d_memberships.end());
    return allLeft;
}

bool Udp4Socket::leave(const detail::Membership& membership) const try {
    const bool left = d_socket.system().leave(d_socket.handle(), membership);
    if (!left)
        logFrom(kChannelWarn, "core::Udp4Socket::leaveMulticastGroup",
                "(%s) - failed dropping membership for interface %s", textOf(membership.group),
                textOf(membership.onInterface));
    return left;
} catch (const std::bad_alloc&) {
    return logNoMemory("core::Udp4Socket::leaveMulticastGroup");
}

int Udp4Socket::close() {
    if (isOpen() && !d_memberships.empty())
        (void)leaveMulticastGroup(kAnyInterface);
    d_memberships.clear();
    d_localPort = -1;
    return d_socket.close();
}

} // namespace core
