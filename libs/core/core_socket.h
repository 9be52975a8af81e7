#pragma once

#include "core_smartsocket.h"

#include <cstdint>

namespace core {

/// What all kinds of sockets share: opened once, with settings that are kept, and
/// closed. One thread at a time.
class Socket {
public:
    /// Whether `open` succeeded and `close` has not been called since.
    bool isOpen() const { return d_socket.isOpen(); }
    /// What an event loop watches, see kern::DescriptorInterface.
    intptr_t descriptor() const { return static_cast<intptr_t>(d_socket.handle()); }
    /// The system's numbers; 0 until it was opened.
    int32_t family() const { return d_family; }
    int32_t type() const { return d_type; }
    int32_t protocol() const { return d_protocol; }

protected:
    /// The system must outlive the socket.
    explicit Socket(const SmartSocket::System& system) : d_socket(system) {}

    /// False when it is open already, which is a failed check, or when the system
    /// refuses; then nothing has changed.
    [[nodiscard]] bool openAs(int32_t family, int32_t type, int32_t protocol, uint32_t flags,
                              int32_t receiveTimeout);

    SmartSocket d_socket;
    int32_t d_family = 0;
    int32_t d_type = 0;
    int32_t d_protocol = 0;
    uint32_t d_flags = 0;         // of SmartSocket::Flags
    int32_t d_localPort = -1;     // -1 until it is bound
    int32_t d_receiveTimeout = 0; // milliseconds; 0 or less waits for ever
};

} // namespace core
