#include "core_inet_types.h"
#include "internal/core_inet_system.h"

namespace core {

WinsockInit::System::Start WinsockInit::System::start() const {
    WSADATA data{};
    const int error = WSAStartup(MAKEWORD(2, 2), &data);
    return {error, LOBYTE(data.wVersion), HIBYTE(data.wVersion)};
}

void WinsockInit::System::stop() const { WSACleanup(); }

uint32_t detail::lastSocketError() { return static_cast<uint32_t>(WSAGetLastError()); }

bool detail::nothingReceived(uint32_t error) {
    return error == WSAEWOULDBLOCK || error == WSAETIMEDOUT;
}

} // namespace core
