#pragma once

#include "core_check.h"

#include <cstdint>
#include <string>
#include <tuple>

/// The documents that tell a collecting server what failed.
namespace core {

/// A failed check or assertion, or a failed alert.
enum class FailureType : uint8_t { Assertion, Alert };

/// What identifies a failure.
struct FailureSite {
    FailureType type = FailureType::Assertion; ///< counted separately
    std::string file;                          ///< without folders
    int32_t line = 0;                          ///< as the check's site names it

    /// By type, file and line.
    bool operator<(const FailureSite& other) const {
        return std::tie(type, file, line) < std::tie(other.type, other.file, other.line);
    }
};

/// All failures of one site: the texts are those of the latest one.
struct FailureReport {
    FailureSite site;      ///< where
    std::string condition; ///< its text
    std::string message;   ///< any bytes
    std::string backtrace; ///< empty for none
    int32_t level = 0;     ///< of the check
    uint32_t count = 1;    ///< of failures since the last report
    uint32_t total = 1;    ///< of failures since the start
};

/// Where and when a document is sent.
struct ReportContext {
    std::string server;  ///< its IPv4 address
    bool aborts = false; ///< whether failures of this type stop the program
    int64_t time = 0;    ///< core::now()
};

/// An XML document of one `assert` element, which fits into one datagram and is well-formed
/// whatever the texts hold, since all of them are escaped. What is too long is cut and ends
/// in "...": a message after 32 KiB, a condition after 8 KiB, other texts after 1 KiB, and
/// the backtrace when there is no more room.
std::string assertDocument(const FailureReport& report, const ReportContext& context);

/// An XML document of one `sendlogs` element, which asks the server to fetch the log
/// files; `site` says who asks.
std::string sendLogsDocument(const CheckSite& site, const std::string& server);

} // namespace core
