#pragma once

#include "core_v2masterlogger.h"

#include <cstdint>
#include <string>

struct sockaddr_in; // of the system's socket interface

/// The start of the network, and addresses.
namespace core {

/// The system's handle of a socket; on Linux a descriptor.
using SocketHandle = uintptr_t;
/// The handle of no socket.
inline constexpr SocketHandle kInvalidSocket = ~SocketHandle{0};

/// Whether the system granted version 2.2 of its socket interface, the only one that
/// this library uses. Set before main runs; always so on Linux. Any thread.
bool winsockReady();

/// Stores an IPv4 address, four decimal numbers from 0 to 255 without leading zeros,
/// as in "192.0.2.7"; family and port stay as they are. False, with a line on WARN and
/// nothing changed, for any other text: names are not looked up.
[[nodiscard]] bool SetSockAddr(sockaddr_in& address, const std::string& ip);

/// The address as SetSockAddr takes it.
std::string addressText(const sockaddr_in& address);

/// This computer's name, in the system's narrow encoding; empty when it has none.
std::string hostName();

/// Starts the network for every translation unit that includes this header, before its
/// other initialisers; the system counts the starts. One exit handler stops it.
class WinsockInit {
public:
    class System; ///< its system calls; tests replace it

    WinsockInit();
    /// The system must outlive the object.
    explicit WinsockInit(const System& system);

    /// Ends the network, once for all starts.
    static void stop(const System& system);
};
namespace {
const WinsockInit winsockInit; // NOLINT(misc-definitions-in-headers)
} // namespace

} // namespace core
