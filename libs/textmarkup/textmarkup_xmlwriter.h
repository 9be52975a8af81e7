#pragma once

#include "textmarkup_attributes.h"
#include "textmarkup_escape.h"

#include <string>
#include <string_view>
#include <vector>

namespace textmarkup {

/// Writes an XML 1.0 document that every parser accepts, whatever texts and names the
/// writer is given and in whatever order it is called.
///
///     XmlWriter writer;
///     writer.declaration();
///     writer.open("report", {{"id", id}});
///     writer.element("message", message);
///     send(writer.finish());
///
/// Each tag is on its own line, without indentation, except beside and below text. Texts
/// are escaped as by `escaped`. In an invalid name each character that is not allowed
/// becomes '_'; colons are up to the caller. A document has one root: a second one, and
/// text outside it, is left out.
class XmlWriter {
public:
    /// `<?xml version="1.0" encoding="utf-8"?>`; only at the very beginning.
    void declaration();

    /// Of attributes with the same name, the first is written.
    void open(std::string_view name, const Attributes& attributes = {});
    void close();

    /// An element with at most `limit` bytes of text between its tags.
    void element(std::string_view name, std::string_view text, size_t limit = kNoLimit);

    /// Text in the open element, at most `limit` bytes of it.
    void text(std::string_view text, size_t limit = kNoLimit);

    /// Hyphens in a row are separated by blanks.
    void comment(std::string_view text);

    /// Closes what is open and returns the document; the writer is then as new.
    std::string finish();

private:
    struct Element {
        std::string name;
        bool hasText = false;
    };

    bool hasRoot() const { return d_rootSeen && d_open.empty(); }
    void beginLine();
    void endLine();

    std::string d_text;
    std::vector<Element> d_open;
    bool d_rootSeen = false;
    bool d_lineIsOpen = false; ///< a tag waits for its line to end, unless text follows
};

} // namespace textmarkup
