#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

/// Which conversions a format may hold and which arguments they take: the one
/// description by which core::format prints and the compiler checks literal formats.
namespace core {

/// What an argument counts as, whatever its type.
enum class FormatKind : uint8_t { Int8, Int16, Int32, Int64, Double, CString, Text, Pointer, None };

namespace detail {

// ---- The kind of a type

template <typename T>
concept FormatInteger = std::integral<T> && sizeof(T) <= 8;
template <typename T>
concept FormatText = requires(const T& text) {
    { text.data() } -> std::convertible_to<const char*>;
    { text.size() } -> std::convertible_to<size_t>;
};
template <typename T>
concept FormatPointee = (std::is_object_v<T> ||
                         std::is_void_v<T>)&&!std::is_same_v<std::remove_cv_t<T>, char>;

template <FormatInteger T>
constexpr FormatKind kindOfInteger() {
    if constexpr (sizeof(T) == 4 || std::is_same_v<T, bool>)
        return FormatKind::Int32;
    else if constexpr (sizeof(T) == 1)
        return FormatKind::Int8;
    else if constexpr (sizeof(T) == 2)
        return FormatKind::Int16;
    else
        return FormatKind::Int64;
}

template <typename T>
constexpr FormatKind kindOf() {
    using Pointee = std::remove_pointer_t<std::decay_t<T>>;
    if constexpr (FormatInteger<T>)
        return kindOfInteger<T>();
    else if constexpr (std::is_enum_v<T>)
        return kindOfInteger<std::underlying_type_t<T>>();
    else if constexpr (std::floating_point<T>)
        return FormatKind::Double;
    else if constexpr (FormatText<T>)
        return FormatKind::Text;
    else if constexpr (std::is_convertible_v<const T&, const char*> && !std::is_null_pointer_v<T>)
        return FormatKind::CString;
    else if constexpr (std::is_null_pointer_v<T> ||
                       (std::is_pointer_v<std::decay_t<T>> && FormatPointee<Pointee>))
        return FormatKind::Pointer;
    else
        return FormatKind::None;
}

} // namespace detail

/// The kind of an argument of type `T`; None for a type that cannot be formatted.
template <typename T>
inline constexpr FormatKind kFormatKind = detail::kindOf<T>();

namespace detail {

// ---- The letters that a kind takes

constexpr std::string_view kIntegerLetters = "diouxX";
constexpr std::string_view kFloatLetters = "fFgGeEaA";

constexpr std::string_view lettersOf(FormatKind kind) {
    switch (kind) {
    case FormatKind::Int8:
    case FormatKind::Int16:
    case FormatKind::Int32:
    case FormatKind::Int64:
        return "diouxXc";
    case FormatKind::Double:
        return kFloatLetters;
    case FormatKind::CString:
        return "sSp";
    case FormatKind::Text:
        return "sS";
    case FormatKind::Pointer:
        return "p";
    case FormatKind::None:
        break;
    }
    return "";
}

// For each letter, a bit for each kind that takes it.
inline constexpr auto kTakers = [] {
    std::array<uint8_t, 256> takers{};
    for (uint8_t kind = 0; kind < static_cast<uint8_t>(FormatKind::None); ++kind) {
        for (const char letter : lettersOf(static_cast<FormatKind>(kind)))
            takers[static_cast<uint8_t>(letter)] |= static_cast<uint8_t>(1U << kind);
    }
    return takers;
}();

constexpr bool takes(FormatKind kind, char letter) {
    return (kTakers[static_cast<uint8_t>(letter)] >> static_cast<uint8_t>(kind) & 1U) != 0;
}

// ---- Reading a format

enum FormatFlag : uint8_t {
    kLeft = 1,
    kZero = 2,
    kPlus = 4,
    kSpace = 8,
    kIgnored = 16,
    kModifier = 32
};

// What a character between '%' and the letter says; a length modifier ends the flags.
inline constexpr auto kFlagOf = [] {
    std::array<uint8_t, 256> flags{};
    for (const char modifier : {'h', 'l', 'L', 'j', 't', 'z'})
        flags[static_cast<uint8_t>(modifier)] = kModifier;
    flags['-'] = kLeft;
    flags['0'] = kZero;
    flags['+'] = kPlus;
    flags[' '] = kSpace;
    flags['#'] = kIgnored;
    return flags;
}();

constexpr uint32_t flagOf(char ch) { return kFlagOf[static_cast<uint8_t>(ch)]; }

/// One directive of a format, from behind its '%' to its letter.
struct Conversion {
    const char* format; ///< the whole format, for messages
    char letter = '\0'; ///< NUL if the format ends first
    uint32_t flags = 0;
    int32_t width = 0;
    int32_t precision = -1;
};

constexpr uint32_t readFlags(const char*& cursor) {
    uint32_t flags = 0;
    for (; (flagOf(*cursor) & ~kModifier) != 0; ++cursor)
        flags |= flagOf(*cursor);
    return flags;
}

// Reads decimal digits; a number too large for the type is its largest value.
constexpr int32_t readNumber(const char*& cursor) {
    constexpr uint32_t kMax = std::numeric_limits<int32_t>::max();
    uint32_t value = 0;
    for (; *cursor >= '0' && *cursor <= '9'; ++cursor)
        value = value < kMax / 10 ? value * 10 + static_cast<uint32_t>(*cursor - '0') : kMax;
    return static_cast<int32_t>(value);
}

// The argument's own type decides its width, so the modifiers are only skipped.
constexpr void skipLengthModifier(const char*& cursor) {
    if (flagOf(*cursor) != kModifier)
        return;
    const bool twice = (*cursor == 'h' || *cursor == 'l') && cursor[1] == *cursor;
    cursor += twice ? 2 : 1;
}

/// `cursor` is behind the '%', afterwards behind the letter, or on the terminator if the
/// format ends first.
constexpr Conversion readConversion(const char* format, const char*& cursor) {
    Conversion conversion{format};
    if (*cursor < 'A') { // usually a bare letter follows
        conversion.flags = readFlags(cursor);
        conversion.width = readNumber(cursor);
        if (*cursor == '.')
            conversion.precision = readNumber(++cursor);
    }
    skipLengthModifier(cursor);
    conversion.letter = *cursor;
    if (*cursor != '\0')
        ++cursor;
    return conversion;
}

/// Behind the '%' of the next directive; null if there is none. "%%" is a literal; a '%'
/// at the end of the format is ignored.
constexpr const char* nextDirective(const char* cursor) {
    while (*cursor != '\0') {
        if (*cursor++ != '%')
            continue;
        if (*cursor == '\0')
            break;
        if (*cursor != '%')
            return cursor;
        ++cursor;
    }
    return nullptr;
}

// ---- What is wrong with a format

/// The kinds tell by which argument a conversion was refused.
struct FormatFault {
    enum class What : uint8_t { Nothing, WrongLetter, NoArgument, NoConversion };
    What what = What::Nothing;
    FormatKind kind = FormatKind::None; ///< of the argument, for a wrong letter
};

/// The first thing wrong with `format` for arguments of these kinds.
constexpr FormatFault findFault(const char* format, const FormatKind* kinds, size_t count) {
    size_t used = 0;
    for (const char* cursor = nextDirective(format); cursor != nullptr;
         cursor = nextDirective(cursor), ++used) {
        if (used == count)
            return {FormatFault::What::NoArgument};
        if (!takes(kinds[used], readConversion(format, cursor).letter))
            return {FormatFault::What::WrongLetter, kinds[used]};
    }
    if (used < count)
        return {FormatFault::What::NoConversion};
    return {};
}

// Not constant expressions: where the check of a literal format calls one of these, the
// compiler refuses the format and prints the function's name. Nothing defines them.
void error_conversion_without_argument();
void error_argument_without_conversion();
void error_integers_take_the_conversions_d_i_u_o_x_X_c();
void error_floating_point_takes_the_conversions_f_F_g_G_e_E_a_A();
void error_c_strings_take_the_conversions_s_S_p();
void error_texts_take_the_conversions_s_S();
void error_pointers_take_the_conversion_p();

consteval void refuse(FormatFault fault) {
    switch (fault.what) {
    case FormatFault::What::Nothing:
        return;
    case FormatFault::What::NoArgument:
        return error_conversion_without_argument();
    case FormatFault::What::NoConversion:
        return error_argument_without_conversion();
    case FormatFault::What::WrongLetter:
        break;
    }
    switch (fault.kind) {
    case FormatKind::Double:
        return error_floating_point_takes_the_conversions_f_F_g_G_e_E_a_A();
    case FormatKind::CString:
        return error_c_strings_take_the_conversions_s_S_p();
    case FormatKind::Text:
        return error_texts_take_the_conversions_s_S();
    case FormatKind::Pointer:
        return error_pointers_take_the_conversion_p();
    default:
        return error_integers_take_the_conversions_d_i_u_o_x_X_c();
    }
}

} // namespace detail

/// A format that is known only at run time: see runtimeFormat.
struct RuntimeFormat {
    const char* text; ///< the caller's; ends with NUL
};

/// A format that is not a literal. It is checked while it is printed: a mismatch is a
/// failed check and a placeholder. The caller keeps `text`.
constexpr RuntimeFormat runtimeFormat(const char* text) { return {text}; }

/// The format of a call whose arguments have these kinds. A literal is checked at compile
/// time: the error for a wrong one names what is wrong.
template <FormatKind... Kinds>
class FormatString {
public:
    /// A literal, or a constant.
    consteval FormatString(const char* literal) : d_text(literal) {
        constexpr FormatKind kinds[] = {Kinds..., FormatKind::None};
        // A type that cannot be formatted is an error of its own.
        if (((Kinds != FormatKind::None) && ...))
            detail::refuse(detail::findFault(literal, kinds, sizeof...(Kinds)));
    }
    /// Not checked here.
    constexpr FormatString(RuntimeFormat format) : d_text(format.text) {}

    /// The format itself.
    constexpr const char* text() const { return d_text; }

private:
    const char* d_text;
};

} // namespace core
