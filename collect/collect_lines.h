#pragma once

#include "collect_table.h"

#include <string>
#include <string_view>

/// The lines of failures.jsonl: one JSON object each, with the fields of a report by
/// their names, when it arrived (UTC) and from where:
///
///     {"arrived":"2022-03-29T10:30:18.250Z","sender":"192.0.2.7:50123","type":"ASSERT",...}
///
/// A line that sums up an entry of the table has the latest report, and more fields for
/// what came before it.
namespace collect {

/// The line with its end. What is no UTF-8 arrives as U+FFFD.
std::string lineOf(const Arrival& arrival);
std::string lineOf(const Entry& entry);

/// Gives the table what a line says; false for one that is none of these.
bool replayLine(std::string_view line, Table& table);

/// "2022-03-29T10:30:18.250Z", and back; `time` is in nanoseconds, see core::now().
std::string isoTime(int64_t time);
bool readIsoTime(std::string_view text, int64_t& time);

} // namespace collect
