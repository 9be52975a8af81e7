#include "internal/core_inet_system.h"

#include <cerrno>

namespace core {

// There is nothing to start here; the version is the one that Windows grants.
WinsockInit::System::Start WinsockInit::System::start() const { return {0, 2, 2}; }

void WinsockInit::System::stop() const {}

uint32_t detail::lastSocketError() { return static_cast<uint32_t>(errno); }

bool detail::nothingReceived(uint32_t error) { return error == EAGAIN || error == EWOULDBLOCK; }

} // namespace core
