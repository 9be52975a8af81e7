#pragma once

#include "core_socket.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace core {

/// Sends and receives datagrams over IPv4. Addresses are texts as core::SetSockAddr takes
/// them, ports are in the computer's byte order. Failures are logged on WARN with the
/// system's reason, except for opening and for leaving a group; a call on a closed socket
/// is a failed check and does nothing. One thread at a time, except that any number of
/// threads may send.
class Udp4Socket : public Socket {
public:
    Udp4Socket();
    /// The system must outlive the socket; for tests.
    explicit Udp4Socket(const SmartSocket::System& system);
    ~Udp4Socket();

    /// `flags` is a sum of SmartSocket::Flags; `receiveTimeout`, in milliseconds, limits
    /// how long `receive` waits; 0 or less: no limit. A socket that is open is a failed
    /// check.
    [[nodiscard]] bool open(uint32_t flags = 0, int32_t receiveTimeout = 0);

    /// Receives from now on what is sent to this address; port 0 takes a free one.
    [[nodiscard]] bool bind(const std::string& ip, uint16_t port);

    /// Asks the system for a receive buffer of so many bytes and returns how many it
    /// grants: on Linux, programs without privileges may get less, and the system's own
    /// overhead counts. -1 if the system cannot tell.
    int32_t setReceiveBuffer(int32_t bytes);

    /// The port that it is bound to, -1 for none.
    int32_t localPort() const { return d_localPort; }

    /// Sends one datagram of 0 to kMaxLength bytes to a port from 1 to 65535; others are
    /// refused.
    static constexpr size_t kMaxLength = 65507;
    [[nodiscard]] bool send(const sockaddr_in& to, const void* data, int32_t length) const;
    [[nodiscard]] bool send(const std::string& ip, uint32_t port, std::string_view data) const;

    /// What was received, and from whom.
    struct Datagram {
        std::string data;  ///< any bytes
        std::string ip;    ///< of the sender, as the port
        uint16_t port = 0; ///< in the computer's byte order
    };
    /// Waits for the next datagram. Nothing if none came in time, if none was there and
    /// the socket does not block, or on failure.
    std::optional<Datagram> receive();

    /// Receives what is sent to the group, on the interface with the address given,
    /// until the group is left.
    [[nodiscard]] bool joinMulticastGroup(const std::string& group, const std::string& interfaceIp);

    /// Leaves the groups that were joined on the interface, with "0.0.0.0" all. False
    /// when the system refused one; none is remembered in either case.
    [[nodiscard]] bool leaveMulticastGroup(const std::string& interfaceIp);

    /// Leaves all groups first. The system's result, 0 for success; -1 when nothing
    /// was open.
    int close();

private:
    bool sendBytes(const sockaddr_in& to, std::string_view data) const;
    bool leave(const detail::Membership& membership) const;

    std::vector<detail::Membership> d_memberships;
};

} // namespace core
