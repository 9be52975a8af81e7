#include "core_inet_types.h"
#include "internal/core_inet_system.h"

namespace core::detail {

static_assert(kInvalidSocket == INVALID_SOCKET && sizeof(SocketHandle) == sizeof(SOCKET));

NetworkStart systemStart() {
    WSADATA data{};
    const int error = WSAStartup(MAKEWORD(2, 2), &data);
    return {error, LOBYTE(data.wVersion), HIBYTE(data.wVersion)};
}

void systemStop() { WSACleanup(); }

SocketHandle SocketCalls::open(int32_t family, int32_t type, int32_t protocol) const {
    const SOCKET socket = ::socket(family, type, protocol);
    // Child processes do not inherit it.
    if (socket != INVALID_SOCKET)
        SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
    return socket;
}

int SocketCalls::close(SocketHandle socket) const { return closesocket(socket); }

void SocketCalls::setNonBlocking(SocketHandle socket) const {
    u_long on = 1;
    ioctlsocket(socket, static_cast<long>(FIONBIO), &on);
}

uint32_t lastSocketError() { return static_cast<uint32_t>(WSAGetLastError()); }

bool nothingReceived(uint32_t error) { return error == WSAEWOULDBLOCK || error == WSAETIMEDOUT; }

} // namespace core::detail
