#include "core_failurereport.h"

#include "core_rcsname.h"
#include "core_timespec.h"
#include "core_udp4socket.h"
#include "core_varargs.h"
#include "textmarkup_writer.h"

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
void field(textmarkup::Writer& writer, const char* name, std::string_view text) {
    writer.element(name, text, kFieldLimit);
}

void field(textmarkup::Writer& writer, const char* name, int64_t number) {
    field(writer, name, std::to_string(number));
}

void writeWhatFailed(textmarkup::Writer& writer, const FailureReport& report) {
    field(writer, "type", report.site.type == FailureType::Assertion ? "ASSERT" : "ALERT");
    field(writer, "file", report.site.file);
    field(writer, "line", report.site.line);
    writer.element("condition", report.condition, kConditionLimit);
    writer.element("message", report.message, kMessageLimit);
}

void writeWhereItFailed(textmarkup::Writer& writer, const FailureReport& report,
                        const ReportContext& context) {
    field(writer, "level", report.level);
    field(writer, "count", report.count);
    field(writer, "total", report.total);
    field(writer, "utc", utcText(context.time));
    field(writer, "server", context.server);
    field(writer, "product", buildModuleName());
    field(writer, "swver", version());
    field(writer, "hostname", hostName());
    field(writer, "os", platformName());
    field(writer, "build_id", rcsName());
    field(writer, "build_time", buildStamp());
    field(writer, "action", context.aborts ? "abort" : "continue");
    field(writer, "log_url", "");
}

/// The element with the backtrace, in at most `room` bytes.
std::string backtraceElement(const std::string& backtrace, size_t room) {
    constexpr size_t kAround = std::string_view("<backtrace></backtrace>\n").size() +
                               kBacktraceStart.size() + kBacktraceEnd.size();
    std::string framed;
    if (!backtrace.empty())
        framed.append(kBacktraceStart)
            .append(textmarkup::escaped(backtrace, room - kAround))
            .append(kBacktraceEnd);
    textmarkup::Writer writer;
    writer.elementOfMarkup("backtrace", framed);
    return writer.text();
}

} // namespace

std::string assertDocument(const FailureReport& report, const ReportContext& context) {
    textmarkup::Writer head;
    head.declaration();
    head.open("assert");
    writeWhatFailed(head, report);
    textmarkup::Writer tail;
    writeWhereItFailed(tail, report, context);
    tail.close("assert");
    const size_t used = head.text().size() + tail.text().size();
    return head.text() + backtraceElement(report.backtrace, Udp4Socket::kMaxLength - used) +
           tail.text();
}

std::string sendLogsDocument(const CheckSite& site, const std::string& server) {
    textmarkup::Writer writer;
    writer.declaration();
    writer.open("sendlogs");
    field(writer, "file", site.file);
    field(writer, "line", site.line);
    field(writer, "server", server);
    writer.close("sendlogs");
    return writer.text();
}

} // namespace core
