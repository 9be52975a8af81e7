#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

/// What the system calls the pieces of its socket interface; for sources only.
namespace core::detail {

using SystemSocket = int;
using AddressLength = socklen_t;
using ReceiveTimeout = timeval;

/// The option that sets a receive buffer of any size, for programs that may.
inline constexpr int kUnlimitedReceiveBuffer = SO_RCVBUFFORCE;

inline constexpr uint32_t kMessageTooLong = EMSGSIZE;

/// 0, which waits for ever, for what is below.
inline ReceiveTimeout receiveTimeout(int32_t milliseconds) {
    const int32_t wait = std::max(milliseconds, 0);
    return {wait / 1000, wait % 1000 * 1000L};
}

} // namespace core::detail
