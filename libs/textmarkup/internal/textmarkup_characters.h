#pragma once

#include "utf_character.h"

#include <cstdint>
#include <string_view>

/// What the readers and writers know about single characters.
namespace textmarkup {

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

using utf::appendCharacter;
using utf::Character;
using utf::characterAt;
using utf::isSurrogate;
using utf::kLastCharacter;
using utf::kReplacement;

/// Whether XML allows it in documents; in names.
bool isXmlCharacter(uint32_t code);
bool isXmlNameStart(uint32_t code);
bool isXmlNameCharacter(uint32_t code);

constexpr bool isDigit(char ch) { return ch >= '0' && ch <= '9'; }
constexpr bool isUpper(char ch) { return ch >= 'A' && ch <= 'Z'; }
constexpr bool isLetter(char ch) { return isUpper(ch) || (ch >= 'a' && ch <= 'z'); }
constexpr char toLower(char ch) { return isUpper(ch) ? static_cast<char>(ch + 'a' - 'A') : ch; }

/// The value of a hexadecimal digit; -1 for any other character.
constexpr int hexValue(char ch) {
    if (isDigit(ch))
        return ch - '0';
    const char lower = toLower(ch);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Whether they are equal, ignoring the case of ASCII letters.
bool equalIgnoringCase(std::string_view one, std::string_view other);

} // namespace textmarkup
