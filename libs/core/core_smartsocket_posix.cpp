#include "core_inet_types.h"
#include "internal/core_smartsocket_system.h"

#include <fcntl.h>

namespace core {

SocketHandle SmartSocket::System::open(int32_t family, int32_t type, int32_t protocol) const {
    // Minus one, the failure, becomes kInvalidSocket.
    return static_cast<SocketHandle>(::socket(family, type | SOCK_CLOEXEC, protocol));
}

int SmartSocket::System::close(SocketHandle socket) const {
    return ::close(static_cast<int>(socket));
}

void SmartSocket::System::setNonBlocking(SocketHandle socket) const {
    const int descriptor = static_cast<int>(socket);
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

} // namespace core
