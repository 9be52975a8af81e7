#include "collect_receiver.h"

#include "core_log.h"
#include "core_reportsettings.h"
#include "core_testinterface.h"
#include "core_timespec.h"
#include "utl_file.h"
#include "utl_fileutils.h"

#include <optional>

namespace collect {
namespace {

constexpr uint32_t kPageInterval = 1000;     // milliseconds
constexpr int32_t kReceiveBuffer = 32 << 20; // bytes; some ten thousand reports
constexpr int kDatagramsInATurn = 256;       // then it is the timers' turn
constexpr int32_t kReadableMode = 0644;
constexpr const char* kAnyAddress = "0.0.0.0";

/// Whether this computer has the address.
bool isOwnAddress(const std::string& ip) {
    core::Udp4Socket probe;
    return probe.open() && probe.bind(ip, 0);
}

/// Its own reports would come back to it, fail again, and so on for ever.
void neverReportTo(const std::string& address, int32_t port) {
    const core::ReportSettings settings = core::TestInterface::instance().settings();
    if (settings.sendPort != port ||
        !(settings.asksFor(core::ReportSettings::kSend, core::FailureType::Assertion) ||
          settings.asksFor(core::ReportSettings::kSend, core::FailureType::Alert)))
        return;
    if (settings.sendAddress == address ||
        (address == kAnyAddress && isOwnAddress(settings.sendAddress)))
        core::TestInterface::instance().stopSending();
}

} // namespace

Receiver::Receiver(kern::PollLoop& loop, Table& table, Store& store, const Options& options)
    : d_loop(loop), d_table(table), d_store(store), d_options(options) {
    d_counts.started = core::now();
}

bool Receiver::start() {
    if (!d_socket.open(core::SmartSocket::kNonBlocking) ||
        !d_socket.bind(d_options.address, d_options.port))
        return false;
    core::logFrom(core::kChannelInfo, "collect::Receiver::start",
                  "(%s,%d) - the system keeps %d bytes of reports that wait", d_options.address,
                  port(), d_socket.setReceiveBuffer(kReceiveBuffer));
    neverReportTo(d_options.address, port());
    restartTimer(d_pageTimer, 0);
    return watchRead(d_socket.descriptor());
}

void Receiver::readReady(intptr_t) {
    for (int i = 0; i < kDatagramsInATurn; ++i) {
        const std::optional<core::Udp4Socket::Datagram> datagram = d_socket.receive();
        if (!datagram)
            return;
        take(datagram->data, core::format("%s:%u", datagram->ip, datagram->port));
        if (d_options.once && d_counts.reports > 0) {
            d_loop.stop();
            return;
        }
    }
}

void Receiver::take(std::string_view datagram, const std::string& sender) {
    Arrival arrival{.time = core::now(), .sender = sender, .report = {}};
    std::string error;
    switch (readDocument(datagram, arrival.report, error)) {
    case Document::Malformed:
        refuse(sender, datagram.size(), error);
        break;
    case Document::SendLogs:
        core::logFrom(core::kChannelWarn, "collect::Receiver::take",
                      "(%s) - the logs of this station should be fetched", sender);
        return;
    case Document::Failure:
        ++d_counts.reports;
        d_table.add(arrival);
        d_store.append(arrival, d_table);
        break;
    }
    if (d_pageTimer.id == 0)
        restartTimer(d_pageTimer, kPageInterval);
}

/// Logs one in a thousand, so that nobody can fill the log from outside.
void Receiver::refuse(const std::string& sender, size_t length, const std::string& error) {
    constexpr uint64_t kLoggedOf = 1000;
    if (d_counts.malformed++ % kLoggedOf == 0)
        core::logFrom(core::kChannelWarn, "collect::Receiver::take",
                      "(%s,%u) - no report: %s (%u of that kind so far)", sender, length, error,
                      d_counts.malformed);
}

void Receiver::timerExpired(int64_t) { writePage(); }

void Receiver::writePage() {
    if (d_pageTimer.id == 0)
        return;
    killTimer(d_pageTimer);
    const std::string page = makePage(d_table, d_counts, core::now());
    // Not by the safe store, which makes files for their owner alone: the umask decides who
    // may read this one, and after a power cut it is simply written again.
    const std::string fresh = pagePath() + ".new";
    if (utl::File::createFromMem(fresh, page.data(), page.size(), 0, kReadableMode))
        (void)utl::FileUtils::renameFile(fresh, pagePath());
}

} // namespace collect
