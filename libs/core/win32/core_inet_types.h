#pragma once

#include <winsock2.h>

#include <ws2tcpip.h>

#include <cstdint>

/// What the system calls the pieces of its socket interface; for sources only.
namespace core::detail {

using SystemSocket = SOCKET;
using AddressLength = int;
using ReceiveTimeout = DWORD;

/// The option that sets a receive buffer of any size, for programs that may.
inline constexpr int kUnlimitedReceiveBuffer = SO_RCVBUF;

inline constexpr uint32_t kMessageTooLong = WSAEMSGSIZE;

/// 0, which waits for ever, for what is below.
inline ReceiveTimeout receiveTimeout(int32_t milliseconds) {
    return static_cast<DWORD>(milliseconds > 0 ? milliseconds : 0);
}

} // namespace core::detail
