#include "core_inet_types.h"
#include "internal/core_smartsocket_system.h"

namespace core {

static_assert(kInvalidSocket == INVALID_SOCKET && sizeof(SocketHandle) == sizeof(SOCKET));

SocketHandle SmartSocket::System::open(int32_t family, int32_t type, int32_t protocol) const {
    const SOCKET socket = ::socket(family, type, protocol);
    // Child processes do not inherit it.
    if (socket != INVALID_SOCKET)
        SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
    return socket;
}

int SmartSocket::System::close(SocketHandle socket) const { return closesocket(socket); }

void SmartSocket::System::setNonBlocking(SocketHandle socket) const {
    u_long on = 1;
    ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
}

} // namespace core
