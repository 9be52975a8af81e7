#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace core {

/// Set of bytes, built once (constexpr) and asked in constant time.
class CharSet {
public:
    /// Of the bytes of this text.
    constexpr explicit CharSet(std::string_view characters) {
        for (const char ch : characters)
            d_bits[byteOf(ch) / 64] |= uint64_t{1} << (byteOf(ch) % 64);
    }

    /// Whether it is one of them.
    constexpr bool contains(char ch) const {
        return (d_bits[byteOf(ch) / 64] >> (byteOf(ch) % 64) & 1) != 0;
    }

private:
    static constexpr uint8_t byteOf(char ch) { return static_cast<uint8_t>(ch); }

    std::array<uint64_t, 4> d_bits{};
};

/// The value of a field that is a decimal number as a whole, with "-" for a sign.
std::optional<int32_t> decimalNumber(std::string_view field);

/// Splits a text at delimiter characters, optionally with one quote character.
///
/// A quote groups only at the start of a token; the quotes around a grouped
/// token are not part of it, and delimiters between them are ordinary. A closing
/// quote counts only when a delimiter or the end of the text follows, so
/// `"a b"c d" e` yields `a b"c d` and `e`. A quote inside an unquoted token is
/// kept, an unterminated one runs to the end of the text. Every token is a slice
/// of the text. `""` yields an empty token even when empty ones are skipped.
///
///     core::Tokenizer words(line, {.delimiters = core::CharSet(" "), .quote = '"'});
///     for (std::string_view word; words.next(word);)
///         use(word);
///
/// Keeps a view: the text must outlive the tokenizer and its tokens.
class Tokenizer {
public:
    /// What splits a text.
    struct Rules {
        CharSet delimiters;                       ///< each splits
        std::optional<char> quote = std::nullopt; ///< none unless given
        bool skipEmpty = true;                    ///< tokens between two delimiters
    };

    /// Begins with the first token.
    Tokenizer(std::string_view text, const Rules& rules) : d_text(text), d_rules(rules) {}

    /// Stores the next token. False, with `token` unchanged, when there is none left.
    bool next(std::string_view& token);

private:
    size_t endOfToken(size_t start) const;
    size_t endOfQuoted(size_t start) const;

    std::string_view d_text;
    size_t d_pos = 0;     // start of the next token
    bool d_atEnd = false; // the last token, empty or not, has been taken
    Rules d_rules;
};

} // namespace core
