#include "collect_report.h"

#include "core_varargs.h"
#include "textmarkup_xmlreader.h"

#include <charconv>
#include <limits>
#include <optional>

namespace collect {
namespace {

using textmarkup::Event;

/// More than core::assertDocument makes, and as much as a datagram holds.
constexpr textmarkup::Limits kLimits{.depth = 8, .text = 65536, .attributes = 8};

bool toNumber(std::string_view text, int64_t& number) {
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && last == end;
}

/// False when the text of a known element is invalid.
bool takeField(Report& report, std::string_view name, std::string& text) {
    for (const TextField& field : kTextFields) {
        if (field.name == name)
            report.*field.text = text;
    }
    for (const NumberField& field : kNumberFields) {
        if (field.name == name && !toNumber(text, report.*field.number))
            return false;
    }
    return true;
}

Document malformed(std::string& error, std::string why) {
    error = std::move(why);
    return Document::Malformed;
}

/// Reads on after the start tag of the root.
Document readFields(textmarkup::XmlReader& reader, Report& report, std::string& error) {
    std::string text;
    for (Event event = reader.next(); event != Event::End; event = reader.next()) {
        if (event == Event::StartElement) {
            const std::string name(reader.name());
            if (reader.readText(text) && !takeField(report, name, text))
                return malformed(error, core::format("'%s' is not a number for '%s'", text, name));
        }
        if (event == Event::Error)
            return malformed(error, reader.error().text());
    }
    return isComplete(report, error) ? Document::Failure : Document::Malformed;
}

/// Reads the rest only to see whether the document is well-formed.
Document skipRest(textmarkup::XmlReader& reader, std::string& error) {
    for (Event event = reader.next(); event != Event::End; event = reader.next()) {
        if (event == Event::Error)
            return malformed(error, reader.error().text());
    }
    return Document::SendLogs;
}

bool isIn(int64_t number, int64_t least, int64_t most) { return least <= number && number <= most; }

} // namespace

bool isComplete(const Report& report, std::string& error) {
    constexpr int64_t kMaxCount = std::numeric_limits<uint32_t>::max();
    if (report.type != "ASSERT" && report.type != "ALERT")
        error = core::format("'%s' is not a type of failure", report.type);
    else if (report.file.empty())
        error = "it names no file";
    else if (!isIn(report.count, 1, kMaxCount) || !isIn(report.total, report.count, kMaxCount))
        error = core::format("%d failures of %d", report.count, report.total);
    else
        return true;
    return false;
}

Document readDocument(std::string_view datagram, Report& report, std::string& error) {
    textmarkup::XmlReader reader(datagram, kLimits);
    Event event = reader.next();
    while (event != Event::StartElement && event != Event::Error && event != Event::End)
        event = reader.next();
    if (event != Event::StartElement)
        return malformed(error, reader.error().text());
    if (reader.name() == "sendlogs")
        return skipRest(reader, error);
    if (reader.name() != "assert")
        return malformed(error, core::format("the element '%s' is not known", reader.name()));
    return readFields(reader, report, error);
}

} // namespace collect
