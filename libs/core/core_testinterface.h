#pragma once

#include "core_failurereport.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace core {

struct ReportSettings;

/// Decides what happens to failed checks and alerts besides their log line: whether they
/// stop the program, which are expected and need no report, and whether reports go to a
/// collecting server, as one document for each site and datagram.
///
/// One per process, from the first initialiser to the very end. It reads its files once:
/// when core::Globals is made, or at the first failure before that. A failure during that
/// reading, on any thread, is judged by the defaults. By default nothing is sent. Any
/// thread.
class TestInterface {
public:
    /// The process's.
    static TestInterface& instance();

    /// Reads the settings of core::ReportSettings and the list of core::AssertExclude,
    /// unless that was done or began before.
    void loadIni() { loaded(); }

    /// Those in force.
    ReportSettings settings();

    /// Replaces what the settings file says, whether it was read or not.
    void setSettings(const ReportSettings& settings);

    /// Whether the exclusion list of core::AssertExclude names the site.
    bool isExcluded(const char* file, int32_t line);

    /// Takes over a failure that has been logged: counts it, and sends it if the
    /// settings say so.
    void report(FailureType type, const char* condition, const char* file, int32_t line,
                int32_t level, const std::string& message);
    /// How many it has taken over.
    uint64_t reportCount(FailureType type);

    /// Whether a failure of this type must stop the program; off by default.
    bool abortsOn(FailureType type);

    /// Sends what failed since it was last sent, of the types whose failures are to be
    /// sent. What cannot be sent is logged, and kept for the next time.
    void sendAsserts();

    /// Stops sending, whatever the settings say: for a program that would receive its own
    /// reports.
    void stopSending() { d_sendingStopped = true; }

    /// Asks the server to fetch the log files, if anything was sent before; otherwise
    /// says on standard error that there is no socket. `site` is who asks.
    void requestSendLogs(const CheckSite& site);

private:
    struct Loaded;
    struct Collected;

    constexpr TestInterface() = default;
    const Loaded* loaded();
    Collected& collected();
    void sendUnsent(FailureType type, const ReportSettings& asked);

    std::atomic<bool> d_loadStarted{false};
    std::atomic<bool> d_sendingStopped{false};
    std::atomic<const Loaded*> d_loaded{nullptr}; // never deleted, as the next
    std::atomic<Collected*> d_collected{nullptr};
};

} // namespace core
