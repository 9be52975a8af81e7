#pragma once

#include "core_failurereport.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace core {

/// What happens to failures besides their log line, as set by a text file, which
/// docs/reporting.md describes. By default nothing is sent and nothing stops.
///
/// One thread reads; afterwards any thread may ask.
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

    /// Applies "settings/testing.ini", or "settings/testing.alt.ini" if that does not
    /// open, both in the working folder. Does nothing if neither opens.
    void load();

    /// Applies the file, which stays open. Lines without meaning are skipped; unknown
    /// sections and values also get a line on WARN.
    void read(FILE* file);

private:
    void readGeneral(std::string_view key, std::string_view value);
    void readEffect(FailureType type, std::string_view key, std::string_view value);
};

} // namespace core
