#include "internal/textmarkup_characters.h"

#include <algorithm>
#include <iterator>

namespace textmarkup {
namespace {

struct Range {
    uint32_t first;
    uint32_t last;
};

// The ranges of XML 1.0, fifth edition, from U+0080.
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

} // namespace

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
