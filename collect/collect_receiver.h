#pragma once

#include "collect_options.h"
#include "collect_page.h"
#include "collect_store.h"
#include "collect_table.h"
#include "core_udp4socket.h"
#include "kern_descriptorinterface.h"
#include "kern_pollloop.h"
#include "kern_timerinterface.h"

#include <string_view>

namespace collect {

/// Takes reports from the network, keeps them and writes the page, at most once a
/// second, on the event loop of its thread.
class Receiver final : public kern::TimerInterface, public kern::DescriptorInterface {
public:
    /// All of them must outlive it. The store has filled the table.
    Receiver(kern::PollLoop& loop, Table& table, Store& store, const Options& options);

    /// Starts receiving and writes the first page. False, after a log line, when it cannot.
    [[nodiscard]] bool start();
    int32_t port() const { return d_socket.localPort(); }

    /// Handles one datagram; `sender` is its address and port.
    void take(std::string_view datagram, const std::string& sender);

    /// Writes the page if anything is new.
    void writePage();

    const Counts& counts() const { return d_counts; }
    std::string pagePath() const { return d_options.folder + "/index.html"; }

    void readReady(intptr_t descriptor) override;
    void timerExpired(int64_t id) override;

private:
    void refuse(const std::string& sender, size_t length, const std::string& error);

    kern::PollLoop& d_loop;
    Table& d_table;
    Store& d_store;
    const Options& d_options;
    core::Udp4Socket d_socket;
    kern::TimerHandle d_pageTimer; // runs while the page is out of date
    Counts d_counts;
};

} // namespace collect
