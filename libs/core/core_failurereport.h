#pragma once

#include "core_check.h"

#include <cstdint>
#include <string>
#include <tuple>

/// The documents that tell a collecting server what failed.
namespace core {

enum class FailureType : uint8_t { Assertion, Alert };

/// What failures are told apart by.
struct FailureSite {
    FailureType type = FailureType::Assertion;
    std::string file;
    int32_t line = 0;

    bool operator<(const FailureSite& other) const {
        return std::tie(type, file, line) < std::tie(other.type, other.file, other.line);
    }
};

/// All failures of one site: the texts are those of the latest one.
struct FailureReport {
    FailureSite site;
    std::string condition;
    std::string message;
    std::string backtrace; ///< empty for none
    int32_t level = 0;
    uint32_t count = 1; ///< of failures since the last report
    uint32_t total = 1; ///< of failures since the start
};

/// Where and when a document is sent.
struct ReportContext {
    std::string server;
    bool aborts = false; ///< whether failures of this type stop the program
    int64_t time = 0;    ///< core::now()
};

/// An XML document of one `assert` element, well-formed whatever the texts hold, since all
/// of them are escaped, that fits into one datagram. What is too long is cut and ends in "...": a message after
/// 32 KiB, a condition after 8 KiB, other texts after 1 KiB, and the backtrace when
/// there is no more room.
std::string assertDocument(const FailureReport& report, const ReportContext& context);

/// An XML document of one `sendlogs` element, which asks the server to fetch the log
/// files; `site` says who asks.
std::string sendLogsDocument(const CheckSite& site, const std::string& server);

} // namespace core
