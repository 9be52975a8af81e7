#include "core_testinterface.h"

#include "core_log.h"
#include "core_reportsettings.h"
#include "core_stacktrace.h"
#include "core_timespec.h"
#include "core_udp4socket.h"
#include "internal/core_assertexclude.h"
#include "internal/core_failuretable.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace core {
namespace {

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

} // namespace

struct TestInterface::Loaded {
    ReportSettings settings;
    AssertExclude exclusions;
};

struct TestInterface::Collected {
    FailureTable failures;

    /// The socket, created at first use; null if the system refuses.
    std::shared_ptr<const Udp4Socket> openSocket();
    std::shared_ptr<const Udp4Socket> socket();

    void setByCode(const ReportSettings& settings);
    std::optional<ReportSettings> setByCode();

private:
    // Guards only the pointer; several threads may send on the socket.
    std::mutex d_socketMutex;
    std::shared_ptr<const Udp4Socket> d_socket;

    std::mutex d_settingsMutex;
    std::optional<ReportSettings> d_settings;
};

void TestInterface::Collected::setByCode(const ReportSettings& settings) {
    const std::lock_guard lock(d_settingsMutex);
    d_settings = settings;
}

std::optional<ReportSettings> TestInterface::Collected::setByCode() {
    const std::lock_guard lock(d_settingsMutex);
    return d_settings;
}

std::shared_ptr<const Udp4Socket> TestInterface::Collected::socket() {
    const std::lock_guard lock(d_socketMutex);
    return d_socket;
}

std::shared_ptr<const Udp4Socket> TestInterface::Collected::openSocket() try {
    if (auto current = socket())
        return current;
    auto fresh = std::make_shared<Udp4Socket>();
    if (!fresh->open()) // outside of the lock, since it logs
        return nullptr;
    const std::lock_guard lock(d_socketMutex);
    if (d_socket == nullptr)
        d_socket = std::move(fresh);
    return d_socket;
} catch (const std::bad_alloc&) {
    return nullptr;
}

TestInterface& TestInterface::instance() {
    static constinit TestInterface theInstance;
    return theInstance;
}

const TestInterface::Loaded* TestInterface::loaded() {
    // Do not wait for the reading thread: it may be waiting for the log's lock, which the
    // failing thread may hold.
    if (!d_loadStarted.load(std::memory_order_relaxed) && !d_loadStarted.exchange(true)) {
        try {
            auto fresh = std::make_unique<Loaded>();
            fresh->settings.load();
            fresh->exclusions.load();
            d_loaded.store(fresh.release(), std::memory_order_release);
        } catch (const std::bad_alloc&) { // the next failure tries again
            d_loadStarted = false;
            throw;
        }
    }
    return d_loaded.load(std::memory_order_acquire);
}

TestInterface::Collected& TestInterface::collected() {
    Collected* current = d_collected.load(std::memory_order_acquire);
    if (current != nullptr)
        return *current;
    auto fresh = std::make_unique<Collected>();
    if (d_collected.compare_exchange_strong(current, fresh.get(), std::memory_order_acq_rel))
        return *fresh.release();
    return *current;
}

void TestInterface::setSettings(const ReportSettings& settings) { collected().setByCode(settings); }

ReportSettings TestInterface::settings() {
    const Loaded* current = loaded();
    if (const auto set = collected().setByCode())
        return *set;
    return current != nullptr ? current->settings : ReportSettings{};
}

bool TestInterface::isExcluded(const char* file, int32_t line) {
    const Loaded* current = loaded();
    return current != nullptr && current->exclusions.contains(textOf(file), line);
}

bool TestInterface::abortsOn(FailureType type) {
    return settings().asksFor(ReportSettings::kAbort, type);
}

void TestInterface::report(FailureType type, const char* condition, const char* file, int32_t line,
                           int32_t level, const std::string& message) {
    const ReportSettings asked = settings();
    FailureReport failure{.site = {type, textOf(file), line},
                          .condition = textOf(condition),
                          .message = message,
                          .backtrace = {},
                          .level = level};
    if (asked.asksFor(ReportSettings::kBacktrace, type))
        failure.backtrace = StackTrace().getStackText();
    collected().failures.add(std::move(failure));
    if (asked.asksFor(ReportSettings::kSend, type))
        sendAsserts();
}

uint64_t TestInterface::reportCount(FailureType type) { return collected().failures.total(type); }

void TestInterface::sendAsserts() {
    if (d_sendingStopped)
        return;
    const ReportSettings asked = settings();
    for (const FailureType type : {FailureType::Assertion, FailureType::Alert}) {
        if (asked.asksFor(ReportSettings::kSend, type))
            sendUnsent(type, asked);
    }
}

void TestInterface::sendUnsent(FailureType type, const ReportSettings& asked) {
    const ReportContext context{.server = asked.sendAddress,
                                .aborts = asked.asksFor(ReportSettings::kAbort, type),
                                .time = now()};
    FailureTable& failures = collected().failures;
    const std::vector<FailureReport> unsent = failures.takeUnsent(type);
    if (unsent.empty())
        return;
    const std::shared_ptr<const Udp4Socket> socket = collected().openSocket();
    if (socket == nullptr)
        logf(kChannelWarn, "TestInterface:sendAsserts - failed creating socket");
    const auto isSent = [&](const FailureReport& report) {
        try {
            return socket != nullptr &&
                   socket->send(asked.sendAddress, static_cast<uint32_t>(asked.sendPort),
                                assertDocument(report, context));
        } catch (const std::bad_alloc&) {
            return false;
        }
    };
    for (const FailureReport& report : unsent) {
        if (!isSent(report))
            failures.putBack(report);
    }
}

void TestInterface::requestSendLogs(const CheckSite& site) {
    const std::shared_ptr<const Udp4Socket> socket = collected().socket();
    if (socket == nullptr) {
        std::fputs("TestInterface:requestSendLogs - d_socket is null\n", stderr);
        return;
    }
    const ReportSettings asked = settings();
    (void)socket->send(asked.sendAddress, static_cast<uint32_t>(asked.sendPort),
                       sendLogsDocument(site, asked.sendAddress));
}

} // namespace core
