#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Single characters of UTF-8: the only decoder of all libraries.
///
/// Overlong forms, surrogates and anything above U+10FFFF are not well-formed.
namespace utf {

inline constexpr uint32_t kLastCharacter = 0x10FFFF;
inline constexpr std::string_view kReplacement = "\xEF\xBF\xBD"; // U+FFFD

constexpr bool isSurrogate(uint32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

/// One character of a text, or one byte that is not part of any.
struct Character {
    uint32_t code;
    size_t length; ///< bytes
    bool wellFormed;
};

/// The length of the sequence that a byte begins; 0 if it begins none.
constexpr size_t sequenceLength(uint8_t first) {
    if (first < 0x80)
        return 1;
    if (first < 0xC0)
        return 0;
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 0;
}

/// The first of a non-empty text.
constexpr Character characterAt(std::string_view text) {
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000}; // less would be overlong
    constexpr Character kMalformed{0, 1, false};
    const auto first = static_cast<uint8_t>(text[0]);
    const size_t length = sequenceLength(first);
    if (length == 0 || length > text.size())
        return kMalformed;
    uint32_t code = length == 1 ? first : first & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto next = static_cast<uint8_t>(text[i]);
        if ((next & 0xC0) != 0x80)
            return kMalformed;
        code = code << 6 | (next & 0x3F);
    }
    if (code < kLeast[length] || code > kLastCharacter || isSurrogate(code))
        return kMalformed;
    return {code, length, true};
}

constexpr bool isWellFormed(std::string_view text) {
    while (!text.empty()) {
        const Character character = characterAt(text);
        if (!character.wellFormed)
            return false;
        text.remove_prefix(character.length);
    }
    return true;
}

/// The length in bytes of the whole characters at the front of a text, at most `limit`.
constexpr size_t lengthWithin(size_t limit, std::string_view text) {
    if (limit >= text.size())
        return text.size();
    while (limit > 0 && (static_cast<uint8_t>(text[limit]) & 0xC0) == 0x80)
        --limit;
    return limit;
}

/// Appends the character; U+FFFD for surrogates and numbers above the last character.
inline void appendCharacter(std::string& out, uint32_t code) {
    const auto byte = [&out](uint32_t value) { out += static_cast<char>(value); };
    if (code > kLastCharacter || isSurrogate(code)) {
        out += kReplacement;
    } else if (code < 0x80) {
        byte(code);
    } else if (code < 0x800) {
        byte(0xC0 | code >> 6);
        byte(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        byte(0xE0 | code >> 12);
        byte(0x80 | (code >> 6 & 0x3F));
        byte(0x80 | (code & 0x3F));
    } else {
        byte(0xF0 | code >> 18);
        byte(0x80 | (code >> 12 & 0x3F));
        byte(0x80 | (code >> 6 & 0x3F));
        byte(0x80 | (code & 0x3F));
    }
}

} // namespace utf
