#include "core_failurereport.h"

#include "core_rcsname.h"
#include "core_timespec.h"
#include "core_udp4socket.h"
#include "core_varargs.h"
#include "textmarkup_xmlwriter.h"

namespace core {
namespace {

constexpr size_t kFieldLimit = 1024;
constexpr size_t kConditionLimit = 8 * kFieldLimit;
constexpr size_t kMessageLimit = 32 * kFieldLimit;
// The other fields are not 20, so that a backtrace always finds room.
static_assert(20 * kFieldLimit + kConditionLimit + kMessageLimit < Udp4Socket::kMaxLength);

constexpr std::string_view kBacktraceStart =
    "Backtrace START --------------------------------------------\n\n";
constexpr std::string_view kBacktraceEnd =
    "\nBacktrace END ----------------------------------------------";

std::string utcText(int64_t time) {
    const CivilTime utc = utcCivilTime(time);
    return format("%04d-%02d-%02d %02d:%02d:%02d", utc.year, utc.month, utc.day, utc.hour,
                  utc.minute, utc.second);
}

/// An element whose text is short unless something is wrong.
void field(textmarkup::XmlWriter& writer, const char* name, std::string_view text) {
    writer.element(name, text, kFieldLimit);
}

void field(textmarkup::XmlWriter& writer, const char* name, int64_t number) {
    field(writer, name, std::to_string(number));
}

void writeWhatFailed(textmarkup::XmlWriter& writer, const FailureReport& report) {
    field(writer, "type", report.site.type == FailureType::Assertion ? "ASSERT" : "ALERT");
    field(writer, "file", report.site.file);
    field(writer, "line", report.site.line);
    writer.element("condition", report.condition, kConditionLimit);
    writer.element("message", report.message, kMessageLimit);
}

void writeWhereItFailed(textmarkup::XmlWriter& writer, const FailureReport& report,
                        const ReportContext& context) {
    field(writer, "level", report.level);
    field(writer, "count", report.count);
    field(writer, "total", report.total);
    field(writer, "utc", utcText(context.time));
    field(writer, "server", context.server);
    field(writer, "product", productName());
    field(writer, "swver", version());
    field(writer, "hostname", hostName());
    field(writer, "os", platformName());
    field(writer, "build_id", rcsName());
    field(writer, "build_time", buildStamp());
    field(writer, "action", context.aborts ? "abort" : "continue");
    field(writer, "log_url", "");
}

/// With at most `room` bytes of the backtrace between the lines around it.
void writeBacktrace(textmarkup::XmlWriter& writer, const std::string& backtrace, size_t room) {
    if (backtrace.empty())
        return field(writer, "backtrace", "");
    writer.open("backtrace");
    writer.text(kBacktraceStart);
    writer.text(backtrace, room);
    writer.text(kBacktraceEnd);
    writer.close();
}

std::string document(const FailureReport& report, const ReportContext& context,
                     const std::string& backtrace, size_t room) {
    textmarkup::XmlWriter writer;
    writer.declaration();
    writer.open("assert");
    writeWhatFailed(writer, report);
    writeBacktrace(writer, backtrace, room);
    writeWhereItFailed(writer, report, context);
    return writer.finish();
}

} // namespace

std::string assertDocument(const FailureReport& report, const ReportContext& context) {
    const size_t used = document(report, context, "", 0).size();
    const size_t room =
        Udp4Socket::kMaxLength - used - kBacktraceStart.size() - kBacktraceEnd.size();
    return document(report, context, report.backtrace, room);
}

std::string sendLogsDocument(const CheckSite& site, const std::string& server) {
    textmarkup::XmlWriter writer;
    writer.declaration();
    writer.open("sendlogs");
    field(writer, "file", site.file != nullptr ? site.file : "");
    field(writer, "line", site.line);
    field(writer, "server", server);
    return writer.finish();
}

} // namespace core
