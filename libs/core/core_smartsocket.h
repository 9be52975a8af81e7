#pragma once

#include "core_inet.h"

#include <cstdint>

namespace core {

namespace detail {
struct Membership;
} // namespace detail

/// Owns one socket of the system and closes it in the end. Child processes do not inherit
/// it. Failures are logged on WARN, without the system's reason; a call on a closed
/// socket is a failed check, and false. One thread at a time.
class SmartSocket {
public:
    /// How a socket is made: no call waits; others may bind to its address.
    enum Flags : uint32_t { kNonBlocking = 1, kReuseAddr = 2 };

    class System; ///< its system calls; tests replace it
    static const System& theSystem();

    SmartSocket() : SmartSocket(theSystem()) {}
    /// The system must outlive the socket.
    explicit SmartSocket(const System& system) : d_system(&system) {}
    ~SmartSocket() { close(); }
    SmartSocket(const SmartSocket&) = delete;
    SmartSocket& operator=(const SmartSocket&) = delete;

    /// Closes what it holds and makes a new socket: `family`, `type` and `protocol` are
    /// the system's numbers, `flags` a sum of Flags. False: none is open.
    [[nodiscard]] bool create(int32_t family, int32_t type, int32_t protocol, uint32_t flags);

    /// Lets other sockets bind to the same address.
    [[nodiscard]] bool setReuseAddr();

    /// Lets no call wait.
    [[nodiscard]] bool setNonBlocking();

    /// The socket, kInvalidSocket for none, and the calls it is used by.
    bool isOpen() const { return d_handle != kInvalidSocket; }
    SocketHandle handle() const { return d_handle; }
    const System& system() const { return *d_system; }

    /// The system's result, 0 for success; -1 when nothing was open.
    int close();

    /// Exchanges the two sockets.
    void swap(SmartSocket& other) noexcept;

private:
    SocketHandle d_handle = kInvalidSocket;
    const System* d_system;
};

} // namespace core
