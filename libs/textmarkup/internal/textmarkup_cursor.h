#pragma once

#include <cstddef>
#include <string_view>

namespace textmarkup {

/// A position in a text that only moves forward; the readers are built on it.
class Cursor {
public:
    explicit Cursor(std::string_view text) : d_text(text) {}

    std::string_view text() const { return d_text; }
    size_t at() const { return d_at; }
    bool atEnd() const { return d_at == d_text.size(); }
    std::string_view rest() const { return d_text.substr(d_at); }
    bool stands(std::string_view what) const { return rest().starts_with(what); }

    /// The next byte. Not at the end.
    char peek() const { return d_text[d_at]; }

    void moveTo(size_t at) { d_at = at; }

    /// Moves over that many bytes, at most to the end, and returns them.
    std::string_view take(size_t count) {
        const std::string_view taken = d_text.substr(d_at, count);
        d_at += taken.size();
        return taken;
    }

    /// Moves over `what` if it comes next.
    bool skip(std::string_view what) {
        const bool there = stands(what);
        if (there)
            d_at += what.size();
        return there;
    }

    /// Moves over all bytes that satisfy the predicate, and returns them.
    template <typename Predicate>
    std::string_view takeWhile(Predicate&& predicate) {
        const size_t start = d_at;
        while (!atEnd() && predicate(peek()))
            ++d_at;
        return d_text.substr(start, d_at - start);
    }

private:
    std::string_view d_text;
    size_t d_at = 0;
};

/// White space of XML and JSON.
constexpr bool isBlank(char ch) { return ch == ' ' || ch == '\n' || ch == '\t' || ch == '\r'; }

} // namespace textmarkup
