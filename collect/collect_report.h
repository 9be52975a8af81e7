#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace collect {

/// What a station reports of a site, as docs/reporting.md describes it. Texts are UTF-8.
struct Report {
    std::string type; ///< "ASSERT" or "ALERT"
    std::string file;
    int64_t line = 0;
    std::string condition;
    std::string message;
    std::string backtrace;
    int64_t level = 0;
    int64_t count = 0; ///< of failures since the report before
    int64_t total = 0; ///< of failures since the station's program started
    std::string utc;   ///< by the station's clock
    std::string server;
    std::string product;
    std::string swver;
    std::string hostname;
    std::string os;
    std::string build_id;
    std::string build_time;
    std::string action;
    std::string log_url;
};

/// The fields by their names in documents, in the order of documents.
struct TextField {
    std::string_view name;
    std::string Report::*text;
};
struct NumberField {
    std::string_view name;
    int64_t Report::*number;
};
inline constexpr TextField kTextFields[] = {
    {"type", &Report::type},
    {"file", &Report::file},
    {"condition", &Report::condition},
    {"message", &Report::message},
    {"backtrace", &Report::backtrace},
    {"utc", &Report::utc},
    {"server", &Report::server},
    {"product", &Report::product},
    {"swver", &Report::swver},
    {"hostname", &Report::hostname},
    {"os", &Report::os},
    {"build_id", &Report::build_id},
    {"build_time", &Report::build_time},
    {"action", &Report::action},
    {"log_url", &Report::log_url},
};
inline constexpr NumberField kNumberFields[] = {
    {"line", &Report::line},
    {"level", &Report::level},
    {"count", &Report::count},
    {"total", &Report::total},
};

/// Whether the required fields are there and valid; if not, `error` says why.
bool isComplete(const Report& report, std::string& error);

/// What a datagram turned out to be.
enum class Document : uint8_t { Failure, SendLogs, Malformed };

/// Reads a document as stations send it; unknown elements are skipped. If it is malformed,
/// `error` says why.
Document readDocument(std::string_view datagram, Report& report, std::string& error);

/// A report, when it arrived and from where.
struct Arrival {
    int64_t time = 0;   ///< core::now()
    std::string sender; ///< address and port, "192.0.2.7:50123"
    Report report;
};

} // namespace collect
