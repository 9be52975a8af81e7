#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

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

inline ReceiveTimeout receiveTimeout(int32_t milliseconds) {
    return {milliseconds / 1000, milliseconds % 1000 * 1000L};
}

} // namespace core::detail
