#include "core_varargs.h"

#include "core_check.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

namespace core {
namespace {

constexpr CheckSite kMismatch{"core_varargs.cpp", 16};
constexpr CheckSite kNoPlaceholder{"core_varargs.cpp", 35};
constexpr CheckSite kShortTruncation{"core_varargs.cpp", 65};
constexpr CheckSite kCountMismatch{"core_varargs.cpp", 462};

// The lines that mismatch messages name, by the routine that refused.
constexpr int32_t kStringLine = 249;
constexpr int32_t kPointerLine = 311;
constexpr int32_t kIntegerLine = 336;
constexpr int32_t kCharacterLine = 349;
constexpr int32_t kNoArgumentLine = 480;
constexpr int32_t kFloatLine = 504;

constexpr size_t kStringScanCap = 10000;
constexpr size_t kNullEstimate = 5;
constexpr size_t kNumberEstimate = 8;
constexpr size_t kMaxFloatLength = 23;
// Beyond every digit that a double has, so that a larger precision changes nothing printed.
constexpr int32_t kMaxFloatPrecision = 1100;
// A bad format must not exhaust the memory.
constexpr size_t kMaxPadding = 1'000'000;

enum Flag : uint32_t { kLeft = 1, kZero = 2, kPlus = 4, kSpace = 8 };

struct Conversion {
    const char* format; // the whole format, for messages
    char letter = '\0';
    uint32_t flags = 0;
    int32_t width = 0;
    int32_t precision = -1;
};

// Reads decimal digits; a number too large for the type is its largest value.
int32_t readNumber(const char*& cursor) {
    constexpr int64_t kMax = std::numeric_limits<int32_t>::max();
    int64_t value = 0;
    for (; *cursor >= '0' && *cursor <= '9'; ++cursor)
        value = std::min(value * 10 + (*cursor - '0'), kMax);
    return static_cast<int32_t>(value);
}

uint32_t readFlags(const char*& cursor) {
    for (uint32_t flags = 0;; ++cursor) {
        switch (*cursor) {
        case '-':
            flags |= kLeft;
            break;
        case '0':
            flags |= kZero;
            break;
        case '+':
            flags |= kPlus;
            break;
        case ' ':
            flags |= kSpace;
            break;
        case '#':
            break;
        default:
            return flags;
        }
    }
}

// The argument's own type decides its width, so the modifiers only have to go.
void skipLengthModifier(const char*& cursor) {
    switch (*cursor) {
    case 'h':
    case 'l':
        cursor += cursor[1] == cursor[0] ? 2 : 1;
        break;
    case 'L':
    case 'j':
    case 't':
    case 'z':
        ++cursor;
        break;
    default:
        break;
    }
}

// `cursor` stands after the '%', and afterwards after the letter; it stays on the
// terminator of a format that ends within the specification.
Conversion readConversion(const char* format, const char*& cursor) {
    Conversion conversion{format};
    conversion.flags = readFlags(cursor);
    conversion.width = readNumber(cursor);
    if (*cursor == '.')
        conversion.precision = readNumber(++cursor);
    skipLengthModifier(cursor);
    conversion.letter = *cursor;
    if (*cursor != '\0')
        ++cursor;
    return conversion;
}

bool isIntegerLetter(char letter) {
    switch (letter) {
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
        return true;
    default:
        return false;
    }
}

bool isFloatLetter(char letter) {
    switch (letter) {
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'e':
    case 'E':
    case 'a':
    case 'A':
        return true;
    default:
        return false;
    }
}

// How much padding a text of `length` needs.
size_t missing(int32_t width, size_t length) {
    const auto wanted = static_cast<size_t>(std::max(width, 0));
    return wanted > length ? std::min(wanted - length, kMaxPadding) : 0;
}

void putPadded(std::string& out, std::string_view text, int32_t width, bool left) {
    const size_t padding = missing(width, text.size());
    if (padding != 0 && !left)
        out.append(padding, ' ');
    out.append(text);
    if (padding != 0 && left)
        out.append(padding, ' ');
}

// `width` is a maximum here; what does not fit is cut, marked by dots where they fit.
void putTruncated(std::string& out, std::string_view text, std::string_view kept,
                  const Conversion& conversion) {
    if (conversion.width < 1 || text.size() <= static_cast<size_t>(conversion.width)) {
        out.append(kept);
    } else if (conversion.width >= 4) {
        out.append(text.substr(0, static_cast<size_t>(conversion.width) - 3)).append("...");
    } else {
        GASSERT_AT(kShortTruncation, false);
        out.append(text.substr(0, static_cast<size_t>(conversion.width)));
    }
}

void putString(std::string& out, std::string_view text, const Conversion& conversion) {
    const std::string_view kept =
        conversion.precision > 0 ? text.substr(0, static_cast<size_t>(conversion.precision)) : text;
    if (conversion.letter == 'S')
        putTruncated(out, text, kept, conversion);
    else
        putPadded(out, kept, conversion.width, (conversion.flags & kLeft) != 0);
}

// Two decimal digits at a time, from "00" to "99".
constexpr auto kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Digits of the largest value in octal.
constexpr size_t kMaxDigits = 22;

// Writes the digits so that they end at `end`, and yields their start.
template <typename U>
char* writeDecimal(char* end, U value) {
    while (value >= 100) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[static_cast<size_t>(value % 100) * 2], 2);
        value /= 100;
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[static_cast<size_t>(value) * 2], 2);
    } else {
        *--end = static_cast<char>('0' + value);
    }
    return end;
}

char* writePowerOfTwo(char* end, uint64_t value, unsigned bitsPerDigit, const char* digits) {
    const uint64_t mask = (uint64_t{1} << bitsPerDigit) - 1;
    do {
        *--end = digits[value & mask];
        value >>= bitsPerDigit;
    } while (value != 0);
    return end;
}

char* writeDigits(char* end, uint64_t value, char letter) {
    switch (letter) {
    case 'o':
        return writePowerOfTwo(end, value, 3, "01234567");
    case 'x':
        return writePowerOfTwo(end, value, 4, "0123456789abcdef");
    case 'X':
        return writePowerOfTwo(end, value, 4, "0123456789ABCDEF");
    default:
        // 32-bit division is several times cheaper, on the 32-bit target above all.
        return value <= std::numeric_limits<uint32_t>::max()
                   ? writeDecimal(end, static_cast<uint32_t>(value))
                   : writeDecimal(end, value);
    }
}

// The sign that a decimal number shows, or NUL; space wins over plus.
char signOf(bool negative, uint32_t flags) {
    if (negative)
        return '-';
    if ((flags & kSpace) != 0)
        return ' ';
    return (flags & kPlus) != 0 ? '+' : '\0';
}

void putDigits(std::string& out, std::string_view digits, char sign, const Conversion& conversion) {
    const bool digitCount = conversion.precision > 0;
    const int32_t width = digitCount ? conversion.precision : conversion.width;
    const size_t padding = missing(width, digits.size() + (sign != '\0' ? 1 : 0));
    const bool zeroFill = digitCount || (conversion.flags & kZero) != 0;
    const bool left = !zeroFill && (conversion.flags & kLeft) != 0;

    if (padding != 0 && !zeroFill && !left)
        out.append(padding, ' ');
    if (sign != '\0')
        out.push_back(sign);
    if (padding != 0 && zeroFill)
        out.append(padding, '0');
    out.append(digits);
    if (padding != 0 && left)
        out.append(padding, ' ');
}

// `bits` holds the value's low `size` bytes; the letter decides whether they are signed.
void putInteger(std::string& out, uint64_t bits, unsigned size, const Conversion& conversion) {
    const unsigned unused = 64 - 8 * size;
    const bool isSigned = conversion.letter == 'd' || conversion.letter == 'i';
    uint64_t magnitude = bits << unused >> unused;
    char sign = '\0';
    if (isSigned) {
        const bool negative = (bits << unused >> 63) != 0;
        if (negative)
            magnitude = (~bits + 1) << unused >> unused;
        sign = signOf(negative, conversion.flags);
    }
    std::array<char, kMaxDigits> buffer;
    char* const end = buffer.data() + buffer.size();
    const char* const start = writeDigits(end, magnitude, conversion.letter);
    putDigits(out, {start, static_cast<size_t>(end - start)}, sign, conversion);
}

// A NUL prints nothing, not even padding.
void putCharacter(std::string& out, char ch, const Conversion& conversion) {
    if (ch != '\0')
        putPadded(out, {&ch, 1}, conversion.width, (conversion.flags & kLeft) != 0);
}

void putPointer(std::string& out, const void* pointer, const Conversion& conversion) {
    if (pointer == nullptr) {
        putString(out, "(nil)", conversion);
        return;
    }
    Conversion digits = conversion;
    digits.letter = 'x';
    digits.width = std::max(digits.width - 2, 0);
    out.append("0x");
    putInteger(out, reinterpret_cast<uintptr_t>(pointer), sizeof(uintptr_t), digits);
}

void upperCase(char* begin, const char* end) {
    for (; begin != end; ++begin) {
        if (*begin >= 'a' && *begin <= 'z')
            *begin = static_cast<char>(*begin - 'a' + 'A');
    }
}

// Hexadecimal floating point: the runtime library's own text, its decimal point made
// a '.' whatever the locale.
size_t printHexFloat(char* buffer, size_t size, double value, const Conversion& conversion) {
    char directive[30];
    if (conversion.precision >= 0)
        std::snprintf(directive, sizeof directive, "%%.%d%c", conversion.precision,
                      conversion.letter);
    else
        std::snprintf(directive, sizeof directive, "%%%c", conversion.letter);
    const int printed = std::snprintf(buffer, size, directive, value); // NOLINT(*-nonliteral)
    if (printed <= 0)
        return 0;
    const size_t length = std::min(static_cast<size_t>(printed), size - 1);
    const std::string_view point = std::localeconv()->decimal_point;
    if (char* found = std::strstr(buffer, point.data()); found != nullptr && point != ".") {
        *found = '.';
        char* const rest = found + point.size();
        std::memmove(found + 1, rest, static_cast<size_t>(buffer + length - rest));
        return length - point.size() + 1;
    }
    return length;
}

// The same digits as the runtime library's snprintf, without its parsing and its
// locale. Yields the length printed.
size_t printFloat(char* buffer, size_t size, double value, const Conversion& conversion) {
    std::chars_format style = std::chars_format::general;
    switch (conversion.letter) {
    case 'a':
    case 'A':
        return printHexFloat(buffer, size, value, conversion);
    case 'f':
    case 'F':
        style = std::chars_format::fixed;
        break;
    case 'e':
    case 'E':
        style = std::chars_format::scientific;
        break;
    default:
        break;
    }
    const int32_t precision =
        conversion.precision >= 0 ? std::min(conversion.precision, kMaxFloatPrecision) : 6;
    const std::to_chars_result result =
        std::to_chars(buffer, buffer + size, value, style, precision);
    if (conversion.letter < 'a')
        upperCase(buffer, result.ptr);
    return static_cast<size_t>(result.ptr - buffer);
}

void putFloat(std::string& out, double value, const Conversion& conversion) {
    // Sign, 309 digits before the point, the point, and the longest precision.
    std::array<char, 1 + 309 + 1 + kMaxFloatPrecision + 8> buffer;
    const size_t length = printFloat(buffer.data(), buffer.size(), value, conversion);
    putPadded(out, {buffer.data(), std::min(length, kMaxFloatLength)}, conversion.width,
              (conversion.flags & kLeft) != 0);
}

// What stands in the text for an argument that could not be printed.
void putPlaceholder(std::string& out, const Conversion& conversion) {
    Conversion zero = conversion;
    if (isIntegerLetter(conversion.letter)) {
        zero.precision = -1;
        putInteger(out, 0, sizeof(int32_t), zero);
    } else if (isFloatLetter(conversion.letter)) {
        putFloat(out, 0.0, conversion);
    } else if (conversion.letter == 'c') {
        out.push_back('?');
    } else if (conversion.letter == 'p') {
        out.append("(nil)");
    } else if (conversion.letter != 's') {
        const bool ended = conversion.letter == '\0';
        CHECKF_AT(kNoPlaceholder, false, std::string(ended ? 0 : 1, conversion.letter));
    }
}

void refuse(std::string& out, const Conversion& conversion, int32_t line) {
    CHECKF_AT(kMismatch, false,
              core::format("core_varargs.h:%d: ch=%c format='%s'", line, conversion.letter,
                           conversion.format));
    putPlaceholder(out, conversion);
}

void putIntegerArgument(std::string& out, const FormatArg& arg, unsigned size,
                        const Conversion& conversion) {
    if (isIntegerLetter(conversion.letter))
        putInteger(out, arg.integer(), size, conversion);
    else if (conversion.letter == 'c')
        putCharacter(out, static_cast<char>(arg.integer()), conversion);
    else
        refuse(out, conversion, kIntegerLine);
}

// Characters are numbers of their own: sign-extended, whatever their type's sign.
void putCharacterArgument(std::string& out, const FormatArg& arg, const Conversion& conversion) {
    const auto extended = static_cast<int32_t>(static_cast<int8_t>(arg.integer()));
    if (conversion.letter == 'c')
        putCharacter(out, static_cast<char>(arg.integer()), conversion);
    else if (isIntegerLetter(conversion.letter))
        putInteger(out, static_cast<uint32_t>(extended), sizeof extended, conversion);
    else
        refuse(out, conversion, kCharacterLine);
}

void putTextArgument(std::string& out, const FormatArg& arg, const Conversion& conversion) {
    const bool terminated = arg.kind() == FormatArg::Kind::CString;
    if (conversion.letter == 's' || conversion.letter == 'S') {
        const bool null = terminated && arg.text() == nullptr;
        putString(out, null ? "(null)" : std::string_view(arg.text(), arg.length()), conversion);
    } else if (conversion.letter == 'p' && terminated) {
        putPointer(out, arg.text(), conversion);
    } else {
        refuse(out, conversion, kStringLine);
    }
}

void putArgument(std::string& out, const FormatArg& arg, const Conversion& conversion) {
    switch (arg.kind()) {
    case FormatArg::Kind::Int8:
        putCharacterArgument(out, arg, conversion);
        break;
    case FormatArg::Kind::Int16:
        putIntegerArgument(out, arg, 2, conversion);
        break;
    case FormatArg::Kind::Int32:
        putIntegerArgument(out, arg, 4, conversion);
        break;
    case FormatArg::Kind::Int64:
        putIntegerArgument(out, arg, 8, conversion);
        break;
    case FormatArg::Kind::CString:
    case FormatArg::Kind::Text:
        putTextArgument(out, arg, conversion);
        break;
    case FormatArg::Kind::Double:
        if (isFloatLetter(conversion.letter))
            putFloat(out, arg.real(), conversion);
        else
            refuse(out, conversion, kFloatLine);
        break;
    case FormatArg::Kind::Pointer:
        if (conversion.letter == 'p')
            putPointer(out, arg.pointer(), conversion);
        else
            refuse(out, conversion, kPointerLine);
        break;
    }
}

// Copies literal text up to the next conversion, behind whose '%' the cursor then
// stands. False at the end of the format; a '%' that ends it is dropped.
bool putLiterals(std::string& out, const char*& cursor) {
    for (;;) {
        const char* const start = cursor;
        while (*cursor != '%' && *cursor != '\0')
            ++cursor;
        out.append(start, static_cast<size_t>(cursor - start));
        if (*cursor == '\0' || cursor[1] == '\0')
            return false;
        ++cursor;
        if (*cursor != '%')
            return true;
        out.push_back('%');
        ++cursor;
    }
}

size_t lengthUpTo(const char* text, size_t cap) {
    const void* const end = std::memchr(text, '\0', cap);
    return end != nullptr ? static_cast<size_t>(static_cast<const char*>(end) - text) : cap;
}

size_t estimate(const char* format, const FormatArg* args, size_t count) {
    size_t length = std::strlen(format);
    for (size_t i = 0; i < count; ++i)
        length += args[i].estimate();
    return length * 11 / 10;
}

} // namespace

FormatArg::FormatArg(const char* text)
    : d_kind(Kind::CString),
      d_text(text),
      d_length(text != nullptr ? lengthUpTo(text, kStringScanCap) : 0) {}

size_t FormatArg::length() const {
    const bool longer = d_kind == Kind::CString && d_length == kStringScanCap;
    return longer ? std::strlen(d_text) : d_length;
}

size_t FormatArg::estimate() const {
    switch (d_kind) {
    case Kind::CString:
        return d_text != nullptr ? d_length : kNullEstimate;
    case Kind::Text:
        return d_length;
    default:
        return kNumberEstimate;
    }
}

void formatTo(std::string& out, const char* format, const FormatArg* args, size_t count) {
    out.reserve(out.size() + estimate(format, args, count));
    int32_t counted = 0;
    for (const char* cursor = format; putLiterals(out, cursor);) {
        const Conversion conversion = readConversion(format, cursor);
        const auto index = static_cast<size_t>(counted++);
        if (index < count)
            putArgument(out, args[index], conversion);
        else
            refuse(out, conversion, kNoArgumentLine);
    }
    CHECKF_AT(kCountMismatch, static_cast<size_t>(counted) == count,
              core::format("format='%s' args_in_format_string=%d args_in_parameter_pack=%d", format,
                           counted, static_cast<int32_t>(count)));
}

} // namespace core
