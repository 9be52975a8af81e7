#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <string_view>

/// Text for code that runs after a crash.
namespace core::detail {

/// Text in fixed memory, since the heap must not be used after a crash. What does not fit
/// is dropped.
template <size_t Size>
class FixedText {
public:
    FixedText& operator<<(std::string_view text) {
        d_size += text.copy(d_text.data() + d_size, Size - 1 - d_size);
        d_text[d_size] = '\0';
        return *this;
    }
    FixedText& operator<<(std::integral auto number) { return add(number, 10); }
    template <std::integral T>
    FixedText& addHex(T number) {
        *this << "0x";
        return add(number, 16);
    }
    FixedText& addTwoDigits(int number) {
        return *this << (number >= 0 && number < 10 ? "0" : "") << number;
    }
    void clear() {
        d_size = 0;
        d_text[0] = '\0';
    }
    void replace(char from, char to) {
        for (size_t i = 0; i < d_size; ++i)
            d_text[i] = d_text[i] == from ? to : d_text[i];
    }

    std::string_view view() const { return {d_text.data(), d_size}; }
    const char* c_str() const { return d_text.data(); }

private:
    FixedText& add(std::integral auto number, int base) {
        std::array<char, 24> digits;
        const auto end = std::to_chars(digits.begin(), digits.end(), number, base).ptr;
        return *this << std::string_view(digits.data(), static_cast<size_t>(end - digits.data()));
    }

    std::array<char, Size> d_text{}; // ends with a NUL
    size_t d_size = 0;
};

using PathText = FixedText<4096>;

} // namespace core::detail
