#include "collect_export.h"

#include "collect_lines.h"
#include "textmarkup_jsonwriter.h"

#include <string_view>
#include <vector>

namespace collect {
namespace {

/// A cell that begins with one of these would be a formula.
constexpr std::string_view kFormulas = "=+-@\t\r";

void addCell(std::string& row, std::string_view text) {
    if (!row.empty())
        row += ',';
    std::string cell;
    if (!text.empty() && kFormulas.find(text.front()) != std::string_view::npos)
        cell += '\'';
    for (const char ch : text)
        cell.append(ch == '"' ? 2 : 1, ch);
    const bool isPlain = cell.find_first_of("\",\r\n") == std::string::npos;
    row += isPlain && !cell.empty() ? cell : '"' + cell + '"';
}

std::string csvRow(const std::vector<std::string>& cells) {
    std::string row;
    for (const std::string& cell : cells)
        addCell(row, cell);
    return row + "\r\n";
}

std::string toCsv(const Table& table) {
    std::string text =
        csvRow({"file", "line", "type", "hostname", "product", "swver", "os", "first", "last",
                "failures", "total", "missing", "level", "condition", "message", "backtrace"});
    for (const Entry& entry : table.entries()) {
        const Report& report = entry.report;
        text +=
            csvRow({report.file, std::to_string(report.line), report.type, report.hostname,
                    report.product, report.swver, report.os, isoTime(entry.first),
                    isoTime(entry.last), std::to_string(entry.arrived), std::to_string(entry.total),
                    std::to_string(entry.missing()), std::to_string(report.level), report.condition,
                    report.message, report.backtrace});
    }
    return text;
}

std::string toJson(const Table& table) {
    textmarkup::JsonWriter writer;
    writer.openArray();
    for (const Entry& entry : table.entries()) {
        writer.openObject();
        writer.member("first", isoTime(entry.first));
        writer.member("last", isoTime(entry.last));
        writer.member("failures", entry.arrived);
        writer.member("total", entry.total);
        writer.member("missing", entry.missing());
        writer.member("line", entry.report.line);
        writer.member("level", entry.report.level);
        for (const TextField& field : kTextFields)
            writer.member(field.name, entry.report.*field.text);
        writer.close();
    }
    return writer.finish() + '\n';
}

} // namespace

std::string exportTable(const Table& table, Options::Format format) {
    return format == Options::Format::Json ? toJson(table) : toCsv(table);
}

} // namespace collect
