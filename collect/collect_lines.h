#pragma once

#include "collect_table.h"

#include <string>
#include <string_view>

/// The lines of failures.jsonl: one JSON object each, with a report's fields, its time of
/// arrival (UTC) and its sender:
///
///     {"arrived":"2022-03-29T10:30:18.250Z","sender":"192.0.2.7:50123","type":"ASSERT",...}
///
/// A summary line stands for an entry of the table: it has the latest report, and more
/// fields for those before it.
namespace collect {

/// The line, its newline included. Invalid UTF-8 becomes U+FFFD.
std::string lineOf(const Arrival& arrival);
std::string lineOf(const Entry& entry);

/// Adds what a line says to the table. False if the line is of neither kind.
bool replayLine(std::string_view line, Table& table);

/// "2022-03-29T10:30:18.250Z", and back; `time` is in nanoseconds, see core::now().
std::string isoTime(int64_t time);
bool readIsoTime(std::string_view text, int64_t& time);

} // namespace collect
