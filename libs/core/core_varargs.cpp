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

// The lines that mismatch messages name, by what was refused.
constexpr int32_t kStringLine = 249;
constexpr int32_t kPointerLine = 311;
constexpr int32_t kIntegerLine = 336;
constexpr int32_t kCharacterLine = 349;
constexpr int32_t kNoArgumentLine = 480;
constexpr int32_t kFloatLine = 504;

int32_t mismatchLine(FormatKind kind) {
    switch (kind) {
    case FormatKind::Int8:
        return kCharacterLine;
    case FormatKind::CString:
    case FormatKind::Text:
        return kStringLine;
    case FormatKind::Pointer:
        return kPointerLine;
    case FormatKind::Double:
        return kFloatLine;
    default:
        return kIntegerLine;
    }
}

constexpr size_t kStringScanCap = 10000;
constexpr size_t kNullEstimate = 5;
constexpr size_t kNumberEstimate = 8;
constexpr size_t kMaxFloatLength = 23;
// More digits than a double has, so that a larger precision prints the same.
constexpr int32_t kMaxFloatPrecision = 1100;
// A bad format must not exhaust the memory.
constexpr size_t kMaxPadding = 1'000'000;

using detail::Conversion;
using detail::kLeft;
using detail::kPlus;
using detail::kSpace;
using detail::kZero;

size_t lengthUpTo(const char* text, size_t cap) {
    const void* const end = std::memchr(text, '\0', cap);
    return end != nullptr ? static_cast<size_t>(static_cast<const char*>(end) - text) : cap;
}

// Most pieces of a message are a few bytes, for which a call of memcpy is most of the
// work: two overlapping moves of a fixed size copy them.
inline void copy(char* to, const char* from, size_t size) {
    if (size > 16) {
        std::memcpy(to, from, size);
    } else if (size >= 8) {
        std::memcpy(to, from, 8);
        std::memcpy(to + size - 8, from + size - 8, 8);
    } else if (size >= 4) {
        std::memcpy(to, from, 4);
        std::memcpy(to + size - 4, from + size - 4, 4);
    } else if (size != 0) {
        to[0] = from[0];
        to[size / 2] = from[size / 2];
        to[size - 1] = from[size - 1];
    }
}

// Writes into the string's own storage, which is trimmed to the text at the end.
class Output {
public:
    Output(std::string& text, size_t expected) : d_text(text) {
        const size_t used = text.size();
        text.resize(used + expected);
        d_pos = text.data() + used;
        d_end = text.data() + text.size();
    }
    ~Output() { d_text.resize(used()); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void put(char ch) { *take(1) = ch; }
    __attribute__((always_inline)) void put(std::string_view text) {
        copy(take(text.size()), text.data(), text.size());
    }
    void fill(size_t count, char ch) {
        if (count != 0)
            std::memset(take(count), ch, count);
    }

    // Room for `size` bytes, of which `advance` keeps those before `end`.
    char* room(size_t size) {
        if (static_cast<size_t>(d_end - d_pos) < size)
            grow(size);
        return d_pos;
    }
    void advance(char* end) { d_pos = end; }

    // `size` bytes, to be written by the caller.
    char* take(size_t size) {
        char* const start = room(size);
        d_pos += size;
        return start;
    }

private:
    size_t used() const { return static_cast<size_t>(d_pos - d_text.data()); }

    [[gnu::cold, gnu::noinline]] void grow(size_t size) {
        const size_t kept = used();
        d_text.resize(std::max(kept + size, 2 * d_text.size()));
        d_pos = d_text.data() + kept;
        d_end = d_text.data() + d_text.size();
    }

    std::string& d_text;
    char* d_pos;
    char* d_end;
};

// How much padding a text of `length` needs.
size_t missing(int32_t width, size_t length) {
    const auto wanted = static_cast<size_t>(std::max(width, 0));
    return wanted > length ? std::min(wanted - length, kMaxPadding) : 0;
}

void putPadded(Output& out, std::string_view text, int32_t width, bool left) {
    const size_t padding = missing(width, text.size());
    out.fill(left ? 0 : padding, ' ');
    out.put(text);
    out.fill(left ? padding : 0, ' ');
}

// `width` is a maximum here; what does not fit is cut, marked by dots where they fit.
void putTruncated(Output& out, std::string_view text, std::string_view kept,
                  const Conversion& conversion) {
    if (conversion.width < 1 || text.size() <= static_cast<size_t>(conversion.width)) {
        out.put(kept);
    } else if (conversion.width >= 4) {
        out.put(text.substr(0, static_cast<size_t>(conversion.width) - 3));
        out.put("...");
    } else {
        GASSERT_AT(kShortTruncation, false);
        out.put(text.substr(0, static_cast<size_t>(conversion.width)));
    }
}

void putString(Output& out, std::string_view text, const Conversion& conversion) {
    const std::string_view kept =
        conversion.precision > 0 ? text.substr(0, static_cast<size_t>(conversion.precision)) : text;
    if (conversion.letter == 'S')
        putTruncated(out, text, kept, conversion);
    else
        putPadded(out, kept, conversion.width, (conversion.flags & kLeft) != 0);
}

void upperCase(char* begin, const char* end) {
    for (; begin != end; ++begin) {
        if (*begin >= 'a' && *begin <= 'z')
            *begin = static_cast<char>(*begin - 'a' + 'A');
    }
}

size_t countDigits(uint64_t value, char letter) {
    const auto bits = static_cast<size_t>(std::bit_width(value | 1));
    if (letter == 'o')
        return (bits + 2) / 3;
    if (letter == 'x' || letter == 'X')
        return (bits + 3) / 4;
    size_t count = 1;
    for (uint64_t limit = 10; value >= limit && count < 20; limit *= 10)
        ++count;
    return count;
}

// Writes the digits of an integer letter from `to` to `end`, which they fill exactly.
void writeDigits(char* to, char* end, uint64_t value, char letter) {
    if (letter == 'o') {
        std::to_chars(to, end, value, 8);
    } else if (letter == 'x' || letter == 'X') {
        std::to_chars(to, end, value, 16);
        if (letter == 'X')
            upperCase(to, end);
    } else if (value <= std::numeric_limits<uint32_t>::max()) {
        // 32-bit division is several times cheaper, on the 32-bit target above all.
        std::to_chars(to, end, static_cast<uint32_t>(value));
    } else {
        std::to_chars(to, end, value);
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

struct Number {
    uint64_t magnitude;
    bool negative;
};

bool isSignedLetter(char letter) { return letter == 'd' || letter == 'i'; }

// `bits` holds the value in its low `size` bytes; the letter decides whether it is signed.
Number readInteger(uint64_t bits, unsigned size, char letter) {
    const unsigned unused = 64 - 8 * size;
    const bool negative = isSignedLetter(letter) && (bits << unused >> 63) != 0;
    return {(negative ? ~bits + 1 : bits) << unused >> unused, negative};
}

void putInteger(Output& out, uint64_t bits, unsigned size, const Conversion& conversion) {
    const Number number = readInteger(bits, size, conversion.letter);
    const char sign =
        isSignedLetter(conversion.letter) ? signOf(number.negative, conversion.flags) : '\0';
    const size_t digits = countDigits(number.magnitude, conversion.letter);
    const bool digitCount = conversion.precision > 0;
    const int32_t width = digitCount ? conversion.precision : conversion.width;
    const size_t padding = missing(width, digits + (sign != '\0' ? 1 : 0));
    const bool zeroFill = digitCount || (conversion.flags & kZero) != 0;
    const bool left = !zeroFill && (conversion.flags & kLeft) != 0;

    out.fill(zeroFill || left ? 0 : padding, ' ');
    if (sign != '\0')
        out.put(sign);
    out.fill(zeroFill ? padding : 0, '0');
    char* const to = out.take(digits);
    writeDigits(to, to + digits, number.magnitude, conversion.letter);
    out.fill(left ? padding : 0, ' ');
}

// A NUL prints nothing, not even padding.
void putCharacter(Output& out, char ch, const Conversion& conversion) {
    if (ch != '\0')
        putPadded(out, {&ch, 1}, conversion.width, (conversion.flags & kLeft) != 0);
}

void putPointer(Output& out, const void* pointer, const Conversion& conversion) {
    if (pointer == nullptr) {
        putString(out, "(nil)", conversion);
        return;
    }
    Conversion digits = conversion;
    digits.letter = 'x';
    digits.width = std::max(digits.width - 2, 0);
    out.put("0x");
    putInteger(out, reinterpret_cast<uintptr_t>(pointer), sizeof(uintptr_t), digits);
}

// Hexadecimal floating point: the runtime library's own text, its decimal point made
// a '.' whatever the locale.
size_t printHexFloat(char* buffer, size_t size, double value, const Conversion& conversion) {
    char directive[30];
    const int32_t precision = std::min(conversion.precision, kMaxFloatPrecision);
    if (precision >= 0)
        std::snprintf(directive, sizeof directive, "%%.%d%c", precision, conversion.letter);
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

// The same digits as the runtime library's snprintf, without its parsing and its locale.
// Returns the length printed.
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

void putFloat(Output& out, double value, const Conversion& conversion) {
    // Sign, 309 digits before the point, the point, and the longest precision.
    std::array<char, 1 + 309 + 1 + kMaxFloatPrecision + 8> buffer;
    const size_t length = printFloat(buffer.data(), buffer.size(), value, conversion);
    putPadded(out, {buffer.data(), std::min(length, kMaxFloatLength)}, conversion.width,
              (conversion.flags & kLeft) != 0);
}

bool isOneOf(char letter, std::string_view letters) {
    return letters.find(letter) != std::string_view::npos;
}

// What stands in the text for an argument that could not be printed.
void putPlaceholder(Output& out, const Conversion& conversion) {
    Conversion zero = conversion;
    if (isOneOf(conversion.letter, detail::kIntegerLetters)) {
        zero.precision = -1;
        putInteger(out, 0, sizeof(int32_t), zero);
    } else if (isOneOf(conversion.letter, detail::kFloatLetters)) {
        putFloat(out, 0.0, conversion);
    } else if (conversion.letter == 'c') {
        out.put('?');
    } else if (conversion.letter == 'p') {
        out.put("(nil)");
    } else if (conversion.letter != 's') {
        const bool ended = conversion.letter == '\0';
        CHECKF_AT(kNoPlaceholder, false, std::string(ended ? 0 : 1, conversion.letter));
    }
}

[[gnu::cold]] void refuse(Output& out, const Conversion& conversion, int32_t line) {
    CHECKF_AT(kMismatch, false,
              core::format("core_varargs.h:%d: ch=%c format='%s'", line, conversion.letter,
                           conversion.format));
    putPlaceholder(out, conversion);
}

void putIntegerArgument(Output& out, uint64_t bits, unsigned size, const Conversion& conversion) {
    if (conversion.letter == 'c')
        putCharacter(out, static_cast<char>(bits), conversion);
    else
        putInteger(out, bits, size, conversion);
}

// Characters are numbers of their own: sign-extended, whatever their type's sign.
uint32_t extendCharacter(uint64_t bits) {
    const auto byte = static_cast<int32_t>(bits & 0xFF);
    return static_cast<uint32_t>((byte ^ 0x80) - 0x80);
}

bool isText(const FormatArg& arg) {
    return arg.kind() == FormatKind::CString || arg.kind() == FormatKind::Text;
}

inline std::string_view textOf(const FormatArg& arg) {
    const bool null = arg.kind() == FormatKind::CString && arg.text() == nullptr;
    return null ? "(null)" : std::string_view(arg.text(), arg.length());
}

void putTextArgument(Output& out, const FormatArg& arg, const Conversion& conversion) {
    if (conversion.letter == 'p')
        putPointer(out, arg.text(), conversion);
    else
        putString(out, textOf(arg), conversion);
}

// For a conversion that the argument takes.
void putArgument(Output& out, const FormatArg& arg, const Conversion& conversion) {
    switch (arg.kind()) {
    case FormatKind::Int8:
        putIntegerArgument(out, extendCharacter(arg.integer()), 4, conversion);
        break;
    case FormatKind::Int16:
        putIntegerArgument(out, arg.integer(), 2, conversion);
        break;
    case FormatKind::Int32:
        putIntegerArgument(out, arg.integer(), 4, conversion);
        break;
    case FormatKind::Int64:
        putIntegerArgument(out, arg.integer(), 8, conversion);
        break;
    case FormatKind::CString:
    case FormatKind::Text:
        putTextArgument(out, arg, conversion);
        break;
    case FormatKind::Double:
        putFloat(out, arg.real(), conversion);
        break;
    case FormatKind::Pointer:
        putPointer(out, arg.pointer(), conversion);
        break;
    case FormatKind::None:
        break;
    }
}

// Copies literal text up to the next conversion, behind whose '%' the cursor then
// stands. False at the end of the format; a '%' that ends it is dropped.
bool putLiterals(Output& out, const char*& cursor, const char* end) {
    char* to = out.room(static_cast<size_t>(end - cursor));
    const char* from = cursor;
    while (*from != '\0') {
        if (*from != '%') {
            *to++ = *from++;
        } else if (from[1] == '%') {
            *to++ = '%';
            from += 2;
        } else {
            break;
        }
    }
    out.advance(to);
    cursor = from + 1;
    return end - from > 1;
}

// Kept out of the loop below, which then handles only the usual directives; inlining it
// would cost a twentieth of a line's time.
[[gnu::noinline, gnu::flatten]] void putDirective(Output& out, const char* format,
                                                  const char*& cursor, const FormatArg* arg) {
    const Conversion conversion = detail::readConversion(format, cursor);
    if (arg == nullptr)
        refuse(out, conversion, kNoArgumentLine);
    else if (!detail::takes(arg->kind(), conversion.letter))
        refuse(out, conversion, mismatchLine(arg->kind()));
    else
        putArgument(out, *arg, conversion);
}

// Returns how many conversions the format has.
size_t putAll(Output& out, const char* format, size_t length, const FormatArg* args, size_t count) {
    size_t counted = 0;
    for (const char* cursor = format; putLiterals(out, cursor, format + length); ++counted) {
        const FormatArg* const arg = counted < count ? args + counted : nullptr;
        if (*cursor == 's' && arg != nullptr && isText(*arg)) {
            out.put(textOf(*arg));
            ++cursor;
        } else {
            putDirective(out, format, cursor, arg);
        }
    }
    return counted;
}

size_t estimate(size_t formatLength, const FormatArg* args, size_t count) {
    size_t length = formatLength;
    for (size_t i = 0; i < count; ++i)
        length += args[i].estimate();
    return length * 11 / 10;
}

} // namespace

FormatArg::FormatArg(const char* text)
    : d_kind(FormatKind::CString),
      d_text(text),
      d_length(text != nullptr ? lengthUpTo(text, kStringScanCap) : 0) {}

size_t FormatArg::length() const {
    const bool longer = d_kind == FormatKind::CString && d_length == kStringScanCap;
    return longer ? std::strlen(d_text) : d_length;
}

size_t FormatArg::estimate() const {
    switch (d_kind) {
    case FormatKind::CString:
        return d_text != nullptr ? d_length : kNullEstimate;
    case FormatKind::Text:
        return d_length;
    default:
        return kNumberEstimate;
    }
}

void formatTo(std::string& out, const char* format, const FormatArg* args, size_t count) {
    const size_t length = std::strlen(format);
    size_t counted = 0;
    {
        Output output(out, estimate(length, args, count));
        counted = putAll(output, format, length, args, count);
    }
    CHECKF_AT(kCountMismatch, counted == count,
              core::format("format='%s' args_in_format_string=%d args_in_parameter_pack=%d", format,
                           static_cast<int32_t>(counted), static_cast<int32_t>(count)));
}

} // namespace core
