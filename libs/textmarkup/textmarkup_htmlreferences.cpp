#include "internal/textmarkup_htmlreferences.h"

#include "internal/textmarkup_characters.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace textmarkup {
namespace {

struct NamedReference {
    std::string_view name;
    std::string_view text;
};

#include "internal/textmarkup_htmlreferences.inc"

bool isLetterOrDigit(char ch) { return isLetter(ch) || isDigit(ch); }

/// The meaning of the numbers 0x80 to 0x9F: that of windows-1252.
uint32_t meantBy(uint32_t code) {
    constexpr uint32_t kFrom0x80[] = {
        0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
        0x2039, 0x152,  0x8D,   0x17D,  0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178};
    if (code >= 0x80 && code < 0x80 + std::size(kFrom0x80))
        return kFrom0x80[code - 0x80];
    return code == 0 ? kLastCharacter + 1 : code; // which becomes U+FFFD
}

size_t decodeNumber(std::string_view text, std::string& out) {
    const bool isHex = text.size() > 2 && toLower(text[2]) == 'x';
    const size_t start = isHex ? 3 : 2;
    size_t end = start;
    uint32_t code = 0;
    for (; end < text.size(); ++end) {
        const int digit = hexValue(text[end]);
        if (digit < 0 || (digit > 9 && !isHex))
            break;
        code =
            std::min(code * (isHex ? 16 : 10) + static_cast<uint32_t>(digit), kLastCharacter + 1);
    }
    if (end == start)
        return 0;
    appendCharacter(out, meantBy(code));
    return end + (text.substr(end).starts_with(';') ? 1 : 0);
}

/// Empty for an unknown name.
std::string_view textOf(std::string_view name) {
    const auto* const found =
        std::ranges::lower_bound(kReferences, name, {}, &NamedReference::name);
    return found != std::end(kReferences) && found->name == name ? found->text : std::string_view();
}

/// The length of the longest name at the front that is valid without a semicolon.
size_t lengthWithoutSemicolon(std::string_view letters) {
    constexpr size_t kLongest = 6;
    for (size_t length = std::min(letters.size(), kLongest); length > 0; --length) {
        if (std::ranges::binary_search(kWithoutSemicolon, letters.substr(0, length)))
            return length;
    }
    return 0;
}

} // namespace

size_t decodeReference(std::string_view text, ReferenceIn place, std::string& out) {
    constexpr size_t kLongestName = 31;
    if (text.starts_with("&#"))
        return decodeNumber(text, out);
    const std::string_view front = text.substr(1, kLongestName + 1);
    const auto* const end = std::ranges::find_if_not(front, isLetterOrDigit);
    const std::string_view name = front.substr(0, static_cast<size_t>(end - front.begin()));
    if (end != front.end() && *end == ';') {
        const std::string_view meaning = textOf(name);
        out += meaning;
        if (!meaning.empty())
            return name.size() + 2;
    }
    const size_t length = lengthWithoutSemicolon(name);
    const std::string_view behind = front.substr(length);
    if (length == 0 || (place == ReferenceIn::Value && !behind.empty() &&
                        (behind[0] == '=' || isLetterOrDigit(behind[0]))))
        return 0;
    out += textOf(name.substr(0, length));
    return length + 1;
}

} // namespace textmarkup
