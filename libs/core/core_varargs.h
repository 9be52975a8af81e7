#pragma once

#include "core_formatrules.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

/// Type-checked printf-style formatting.
///
/// The argument's type decides what is printed, the conversion only how:
///
///     argument                              conversions
///     char, signed and unsigned char        c  d i u o x X (sign-extended to 32 bits)
///     16-, 32- and 64-bit integers, enums   d i u o x X c
///     float, double                         f F g G e E a A
///     const char*                           s S  p (its address)
///     std::string and other text            s S
///     other pointers                        p
///
/// Flags `-`, `0`, `+` and space, a width and a precision work as in printf except:
///  - an integer's precision is a zero-filled width that replaces the width given
///    ("%8.3d" prints like "%03d"); zero fill wins over `-`, space over `+`;
///  - precision 0 does not cut a string; `c` prints nothing for NUL;
///  - numbers in floating point take only width, `-` and precision, and at most 23
///    characters of the number are printed; its decimal point is always '.';
///  - `S` takes its width as a maximum: "%6S" of "abcdefghij" is "abc...";
///  - `#` and the length modifiers are accepted and mean nothing; `*` is not supported;
///  - a number or text is padded by at most a million characters.
///
/// A mismatch, a missing or a surplus argument does not compile where the format is a
/// literal. In a format from elsewhere, which is passed as runtimeFormat(text), it is a
/// failed check, after which formatting goes on with a neutral placeholder: a faulty
/// message never crashes.
namespace core {

/// One erased argument: a view, valid while the argument it was made from is.
class FormatArg {
public:
    /// Of each type that can be formatted.
    template <detail::FormatInteger T>
    constexpr FormatArg(T value)
        : d_kind(kFormatKind<T>), d_integer(static_cast<uint64_t>(value)) {}

    /// Counts as its underlying type.
    template <typename T>
    requires std::is_enum_v<T>
    constexpr FormatArg(T value) : FormatArg(static_cast<std::underlying_type_t<T>>(value)) {}

    /// Counts as a double.
    template <std::floating_point T>
    constexpr FormatArg(T value)
        : d_kind(FormatKind::Double), d_double(static_cast<double>(value)) {}

    /// Null is allowed and prints as "(null)".
    FormatArg(const char* text);

    /// Text with a length of its own; embedded NUL characters are kept.
    template <detail::FormatText T>
    FormatArg(const T& text)
        : d_kind(FormatKind::Text),
          d_text(text.data()),
          d_length(static_cast<size_t>(text.size())) {}

    /// An address, or null.
    template <detail::FormatPointee T>
    constexpr FormatArg(T* pointer)
        : d_kind(FormatKind::Pointer), d_pointer(const_cast<const std::remove_cv_t<T>*>(pointer)) {}
    constexpr FormatArg(std::nullptr_t) : d_kind(FormatKind::Pointer), d_pointer(nullptr) {}

    /// Which of the values below it has, and that value.
    FormatKind kind() const { return d_kind; }
    uint64_t integer() const { return d_integer; } ///< zero- or sign-extended bits
    double real() const { return d_double; }
    const char* text() const { return d_text; }
    size_t length() const; ///< of the text, in bytes
    const void* pointer() const { return d_pointer; }

    /// Bytes that this argument will probably print.
    size_t estimate() const;

private:
    FormatKind d_kind;
    union {
        uint64_t d_integer;
        double d_double;
        const char* d_text;
        const void* d_pointer;
    };
    size_t d_length = 0; // of a text
};

/// The engine behind `format`: appends the text to `out`.
void formatTo(std::string& out, const char* format, const FormatArg* args, size_t count);

namespace detail {

template <typename T>
FormatArg eraseArgument(const T& value) {
    if constexpr (kFormatKind<T> == FormatKind::None) {
        static_assert(kFormatKind<T> != FormatKind::None,
                      "this argument cannot be formatted: it is no number, enumeration, text "
                      "or pointer to an object");
        return nullptr;
    } else {
        return value;
    }
}

template <typename... Args>
using ErasedArguments = std::array<FormatArg, sizeof...(Args)>;

} // namespace detail

/// Formats to a new string; `format` ends at its NUL. Any thread. Throws std::bad_alloc,
/// since programs would take a cut text for a whole one.
template <typename... Args>
std::string format(FormatString<kFormatKind<Args>...> format, const Args&... args) {
    const detail::ErasedArguments<Args...> erased{detail::eraseArgument(args)...};
    std::string out;
    formatTo(out, format.text(), erased.data(), erased.size());
    return out;
}

} // namespace core
