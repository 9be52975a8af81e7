#include "textmarkup_jsonreader.h"

#include "internal/textmarkup_characters.h"

#include <charconv>
#include <utility>

namespace textmarkup {
namespace {

constexpr PlainBytes kPlain = [] {
    PlainBytes plain{};
    for (size_t code = ' '; code < plain.size(); ++code)
        plain[code] = code != '"' && code != '\\';
    return plain;
}();

bool isAnything(uint32_t /*code*/) { return true; }

template <typename Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

} // namespace

JsonReader::JsonReader(std::string_view document, const Limits& limits)
    : StrictReader(document, limits) {}

Event JsonReader::next() {
    if (isOver())
        return d_event;
    if (d_event == Event::EndObject || d_event == Event::EndArray)
        d_open.pop_back();
    d_name.clear();
    d_content.clear();
    if (!d_begun) {
        begin();
        return d_event;
    }
    skipBlanks();
    d_start = d_cursor.at();
    if (!d_open.empty())
        readMember();
    else if (d_cursor.atEnd())
        d_event = Event::End;
    else
        failHere("something follows the value");
    return d_event;
}

bool JsonReader::skip() {
    const size_t depth = d_open.size();
    for (;;) {
        const Event event = next();
        if (event == Event::Error || event == Event::End)
            return false;
        if ((event == Event::EndObject || event == Event::EndArray) && d_open.size() == depth)
            return true;
    }
}

std::optional<double> JsonReader::toDouble() const { return numberOf<double>(text()); }

std::optional<int64_t> JsonReader::toInt64() const { return numberOf<int64_t>(text()); }

bool JsonReader::begin() {
    d_begun = true;
    if (!skipByteOrderMark())
        return false;
    skipBlanks();
    d_start = d_cursor.at();
    return readValue();
}

/// What comes next in the innermost object or array.
bool JsonReader::readMember() {
    const bool isObject = d_open.back() == '}';
    if (d_cursor.skip(std::string_view(d_open).substr(d_open.size() - 1))) {
        d_isFirst = false;
        d_event = isObject ? Event::EndObject : Event::EndArray;
        return true;
    }
    if (!std::exchange(d_isFirst, false)) {
        if (!d_cursor.skip(","))
            return failHere(isObject ? "',' or '}' is missing" : "',' or ']' is missing");
        skipBlanks();
        d_start = d_cursor.at();
    }
    return (!isObject || readName()) && readValue();
}

bool JsonReader::readName() {
    if (!d_cursor.stands("\""))
        return failHere("a name in double quotes is missing");
    if (!readString(d_name))
        return false;
    skipBlanks();
    if (!d_cursor.skip(":"))
        return failHere("':' is missing behind the name");
    skipBlanks();
    return true;
}

bool JsonReader::readValue() {
    if (d_cursor.atEnd())
        return failHere("a value is missing");
    switch (d_cursor.peek()) {
    case '{':
        return open(Event::StartObject, '}');
    case '[':
        return open(Event::StartArray, ']');
    case '"':
        d_event = Event::String;
        return readString(d_content);
    default:
        return isLetter(d_cursor.peek()) ? readWord() : readNumber();
    }
}

bool JsonReader::open(Event event, char closing) {
    if (!fitsOneMore(d_open.size()))
        return false;
    d_cursor.take(1);
    d_open += closing;
    d_isFirst = true;
    d_event = event;
    return true;
}

bool JsonReader::readString(Gathered& out) {
    d_cursor.take(1);
    while (readPlain(kPlain, &isAnything, out) && fits(out)) {
        if (d_cursor.skip("\""))
            return true;
        if (d_cursor.atEnd())
            return fail(d_start, "a string does not end");
        if (!d_cursor.skip("\\"))
            return failHere("a string contains a control character");
        if (!readEscape(out))
            return false;
    }
    return false;
}

/// Reads on after a backslash.
bool JsonReader::readEscape(Gathered& out) {
    constexpr std::string_view kEscapes = "bfnrt\"\\/";
    constexpr std::string_view kCharacters = "\b\f\n\r\t\"\\/";
    const size_t start = d_cursor.at() - 1;
    const std::string_view escape = d_cursor.take(1);
    if (const size_t found = escape.empty() ? std::string_view::npos : kEscapes.find(escape);
        found != std::string_view::npos) {
        out.addDecoded(kCharacters.substr(found, 1));
        return true;
    }
    const std::optional<uint32_t> unit = escape == "u" ? readCodeUnit() : std::nullopt;
    if (!unit)
        return fail(start, "a backslash begins no escape");
    const size_t next = d_cursor.at();
    if (*unit >= 0xD800 && *unit < 0xDC00 && d_cursor.skip("\\u")) {
        const std::optional<uint32_t> low = readCodeUnit();
        if (low && *low >= 0xDC00 && *low < 0xE000) {
            out.addCharacter(0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00));
            return true;
        }
        d_cursor.moveTo(next); // it stands for itself
    }
    out.addCharacter(*unit);
    return true;
}

/// Four hexadecimal digits.
std::optional<uint32_t> JsonReader::readCodeUnit() {
    const std::string_view digits = d_cursor.take(4);
    uint32_t unit = 0;
    for (const char ch : digits) {
        const int digit = hexValue(ch);
        if (digit < 0)
            return std::nullopt;
        unit = unit << 4 | static_cast<uint32_t>(digit);
    }
    return digits.size() == 4 ? std::optional(unit) : std::nullopt;
}

bool JsonReader::readNumber() {
    const size_t start = d_cursor.at();
    d_cursor.skip("-");
    if (!d_cursor.skip("0") && !skipDigits())
        return failHere("no value begins so");
    if (d_cursor.skip(".") && !skipDigits())
        return failHere("a digit is missing behind the point");
    if (d_cursor.skip("e") || d_cursor.skip("E")) {
        if (!d_cursor.skip("+"))
            d_cursor.skip("-");
        if (!skipDigits())
            return failHere("a digit is missing in the exponent");
    }
    d_content.add(d_cursor.text().substr(start, d_cursor.at() - start));
    d_event = Event::Number;
    return fits(d_content);
}

bool JsonReader::skipDigits() { return !d_cursor.takeWhile(&isDigit).empty(); }

bool JsonReader::readWord() {
    const size_t start = d_cursor.at();
    const std::string_view word = d_cursor.takeWhile(&isLetter);
    d_content.add(word);
    if (word != "null" && word != "true" && word != "false")
        return fail(start, "the word " + quoted(word) + " is not a value");
    d_event = word == "null" ? Event::Null : Event::Boolean;
    return true;
}

} // namespace textmarkup
