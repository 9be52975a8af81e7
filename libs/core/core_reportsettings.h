#pragma once

#include "core_failurereport.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace core {

/// What becomes of failures beyond their log line, as a text file says it; see
/// docs/reporting.md for the file. By default nothing is sent and nothing stops.
///
/// Reading is one thread's; afterwards any thread may ask.
struct ReportSettings {
    /// What a failure leads to. Alerts have the same three bits, shifted by three.
    enum Effect : uint32_t { kAbort = 1, kSend = 2, kBacktrace = 4 };

    int32_t assertLevel = 1;                    ///< 1, whatever the file says
    std::string sendAddress = "198.51.100.100"; ///< IPv4
    int32_t sendPort = 25000;                   ///< of UDP
    std::string symbolServerAddress;            ///< read, and not used
    uint32_t flags = 0;                         ///< a sum of Effect, for assertions and alerts

    /// Whether failures of this type have the effect.
    bool asksFor(Effect effect, FailureType type) const;

    /// Takes over what "settings/testing.ini" holds, or "settings/testing.alt.ini" when
    /// that does not open, both in the working folder. Nothing when neither opens.
    void load();

    /// Takes over what the file holds; it stays open. Lines that mean nothing are
    /// skipped, a section or value that is not known with a line on WARN.
    void read(FILE* file);

private:
    void readGeneral(std::string_view key, std::string_view value);
    void readEffect(FailureType type, std::string_view key, std::string_view value);
};

} // namespace core
