#include "core_inet_types.h"
#include "internal/core_inet_system.h"

#include <fcntl.h>

#include <cerrno>

namespace core::detail {

// There is nothing to start here; the version is the one that all systems speak.
NetworkStart systemStart() { return {0, 2, 2}; }

void systemStop() {}

SocketHandle SocketCalls::open(int32_t family, int32_t type, int32_t protocol) const {
    // Minus one, the failure, becomes kInvalidSocket.
    return static_cast<SocketHandle>(::socket(family, type | SOCK_CLOEXEC, protocol));
}

int SocketCalls::close(SocketHandle socket) const { return ::close(static_cast<int>(socket)); }

void SocketCalls::setNonBlocking(SocketHandle socket) const {
    const int descriptor = static_cast<int>(socket);
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

uint32_t lastSocketError() { return static_cast<uint32_t>(errno); }

bool nothingReceived(uint32_t error) { return error == EAGAIN || error == EWOULDBLOCK; }

} // namespace core::detail
