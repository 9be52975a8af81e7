#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Readers and writers of XML, JSON and HTML. They use no other library and no recursion,
/// and throw nothing but std::bad_alloc. Texts are UTF-8. For any thread; each reader or
/// writer is used by one thread at a time.
///
/// Common to the readers: each returns the events of a text one by one. The caller keeps
/// the text alive.
///
///     textmarkup::XmlReader reader(text);
///     for (Event event = reader.next(); event != Event::End; event = reader.next()) {
///         if (event == Event::Error)
///             return complain(reader.error().text());
///         ...
///     }
namespace textmarkup {

/// What comes next in a text.
enum class Event : uint8_t {
    End,   ///< The document has ended. The next call returns End again.
    Error, ///< The document is malformed or exceeds a limit. The next call returns Error again.
    // XML and HTML
    StartElement,
    EndElement, ///< also for an element that is a single tag
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

/// What a reader accepts; more is an error, or for HTML treated as HtmlReader says.
struct Limits {
    size_t depth = 512;             ///< of nested elements, or arrays and objects
    size_t text = size_t{16} << 20; ///< bytes of one name, text, value or comment
    size_t attributes = 256;        ///< of one element
};

/// A place in a text, as editors count: lines and columns from 1, columns in characters.
struct Position {
    size_t line = 1;   ///< from 1
    size_t column = 1; ///< in characters, from 1

    bool operator==(const Position&) const = default;
};

/// The position of a byte. Lines end in LF, CR or CR LF; a byte order mark takes no column.
/// Takes time proportional to `offset`.
Position positionAt(std::string_view text, size_t offset);

/// Why a text could not be read, and where.
struct Error {
    Position position;   ///< where it was noticed
    std::string message; ///< a plain clause, without capital and full stop

    /// "line 3, column 7: the element 'a' is closed as 'b'"
    std::string text() const;
};

} // namespace textmarkup
