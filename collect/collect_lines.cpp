#include "collect_lines.h"

#include "core_timespec.h"
#include "core_tokenizer.h"
#include "core_varargs.h"
#include "textmarkup_jsonreader.h"
#include "textmarkup_jsonwriter.h"

#include <charconv>
#include <cstdio>
#include <limits>
#include <map>
#include <optional>

namespace collect {
namespace {

using textmarkup::Event;
using textmarkup::JsonWriter;

constexpr int64_t kMilliseconds = 1'000'000; // in nanoseconds
constexpr int64_t kSeconds = 1000 * kMilliseconds;
// The last whole second that fits into nanoseconds, in 2262.
constexpr int64_t kMaxTime = std::numeric_limits<int64_t>::max() / kSeconds - 1;
constexpr int64_t kMaxSum = int64_t{1} << 53U; // what every reader of JSON keeps exactly

// The fields of a summary line alone.
constexpr const char* kFirst = "first";
constexpr const char* kAllArrived = "arrived_failures";
constexpr const char* kAllTotal = "total_failures";
constexpr const char* kRuns = "runs";

void writeReport(JsonWriter& writer, const Report& report) {
    for (const TextField& field : kTextFields)
        writer.member(field.name, report.*field.text);
    for (const NumberField& field : kNumberFields)
        writer.member(field.name, report.*field.number);
}

/// The members of one flat object.
struct Members {
    std::map<std::string, std::string, std::less<>> texts;
    std::map<std::string, int64_t, std::less<>> numbers;

    std::string text(std::string_view name) const {
        const auto found = texts.find(name);
        return found != texts.end() ? found->second : std::string();
    }
    int64_t number(std::string_view name) const {
        const auto found = numbers.find(name);
        return found != numbers.end() ? found->second : 0;
    }
};

/// False unless the line is one flat object.
bool readMembers(std::string_view line, Members& members) {
    textmarkup::JsonReader reader(line);
    if (reader.next() != Event::StartObject)
        return false;
    for (Event event = reader.next(); event != Event::EndObject; event = reader.next()) {
        const std::string name(reader.name());
        if (event == Event::String)
            members.texts[name] = reader.text();
        else if (const auto number = reader.toInt64(); event == Event::Number && number)
            members.numbers[name] = *number;
        else
            return false;
    }
    return reader.next() == Event::End;
}

Report reportOf(const Members& members) {
    Report report;
    for (const TextField& field : kTextFields)
        report.*field.text = members.text(field.name);
    for (const NumberField& field : kNumberFields)
        report.*field.number = members.number(field.name);
    return report;
}

/// "192.0.2.7:50123=12 192.0.2.8:50124=3"
std::string runsText(const std::vector<Run>& runs) {
    std::string text;
    for (const Run& run : runs)
        text += core::format("%s%s=%d", text.empty() ? "" : " ", run.sender, run.total);
    return text;
}

bool isSum(int64_t number) { return number >= 0 && number <= kMaxSum; }

std::vector<Run> readRuns(std::string_view text) {
    std::vector<Run> runs;
    core::Tokenizer words(text, {.delimiters = core::CharSet(" ")});
    for (std::string_view word; runs.size() < Table::kMaxRuns && words.next(word);) {
        const size_t mark = word.rfind('=');
        Run run;
        if (mark == std::string_view::npos)
            continue;
        run.sender = word.substr(0, mark);
        const char* const end = word.data() + word.size();
        if (std::from_chars(word.data() + mark + 1, end, run.total).ptr == end && isSum(run.total))
            runs.push_back(run);
    }
    return runs;
}

bool restoreEntry(const Members& members, Report report, int64_t time, Table& table) {
    Entry entry;
    entry.report = std::move(report);
    entry.last = time;
    entry.arrived = members.number(kAllArrived);
    entry.total = members.number(kAllTotal);
    entry.runs = readRuns(members.text(kRuns));
    if (!readIsoTime(members.text(kFirst), entry.first) || !isSum(entry.arrived) ||
        !isSum(entry.total))
        return false;
    table.restore(std::move(entry));
    return true;
}

} // namespace

std::string lineOf(const Arrival& arrival) {
    JsonWriter writer;
    writer.openObject();
    writer.member("arrived", isoTime(arrival.time));
    writer.member("sender", arrival.sender);
    writeReport(writer, arrival.report);
    return writer.finish() + '\n';
}

std::string lineOf(const Entry& entry) {
    JsonWriter writer;
    writer.openObject();
    writer.member("arrived", isoTime(entry.last));
    writer.member(kFirst, isoTime(entry.first));
    writer.member(kAllArrived, entry.arrived);
    writer.member(kAllTotal, entry.total);
    writer.member(kRuns, runsText(entry.runs));
    writeReport(writer, entry.report);
    return writer.finish() + '\n';
}

bool replayLine(std::string_view line, Table& table) {
    Members members;
    std::string error;
    int64_t time = 0;
    if (!readMembers(line, members) || !readIsoTime(members.text("arrived"), time))
        return false;
    Report report = reportOf(members);
    if (!isComplete(report, error))
        return false;
    if (members.numbers.contains(kAllArrived))
        return restoreEntry(members, std::move(report), time, table);
    table.add({.time = time, .sender = members.text("sender"), .report = std::move(report)});
    return true;
}

std::string isoTime(int64_t time) {
    const core::CivilTime utc = core::utcCivilTime(time);
    const int64_t inSecond = time - core::secondsOfCivilTime(utc) * kSeconds;
    return core::format("%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.year, utc.month, utc.day,
                        utc.hour, utc.minute, utc.second, inSecond / kMilliseconds);
}

bool readIsoTime(std::string_view text, int64_t& time) {
    constexpr std::string_view kPattern = "0000-00-00T00:00:00.000Z";
    if (text.size() != kPattern.size())
        return false;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (kPattern[i] == '0' ? !isDigit : text[i] != kPattern[i])
            return false;
    }
    const auto number = [text](size_t at, size_t length) {
        int32_t value = 0;
        std::from_chars(text.data() + at, text.data() + at + length, value);
        return value;
    };
    const core::CivilTime utc{number(0, 4),  number(5, 2),  number(8, 2),
                              number(11, 2), number(14, 2), number(17, 2)};
    const int64_t seconds = core::secondsOfCivilTime(utc);
    if (seconds < -kMaxTime || seconds > kMaxTime)
        return false;
    time = seconds * kSeconds + number(20, 3) * kMilliseconds;
    return true;
}

} // namespace collect
