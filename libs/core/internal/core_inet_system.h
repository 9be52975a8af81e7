#pragma once

#include "core_inet.h"

#include <cstdint>

/// Between the modules of the socket layer, its platform halves and its tests; not for others.
namespace core {

class WinsockInit::System {
public:
    /// What the system answers to a start of the network.
    struct Start {
        int error;         ///< 0 for success
        uint8_t low, high; ///< of the version granted, "low.high"
    };
    virtual Start start() const;
    virtual void stop() const;

protected:
    ~System() = default; // trivial, so that the one of the process is never destroyed
};

namespace detail {

/// Of this thread's last call that failed.
uint32_t lastSocketError();

/// Whether the error only says that no datagram was there, or came in time.
bool nothingReceived(uint32_t error);

} // namespace detail
} // namespace core
