#include "core_tokenizer.h"

#include <charconv>
#include <system_error>

namespace core {

std::optional<int32_t> decimalNumber(std::string_view field) {
    int32_t value = 0;
    const char* const end = field.data() + field.size();
    const auto [stop, error] = std::from_chars(field.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

bool Tokenizer::next(std::string_view& token) {
    while (!d_atEnd) {
        const bool quoted = d_rules.quote.has_value() && d_pos < d_text.size() &&
                            d_text[d_pos] == *d_rules.quote &&
                            !d_rules.delimiters.contains(d_text[d_pos]);
        const size_t start = quoted ? d_pos + 1 : d_pos;
        const size_t end = quoted ? endOfQuoted(start) : endOfToken(start);
        d_atEnd = end == d_text.size();
        d_pos = end + 1;
        if (end == start && d_rules.skipEmpty)
            continue;
        const bool closed = quoted && end > start && d_text[end - 1] == *d_rules.quote;
        token = d_text.substr(start, end - start - (closed ? 1 : 0));
        return true;
    }
    return false;
}

size_t Tokenizer::endOfToken(size_t start) const {
    size_t end = start;
    while (end < d_text.size() && !d_rules.delimiters.contains(d_text[end]))
        ++end;
    return end;
}

// A closing quote is one that a delimiter follows; any other belongs to the token.
size_t Tokenizer::endOfQuoted(size_t start) const {
    size_t quote = d_text.find(*d_rules.quote, start);
    while (quote != std::string_view::npos && quote + 1 < d_text.size() &&
           !d_rules.delimiters.contains(d_text[quote + 1])) {
        quote = d_text.find(*d_rules.quote, quote + 1);
    }
    return quote == std::string_view::npos ? d_text.size() : quote + 1;
}

} // namespace core
