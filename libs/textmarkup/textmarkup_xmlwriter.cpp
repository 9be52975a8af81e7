#include "textmarkup_xmlwriter.h"

#include "internal/textmarkup_characters.h"

#include <utility>

namespace textmarkup {
namespace {

std::string nameOf(std::string_view text) {
    std::string name;
    while (!text.empty()) {
        const Character character = characterAt(text);
        const bool allowed =
            character.wellFormed &&
            (name.empty() ? isXmlNameStart(character.code) : isXmlNameCharacter(character.code));
        name += allowed ? text.substr(0, character.length) : "_";
        text.remove_prefix(character.length);
    }
    return name.empty() ? "_" : name;
}

} // namespace

/// Before a tag that does not follow a text.
void XmlWriter::beginLine() {
    if (std::exchange(d_lineIsOpen, false))
        d_text += '\n';
}

/// After a tag that a text in the open element may follow.
void XmlWriter::endLine() {
    if (d_open.empty())
        d_text += '\n';
    else
        d_lineIsOpen = !d_open.back().hasText;
}

void XmlWriter::declaration() {
    if (d_text.empty())
        d_text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
}

void XmlWriter::open(std::string_view name, const Attributes& attributes) {
    if (hasRoot())
        return;
    beginLine();
    d_rootSeen = true;
    d_open.push_back({nameOf(name)});
    d_text.append("<").append(d_open.back().name);
    appendAttributes(d_text, attributes, &nameOf);
    d_text += '>';
    endLine();
}

void XmlWriter::close() {
    if (d_open.empty())
        return;
    beginLine();
    d_text.append("</").append(d_open.back().name).append(">");
    d_open.pop_back();
    endLine();
}

void XmlWriter::element(std::string_view name, std::string_view text, size_t limit) {
    if (hasRoot())
        return;
    open(name);
    this->text(text, limit);
    close();
}

void XmlWriter::text(std::string_view text, size_t limit) {
    if (d_open.empty())
        return;
    d_lineIsOpen = false;
    d_open.back().hasText = true;
    if (limit == kNoLimit)
        appendEscaped(d_text, text, Whitespace::Plain);
    else
        d_text += escaped(text, limit);
}

void XmlWriter::comment(std::string_view text) {
    beginLine();
    appendComment(d_text, text);
    endLine();
}

std::string XmlWriter::finish() {
    while (!d_open.empty())
        close();
    return std::exchange(*this, {}).d_text;
}

} // namespace textmarkup
