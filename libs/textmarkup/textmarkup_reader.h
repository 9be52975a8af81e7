#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Readers and writers of XML, JSON and HTML. They know no other library, throw nothing
/// but std::bad_alloc, and use no recursion. Texts are UTF-8. Any thread, a reader or
/// writer to one thread at a time.
///
/// What the readers share: each is asked for the next event of a text, which the caller
/// keeps alive.
///
///     textmarkup::XmlReader reader(text);
///     for (Event event = reader.next(); event != Event::End; event = reader.next()) {
///         if (event == Event::Error)
///             return complain(reader.error().text());
///         ...
///     }
namespace textmarkup {

/// What stands next in a text.
enum class Event : uint8_t {
    End,   ///< The document is over. Asking on yields End again.
    Error, ///< The document is malformed or beyond a limit. Asking on yields Error again.
    // XML and HTML
    StartElement,
    EndElement, ///< also of an element that is one tag
    Text,
    Comment,
    Instruction,  ///< XML only
    DocumentType, ///< HTML only
    // JSON
    StartObject,
    EndObject,
    StartArray,
    EndArray,
    String,
    Number,
    Boolean,
    Null,
};

/// What a reader takes; more is an error, or in HTML dealt with as HtmlReader says.
struct Limits {
    size_t depth = 512;             ///< of elements, or of arrays and objects, in one another
    size_t text = size_t{16} << 20; ///< bytes of one name, text, value or comment
    size_t attributes = 256;        ///< of one element
};

/// A place in a text, as editors count: lines and columns from 1, columns in characters.
struct Position {
    size_t line = 1;   ///< from 1
    size_t column = 1; ///< in characters, from 1

    bool operator==(const Position&) const = default;
};

/// The place of a byte. Lines end in LF, CR or CR LF; a byte-order mark takes no column.
/// Takes time in proportion to `offset`.
Position positionAt(std::string_view text, size_t offset);

/// Why a text could not be read.
struct Error {
    Position position;   ///< where it was noticed
    std::string message; ///< a plain sentence, without capital and full stop

    /// "line 3, column 7: the element 'a' is closed as 'b'"
    std::string text() const;
};

} // namespace textmarkup
