#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Writes XML 1.0 documents that every parser takes, whatever the texts in them hold.
/// Texts are UTF-8. Any thread, one writer to a thread.
namespace textmarkup {

inline constexpr size_t kNoLimit = static_cast<size_t>(-1);

/// `text` as the content of an element: the characters & < > ' " become entities; each
/// byte that is not part of well-formed UTF-8, and each character that XML does not
/// allow (control characters but tab, line feed and carriage return; U+FFFE; U+FFFF)
/// becomes U+FFFD. A result of more than `limit` bytes is cut between characters and
/// ends in "..."; below three bytes of room nothing is left.
std::string escaped(std::string_view text, size_t limit = kNoLimit);

/// Appends one line after the other to a text, without indentation. Names of elements
/// are the caller's constants and are taken as they are.
class Writer {
public:
    /// `<?xml version="1.0" encoding="utf-8"?>`
    void declaration();

    /// The tags of an element that has others inside, each on a line of its own.
    void open(std::string_view name);
    void close(std::string_view name);

    /// `<name>text</name>`, escaped, with at most `limit` bytes between the tags.
    void element(std::string_view name, std::string_view text, size_t limit = kNoLimit);

    /// The same for what is escaped already.
    void elementOfMarkup(std::string_view name, std::string_view markup);

    const std::string& text() const { return d_text; }

private:
    std::string d_text;
};

} // namespace textmarkup
