#pragma once

#include "internal/textmarkup_cursor.h"
#include "internal/textmarkup_gathered.h"
#include "textmarkup_attributes.h"
#include "textmarkup_reader.h"

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace textmarkup {

enum class HtmlContent : uint8_t;
enum class ReferenceIn;

/// Reads HTML in UTF-8 and cuts it into tags, texts and comments as browsers do. There are
/// no errors: any text can be read, and each StartElement has its EndElement.
///
/// Names of elements and attributes are in lower case. Elements end where browsers end
/// them: void ones at once, `p`, `li`, `td` and the like before elements that they cannot
/// contain, all others with the element around them. An end tag that closes nothing is left
/// out, as is a tag cut off by the end of the document. Unlike browsers, the reader does
/// not add `html`, `head`, `body` and `tbody`, and reopens nothing: in `<b><i></b></i>` the
/// last tag closes nothing.
///
/// Text comes with its references decoded, but raw in `script`, `style` and the like. One
/// text may come in several pieces. Invalid UTF-8 and NUL become U+FFFD. Beyond the limits,
/// texts come in more pieces, values and comments are cut, attributes are left out, and an
/// element ends before a child that would be too deep.
///
/// The results of the accessors are valid until the next call of `next` and as long as the
/// document; most are slices of it.
class HtmlReader {
public:
    /// The document must outlive the reader.
    explicit HtmlReader(std::string_view document, const Limits& limits = {});
    template <std::same_as<std::string> Temporary>
    explicit HtmlReader(const Temporary&&, const Limits& = {}) = delete; // it would be gone
    HtmlReader(const HtmlReader&) = delete;
    HtmlReader& operator=(const HtmlReader&) = delete;

    /// Never Event::Error.
    Event next();

    /// Of the element.
    std::string_view name() const;

    /// Of Text and Comment; of DocumentType, what follows the word.
    std::string_view text() const { return d_text.view(); }

    /// Of StartElement; of attributes with the same name, the first.
    Attributes attributes() const { return Attributes(d_attributes); }

    /// The number of open elements, including one that starts or ends now.
    size_t depth() const { return d_open.size(); }

    /// Where the event begins in the document, in bytes; for an EndElement without a tag,
    /// where it became necessary.
    size_t offset() const { return d_start; }

private:
    // These return whether there is an event.
    bool read();
    bool readText(size_t end, const ReferenceIn* place);
    bool readMarkup();
    bool readComment();
    bool readUntilBracket(Event event);

    // These only prepare events.
    void readStartTag();
    void readEndTag();
    void closeBefore(std::string_view element);
    Event start();
    Event end();

    // False when the document ends within the tag.
    bool readTag();
    bool readAttribute();
    bool readValue(Gathered& value);

    size_t nextMarkup() const;
    bool isMarkupAt(size_t at) const;
    size_t contentEnd() const;
    size_t scriptEnd() const;
    bool isTagAt(size_t at, std::string_view opening, std::string_view name) const;
    bool isIn(std::string_view element) const;
    void skipLineEnd();

    void gather(size_t end, const PlainBytes& plain, const ReferenceIn* place, Gathered& out);
    size_t gatherOther(std::string_view rest, const ReferenceIn* place, Gathered& out);

    static constexpr size_t kAll = static_cast<size_t>(-1);

    Cursor d_cursor;
    Limits d_limits;
    size_t d_start = 0;
    Event d_event = Event::End;

    std::vector<std::string> d_open;
    size_t d_closeTo = kAll;   ///< this many elements stay open
    bool d_startWaits = false; ///< until other elements have ended
    bool d_endsAtOnce = false; ///< the element of the latest start tag
    HtmlContent d_content{};   ///< of the innermost element; markup at first
    size_t d_contentEnd = 0;   ///< unless that is markup

    Gathered d_text;
    Gathered d_name;                ///< of the latest tag
    bool d_hasSlash = false;        ///< it has one at its end
    size_t d_count = 0;             ///< of its attributes; both lists may be longer
    std::vector<Gathered> d_names;  ///< their names
    std::vector<Gathered> d_values; ///< and values
    std::vector<Attribute> d_attributes;
};

} // namespace textmarkup
