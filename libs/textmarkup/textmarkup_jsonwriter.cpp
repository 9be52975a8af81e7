#include "textmarkup_jsonwriter.h"

#include "internal/textmarkup_characters.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace textmarkup {
namespace {

/// Whether a byte stands for itself in a string.
constexpr auto kPlain = [] {
    std::array<bool, 256> plain{};
    for (size_t code = ' '; code < 0x80; ++code)
        plain[code] = code != '"' && code != '\\' && code != '<';
    return plain;
}();

/// Appends what stands for a character that does not stand for itself.
void appendEscape(std::string& out, char ch) {
    constexpr std::string_view kLetters = "\b\f\n\r\t\"\\";
    constexpr std::string_view kEscapes = "bfnrt\"\\";
    constexpr std::string_view kDigits = "0123456789abcdef";
    out += '\\';
    if (const size_t found = kLetters.find(ch); found != std::string_view::npos) {
        out += kEscapes[found];
        return;
    }
    const auto code = static_cast<uint8_t>(ch);
    out.append("u00").append(1, kDigits[code >> 4]).append(1, kDigits[code & 0xF]);
}

void appendString(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        size_t plain = 0;
        while (plain < text.size() && kPlain[static_cast<uint8_t>(text[plain])])
            ++plain;
        out.append(text, 0, plain);
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const Character character = characterAt(text);
        if (!character.wellFormed)
            out += kReplacement;
        else if (character.length == 1)
            appendEscape(out, text[0]);
        else
            out.append(text, 0, character.length);
        text.remove_prefix(character.length);
    }
    out += '"';
}

struct AppendScalar {
    std::string& out;

    template <typename Number>
    void number(Number value) const {
        char digits[32]; // the longest double takes 24
        out.append(digits, std::to_chars(digits, digits + sizeof(digits), value).ptr);
    }
    void operator()(std::nullptr_t) const { out += "null"; }
    void operator()(bool value) const { out += value ? "true" : "false"; }
    void operator()(int64_t value) const { number(value); }
    void operator()(uint64_t value) const { number(value); }
    void operator()(double value) const {
        if (std::isfinite(value))
            number(value);
        else
            out += "null";
    }
    void operator()(std::string_view value) const { appendString(out, value); }
};

} // namespace

/// Puts a comma and a name where they belong. False when nothing more may follow.
bool JsonWriter::begin(std::string_view name) {
    if (d_closing.empty())
        return d_text.empty();
    if (!std::exchange(d_isFirst, false))
        d_text += ',';
    if (d_closing.back() == '}') {
        appendString(d_text, name);
        d_text += ':';
    }
    return true;
}

void JsonWriter::open(std::string_view name, char opening, char closing) {
    if (!begin(name))
        return;
    d_text += opening;
    d_closing += closing;
    d_isFirst = true;
}

void JsonWriter::openObject() { openObject({}); }
void JsonWriter::openObject(std::string_view name) { open(name, '{', '}'); }
void JsonWriter::openArray() { openArray({}); }
void JsonWriter::openArray(std::string_view name) { open(name, '[', ']'); }

void JsonWriter::close() {
    if (d_closing.empty())
        return;
    d_text += d_closing.back();
    d_closing.pop_back();
    d_isFirst = false;
}

void JsonWriter::value(const JsonScalar& value) { member({}, value); }

void JsonWriter::member(std::string_view name, const JsonScalar& value) {
    if (begin(name))
        std::visit(AppendScalar{d_text}, value.variant());
}

std::string JsonWriter::finish() {
    if (d_text.empty())
        value(nullptr);
    while (!d_closing.empty())
        close();
    return std::exchange(*this, {}).d_text;
}

} // namespace textmarkup
