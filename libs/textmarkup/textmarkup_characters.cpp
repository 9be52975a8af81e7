#include "internal/textmarkup_characters.h"

#include <algorithm>
#include <iterator>

namespace textmarkup {
namespace {

struct Range {
    uint32_t first;
    uint32_t last;
};

// The ranges of XML 1.0, fifth edition, from U+0080 on.
constexpr Range kNameStarts[] = {{0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},
                                 {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},
                                 {0x2070, 0x218F}, {0x2C00, 0x2FEF}, {0x3001, 0xD7FF},
                                 {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
constexpr Range kMoreOfNames[] = {{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <size_t size>
bool isIn(const Range (&ranges)[size], uint32_t code) {
    return std::any_of(std::begin(ranges), std::end(ranges), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

/// The length of the sequence that a byte begins; 0 for one that begins none.
size_t sequenceLength(uint8_t first) {
    if (first < 0x80)
        return 1;
    if (first < 0xC0)
        return 0;
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF8 ? 4 : 0;
}

} // namespace

Character characterAt(std::string_view text) {
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
    if (code < kLeast[length] || code > kLastCharacter || isSurrogate(code))
        return kMalformed;
    return {code, length, true};
}

void appendCharacter(std::string& out, uint32_t code) {
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

bool isXmlCharacter(uint32_t code) {
    if (code < 0x20)
        return code == '\t' || code == '\n' || code == '\r';
    return !isSurrogate(code) && code != 0xFFFE && code != 0xFFFF && code <= kLastCharacter;
}

bool isXmlNameStart(uint32_t code) {
    if (code < 0x80)
        return isLetter(static_cast<char>(code)) || code == '_' || code == ':';
    return isIn(kNameStarts, code);
}

bool isXmlNameCharacter(uint32_t code) {
    if (code < 0x80 && (isDigit(static_cast<char>(code)) || code == '-' || code == '.'))
        return true;
    return isXmlNameStart(code) || isIn(kMoreOfNames, code);
}

bool equalIgnoringCase(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return toLower(a) == toLower(b); });
}

} // namespace textmarkup
