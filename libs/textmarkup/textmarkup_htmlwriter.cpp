#include "textmarkup_htmlwriter.h"

#include "internal/textmarkup_characters.h"
#include "internal/textmarkup_htmlelements.h"
#include "textmarkup_escape.h"

#include <utility>

namespace textmarkup {
namespace {

bool isNameCharacter(char ch) {
    return isLetter(ch) || isDigit(ch) ||
           std::string_view("-_.:").find(ch) != std::string_view::npos;
}

std::string nameOf(std::string_view text) {
    std::string name;
    if (text.empty() || !isLetter(text[0]))
        name += 'x';
    for (const char ch : text)
        name += isNameCharacter(ch) ? toLower(ch) : '_';
    return name;
}

bool startsWith(std::string_view text, std::string_view lowerCase) {
    return equalIgnoringCase(text.substr(0, lowerCase.size()), lowerCase);
}

/// Whether `code` at this place would end the raw text of an element, or begin a comment.
bool breaksOut(std::string_view code, const std::string& element) {
    return startsWith(code, "</" + element) || startsWith(code, "<!--") ||
           startsWith(code, "<script");
}

void appendRawText(std::string& out, std::string_view code, const std::string& element) {
    while (!code.empty()) {
        const Character character = characterAt(code);
        const bool allowed = character.wellFormed && isXmlCharacter(character.code);
        out += allowed ? code.substr(0, character.length) : kReplacement;
        if (character.code == '<' && breaksOut(code, element))
            out += '\\';
        code.remove_prefix(character.length);
    }
}

} // namespace

void HtmlWriter::doctype() {
    if (d_text.empty())
        d_text = "<!DOCTYPE html>\n";
}

void HtmlWriter::open(std::string_view name, const Attributes& attributes) {
    std::string element = nameOf(name);
    d_text.append("<").append(element);
    appendAttributes(d_text, attributes, &nameOf);
    d_text += '>';
    if (dropsFirstLineFeed(element))
        d_text += '\n';
    if (!isVoidElement(element))
        d_open.push_back(std::move(element));
}

void HtmlWriter::close() {
    if (d_open.empty())
        return;
    d_text.append("</").append(d_open.back()).append(">");
    d_open.pop_back();
}

void HtmlWriter::element(std::string_view name, std::string_view text,
                         const Attributes& attributes) {
    const size_t depth = d_open.size();
    open(name, attributes);
    if (d_open.size() == depth)
        return;
    this->text(text);
    close();
}

void HtmlWriter::text(std::string_view text) {
    const HtmlContent content = d_open.empty() ? HtmlContent::Markup : contentOf(d_open.back());
    if (content == HtmlContent::Raw || content == HtmlContent::Script)
        appendRawText(d_text, text, d_open.back());
    else
        appendEscaped(d_text, text, Whitespace::KeepReturns);
}

void HtmlWriter::comment(std::string_view text) { appendComment(d_text, text); }

std::string HtmlWriter::finish() {
    while (!d_open.empty())
        close();
    return std::exchange(*this, {}).d_text;
}

} // namespace textmarkup
