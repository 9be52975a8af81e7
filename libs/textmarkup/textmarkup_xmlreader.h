#pragma once

#include "internal/textmarkup_strictreader.h"
#include "textmarkup_attributes.h"

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace textmarkup {

/// Reads XML 1.0 documents (fifth edition) in UTF-8, with or without a byte order mark.
/// Anything that is not well-formed is an error. So are other encodings, and a document
/// type: without one there are only XML's five entities, and no text can grow. Namespace
/// prefixes are part of the names.
///
/// Lines end in LF, however they end in the document. Adjacent texts and CDATA sections
/// come as one Text, even if it is all blanks; an empty one is left out. So are the XML
/// declaration and white space outside the root.
///
/// The results of the accessors are valid until the next call of `next` and as long as the
/// document; most are slices of it.
class XmlReader : public StrictReader {
public:
    /// The document must outlive the reader.
    explicit XmlReader(std::string_view document, const Limits& limits = {});
    template <std::same_as<std::string> Temporary>
    explicit XmlReader(const Temporary&&, const Limits& = {}) = delete; // it would be gone

    /// The next event. After End or Error, the same again.
    Event next();

    /// At StartElement: moves to its EndElement and gathers its own texts, not those of
    /// elements in it. False after an error.
    [[nodiscard]] bool readText(std::string& out);

    /// Of the element; of an instruction, its target.
    std::string_view name() const { return d_name; }

    /// Of Text and Comment; of an instruction, what follows its target.
    std::string_view text() const { return d_content.view(); }

    /// Of StartElement, decoded.
    Attributes attributes() const { return Attributes(d_attributes); }

    /// The number of open elements, including one that starts or ends now.
    size_t depth() const { return d_open.size(); }

private:
    // These return false on failure.
    bool begin();
    bool readDeclaration();
    bool readOutside();
    bool readInside();
    bool readMarkup();
    bool readStartTag();
    bool endStartTag();
    bool readAttribute();
    bool readValue(Gathered& value);
    bool readEndTag();
    bool readComment();
    bool readInstruction();
    bool readCharacterData();
    bool readReference(Gathered& out);
    bool readUntil(std::string_view end, const char* what);
    bool readCharacters(const PlainBytes& plain, Gathered& out);

    std::string_view readPseudoAttribute(std::string_view name);
    std::string_view readName();
    void readLineEnd(Gathered& out);
    bool skipBlanks();

    bool d_rootSeen = false;
    bool d_endsAtOnce = false; ///< the start tag was also the end tag
    std::vector<std::string_view> d_open;
    std::string_view d_name;
    Gathered d_content;
    std::vector<Attribute> d_attributes;
    std::vector<Gathered> d_values; ///< of the attributes; never shrinks, to keep its memory
};

} // namespace textmarkup
