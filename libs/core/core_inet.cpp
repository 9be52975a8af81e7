#include "core_inet.h"

#include "core_inet_types.h"
#include "core_log.h"
#include "core_tokenizer.h"
#include "internal/core_inet_system.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <optional>

namespace core {
namespace {

constexpr CharSet kDot{"."};
constexpr uint8_t kVersionLow = 2;
constexpr uint8_t kVersionHigh = 2;
constexpr size_t kHostNameLimit = 256;

constinit std::atomic<bool> ready{false};
constinit std::atomic<bool> exitHandled{false};

struct TheSystem final : WinsockInit::System {};
constinit const TheSystem theSystem;

std::optional<uint32_t> octetOf(std::string_view field) {
    const bool digitsOnly = field.find_first_not_of("0123456789") == std::string_view::npos;
    if (!digitsOnly || field.size() > 3 || (field.size() > 1 && field[0] == '0'))
        return std::nullopt;
    const std::optional<int32_t> value = decimalNumber(field);
    return value && *value <= 255 ? std::optional(static_cast<uint32_t>(*value)) : std::nullopt;
}

/// In the computer's byte order.
std::optional<uint32_t> ipv4Of(std::string_view ip) {
    uint32_t address = 0;
    int32_t count = 0;
    Tokenizer fields(ip, {.delimiters = kDot, .skipEmpty = false});
    for (std::string_view field; fields.next(field); ++count) {
        const std::optional<uint32_t> octet = octetOf(field);
        if (!octet)
            return std::nullopt;
        address = address << 8 | *octet;
    }
    return count == 4 ? std::optional(address) : std::nullopt;
}

} // namespace

bool winsockReady() { return ready.load(std::memory_order_relaxed); }

WinsockInit::WinsockInit() : WinsockInit(theSystem) {
    if (!exitHandled.exchange(true))
        std::atexit([] { stop(theSystem); });
}

WinsockInit::WinsockInit(const System& system) {
    const System::Start started = system.start();
    if (started.error != 0) {
        logFrom(kChannelCrit, "WinsockInit", "WSAStartup failed, err=%d", started.error);
    } else if (started.low == kVersionLow && started.high == kVersionHigh) {
        ready.store(true, std::memory_order_relaxed);
    } else {
        logFrom(kChannelCrit, "WinsockInit", "no suitable WinSock DLL (%d.%d)", started.low,
                started.high);
        system.stop();
    }
}

void WinsockInit::stop(const System& system) {
    if (ready.exchange(false))
        system.stop();
}

bool SetSockAddr(sockaddr_in& address, const std::string& ip) {
    const std::optional<uint32_t> parsed = ipv4Of(ip);
    if (!parsed) {
        logFrom(kChannelWarn, "core::SetSockAddr", "invalid ip '%s'", ip);
        return false;
    }
    address.sin_addr.s_addr = htonl(*parsed);
    return true;
}

std::string addressText(const sockaddr_in& address) {
    const uint32_t ip = ntohl(address.sin_addr.s_addr);
    return format("%u.%u.%u.%u", ip >> 24, ip >> 16 & 0xFF, ip >> 8 & 0xFF, ip & 0xFF);
}

std::string hostName() {
    std::array<char, kHostNameLimit> name{};
    // The last byte stays 0: not every system terminates a name that it has cut.
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : std::string();
}

} // namespace core
