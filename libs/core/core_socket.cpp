#include "core_socket.h"

#include "core_log.h"

namespace core {
namespace {

constexpr CheckSite kAlreadyOpen{"core_socket.cpp", 47};
constexpr CheckSite kOpenFailed{"core_socket.cpp", 54};

} // namespace

bool Socket::openAs(int32_t family, int32_t type, int32_t protocol, uint32_t flags,
                    int32_t receiveTimeout) {
    if (!CHECKF_AT(kAlreadyOpen, !isOpen()))
        return false;
    SmartSocket fresh(d_socket.system());
    if (!fresh.create(family, type, protocol, flags)) {
        logAt(kChannelWarn, kOpenFailed);
        return false;
    }
    d_family = family;
    d_type = type;
    d_protocol = protocol;
    d_flags = flags;
    d_receiveTimeout = receiveTimeout;
    d_socket.swap(fresh);
    return true;
}

} // namespace core
