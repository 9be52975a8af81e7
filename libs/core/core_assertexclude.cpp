#include "internal/core_assertexclude.h"

#include "core_time.h"
#include "core_tokenizer.h"
#include "core_wrapper.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <tuple>

namespace core {
namespace {

constexpr CharSet kBlanks{" \n\r\t"};
constexpr CharSet kDateSeparator{"-"};
constexpr size_t kLineLimit = 1000;
constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kDaysValid = 3;

/// On the clock here: dates and the time of day are compared as people read them.
DateTime here(const CivilTime& civil) {
    DateTime time(civil);
    time.setDto(0);
    return time;
}

/// Midnight of a date written as YYYY-MM-DD.
std::optional<DateTime> dateOf(std::string_view field) {
    if (field.size() != 10 || field[4] != '-' || field[7] != '-')
        return std::nullopt;
    std::array<int32_t, 3> numbers{};
    size_t count = 0;
    Tokenizer parts(field, {.delimiters = kDateSeparator, .skipEmpty = false});
    for (std::string_view part; parts.next(part); ++count) {
        if (count == numbers.size())
            return std::nullopt;
        numbers[count] = decimalNumber(part).value_or(0);
    }
    const DateTime date = here({numbers[0], numbers[1], numbers[2], 0, 0, 0});
    const CivilTime kept = date.civil(); // which may be less than the numbers
    if (kept.month != numbers[1] || kept.day != numbers[2])
        return std::nullopt;
    return date;
}

bool holds(const DateTime& date, const DateTime& now) {
    return std::abs(difference(date, now).seconds / kSecondsPerDay) < kDaysValid;
}

struct Line {
    std::string_view file;
    int32_t line;
    DateTime date;
};

std::optional<Line> parse(std::string_view text) {
    std::array<std::string_view, 3> fields;
    Tokenizer words(text, {.delimiters = kBlanks});
    for (std::string_view& field : fields) {
        if (!words.next(field))
            return std::nullopt;
    }
    const std::optional<int32_t> line = decimalNumber(fields[1]);
    const std::optional<DateTime> date = dateOf(fields[2]);
    if (fields[0].front() == '#' || !line || *line < 1 || !date)
        return std::nullopt;
    return Line{fields[0], *line, *date};
}

} // namespace

void AssertExclude::load() {
    FILE* file = Wrapper::fopen("settings/assert.exclude", "r");
    if (file == nullptr)
        file = Wrapper::fopen("assert.exclude", "r");
    if (file == nullptr)
        return;
    read(file, localCivilTime(now()));
    std::fclose(file);
}

void AssertExclude::read(FILE* file, const CivilTime& now) {
    std::array<char, kLineLimit + 1> text{};
    while (std::fgets(text.data(), static_cast<int>(text.size()), file) != nullptr) {
        const std::optional<Line> line = parse(text.data());
        if (line && holds(line->date, here(now)))
            d_sites.push_back({std::string(line->file), line->line});
    }
    std::sort(d_sites.begin(), d_sites.end(), [](const Site& a, const Site& b) {
        return std::tie(a.file, a.line) < std::tie(b.file, b.line);
    });
}

bool AssertExclude::contains(std::string_view file, int32_t line) const {
    const auto site = std::lower_bound(
        d_sites.begin(), d_sites.end(), std::tie(file, line), [](const Site& s, const auto& key) {
            return std::tuple(std::string_view(s.file), s.line) < key;
        });
    return site != d_sites.end() && site->file == file && site->line == line;
}

} // namespace core
