#include "textmarkup_writer.h"

#include <cstdint>

namespace textmarkup {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD"; // U+FFFD
constexpr std::string_view kCut = "...";

/// One character of a text, or one byte of it that belongs to none.
struct Character {
    uint32_t code;
    size_t length;
    bool wellFormed;
};

/// The length of the sequence that a byte begins; 0 for one that begins none.
size_t sequenceLength(uint8_t first) {
    if (first < 0x80)
        return 1;
    if (first < 0xC0)
        return 0;
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 0;
}

Character firstOf(std::string_view text) {
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000}; // less would be overlong
    const auto first = static_cast<uint8_t>(text[0]);
    const size_t length = sequenceLength(first);
    constexpr Character kMalformed{0, 1, false};
    if (length == 0 || length > text.size())
        return kMalformed;
    uint32_t code = length == 1 ? first : first & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto next = static_cast<uint8_t>(text[i]);
        if ((next & 0xC0) != 0x80)
            return kMalformed;
        code = code << 6 | (next & 0x3F);
    }
    if (code < kLeast[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return kMalformed;
    return {code, length, true};
}

bool allowed(uint32_t code) {
    if (code < 0x20)
        return code == '\t' || code == '\n' || code == '\r';
    return code != 0xFFFE && code != 0xFFFF;
}

/// What stands for the character that `source` holds.
std::string_view markupOf(const Character& character, std::string_view source) {
    if (!character.wellFormed || !allowed(character.code))
        return kReplacement;
    switch (character.code) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\'':
        return "&apos;";
    case '"':
        return "&quot;";
    default:
        return source;
    }
}

} // namespace

std::string escaped(std::string_view text, size_t limit) {
    std::string out;
    size_t cutAt = 0; // the last place that leaves room for the mark
    while (!text.empty()) {
        const Character character = firstOf(text);
        out += markupOf(character, text.substr(0, character.length));
        text.remove_prefix(character.length);
        if (out.size() > limit) {
            out.resize(cutAt);
            return limit < kCut.size() ? out : out.append(kCut);
        }
        if (limit - out.size() >= kCut.size())
            cutAt = out.size();
    }
    return out;
}

void Writer::declaration() { d_text += "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"; }

void Writer::open(std::string_view name) { d_text.append("<").append(name).append(">\n"); }

void Writer::close(std::string_view name) { d_text.append("</").append(name).append(">\n"); }

void Writer::element(std::string_view name, std::string_view text, size_t limit) {
    elementOfMarkup(name, escaped(text, limit));
}

void Writer::elementOfMarkup(std::string_view name, std::string_view markup) {
    d_text.append("<").append(name).append(">").append(markup);
    close(name);
}

} // namespace textmarkup
