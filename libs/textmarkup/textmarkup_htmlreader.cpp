#include "textmarkup_htmlreader.h"

#include "internal/textmarkup_characters.h"
#include "internal/textmarkup_htmlelements.h"
#include "internal/textmarkup_htmlreferences.h"

#include <algorithm>
#include <utility>

namespace textmarkup {
namespace {

constexpr std::string_view kBlanks = " \t\n\f\r";
constexpr size_t kLongestPiece = 8; // more than the bytes of any reference's text
constexpr size_t kNowhere = std::string_view::npos;

constexpr ReferenceIn kInText = ReferenceIn::Text;
constexpr ReferenceIn kInValue = ReferenceIn::Value;

constexpr PlainBytes plainBut(std::string_view stops) {
    PlainBytes plain{};
    for (size_t code = 1; code < plain.size(); ++code)
        plain[code] = stops.find(static_cast<char>(code)) == kNowhere;
    return plain;
}
constexpr PlainBytes kPlain = plainBut("\r");
constexpr PlainBytes kPlainBesideReferences = plainBut("&\r");
constexpr PlainBytes kPlainInNames = plainBut("ABCDEFGHIJKLMNOPQRSTUVWXYZ\r");

bool isHtmlBlank(char ch) { return kBlanks.find(ch) != kNowhere; }

} // namespace

HtmlReader::HtmlReader(std::string_view document, const Limits& limits)
    : d_cursor(document), d_limits(limits) {
    d_limits.depth = std::max(d_limits.depth, size_t{1});
    d_limits.text = std::max(d_limits.text, kLongestPiece);
    d_cursor.skip(kByteOrderMark);
}

std::string_view HtmlReader::name() const {
    const bool isElement = d_event == Event::StartElement || d_event == Event::EndElement;
    return isElement ? std::string_view(d_open.back()) : std::string_view();
}

Event HtmlReader::next() {
    d_text.clear();
    d_attributes.clear();
    if (d_event == Event::EndElement) {
        d_open.pop_back();
        d_content = HtmlContent::Markup;
    } else if (std::exchange(d_endsAtOnce, false)) {
        return end();
    }
    for (;;) {
        if (d_open.size() > d_closeTo)
            return end();
        d_closeTo = kAll;
        if (std::exchange(d_startWaits, false))
            return start();
        d_start = d_cursor.at();
        if (!d_cursor.atEnd()) {
            if (read())
                return d_event;
        } else if (d_open.empty()) {
            return d_event = Event::End;
        } else {
            d_closeTo = 0;
        }
    }
}

Event HtmlReader::start() {
    for (size_t i = 0; i < d_count; ++i)
        d_attributes.push_back({d_names[i].view(), d_values[i].view()});
    const std::string_view name = d_open.emplace_back(d_name.view());
    d_content = d_endsAtOnce ? HtmlContent::Markup : contentOf(name);
    if (dropsFirstLineFeed(name))
        skipLineEnd();
    if (d_content != HtmlContent::Markup)
        d_contentEnd = contentEnd();
    return d_event = Event::StartElement;
}

Event HtmlReader::end() { return d_event = Event::EndElement; }

bool HtmlReader::read() {
    if (d_content != HtmlContent::Markup) {
        if (d_cursor.at() < d_contentEnd)
            return readText(d_contentEnd,
                            d_content == HtmlContent::References ? &kInText : nullptr);
        readEndTag();
        return false;
    }
    return isMarkupAt(d_cursor.at()) ? readMarkup() : readText(nextMarkup(), &kInText);
}

bool HtmlReader::readText(size_t end, const ReferenceIn* place) {
    gather(end, place != nullptr ? kPlainBesideReferences : kPlain, place, d_text);
    d_event = Event::Text;
    return !d_text.empty();
}

bool HtmlReader::isMarkupAt(size_t at) const {
    const std::string_view text = d_cursor.text().substr(at);
    if (text.size() < 2 || text[0] != '<')
        return false;
    return isLetter(text[1]) || text[1] == '!' || text[1] == '?' ||
           (text[1] == '/' && text.size() > 2);
}

/// Where markup begins; looks no further than one piece of text may reach.
size_t HtmlReader::nextMarkup() const {
    const std::string_view text = d_cursor.text();
    const std::string_view piece =
        text.substr(0, d_cursor.at() + std::min(d_limits.text, text.size()));
    for (size_t at = d_cursor.at(); (at = piece.find('<', at)) != kNowhere; ++at) {
        if (isMarkupAt(at))
            return at;
    }
    return piece.size();
}

bool HtmlReader::readMarkup() {
    const std::string_view rest = d_cursor.rest();
    if (isLetter(rest[1])) {
        readStartTag();
        return false;
    }
    if (rest[1] == '/' && isLetter(rest[2])) {
        readEndTag();
        return false;
    }
    if (d_cursor.skip("</>"))
        return false;
    if (d_cursor.skip("<!--"))
        return readComment();
    constexpr std::string_view kDocumentType = "<!doctype";
    if (equalIgnoringCase(rest.substr(0, kDocumentType.size()), kDocumentType)) {
        d_cursor.take(kDocumentType.size());
        d_cursor.takeWhile(&isHtmlBlank);
        return readUntilBracket(Event::DocumentType);
    }
    d_cursor.take(rest[1] == '?' ? 1 : 2);
    return readUntilBracket(Event::Comment);
}

bool HtmlReader::readUntilBracket(Event event) {
    const size_t end = std::min(d_cursor.text().find('>', d_cursor.at()), d_cursor.text().size());
    gather(end, kPlain, nullptr, d_text);
    d_cursor.moveTo(end);
    d_cursor.take(1);
    d_event = event;
    return true;
}

bool HtmlReader::readComment() {
    d_event = Event::Comment;
    if (d_cursor.skip(">") || d_cursor.skip("->"))
        return true;
    const std::string_view rest = d_cursor.rest();
    size_t length = std::min(rest.find("-->"), rest.find("--!>"));
    size_t behind = 0;
    if (length != kNowhere) {
        behind = length + (rest[length + 2] == '>' ? 3 : 4);
    } else {
        behind = rest.size();
        length = rest.size();
        for (const std::string_view part : {"--!", "--", "-"}) {
            if (rest.ends_with(part)) {
                length -= part.size();
                break;
            }
        }
    }
    const size_t start = d_cursor.at();
    gather(start + length, kPlain, nullptr, d_text);
    d_cursor.moveTo(start + behind);
    return true;
}

void HtmlReader::readStartTag() {
    d_cursor.take(1);
    if (!readTag())
        return;
    const std::string_view name = d_name.view();
    const bool isForeign = name == "svg" || name == "math" || isIn("svg") || isIn("math");
    d_startWaits = true;
    d_endsAtOnce = isVoidElement(name) || (d_hasSlash && isForeign);
    closeBefore(name);
}

/// Ends the elements that cannot contain this one.
void HtmlReader::closeBefore(std::string_view element) {
    d_closeTo = d_limits.depth - 1;
    for (size_t i = d_open.size(); i > 0 && !shieldsBefore(d_open[i - 1], element); --i) {
        if (endsBefore(d_open[i - 1], element))
            d_closeTo = std::min(d_closeTo, i - 1);
    }
}

void HtmlReader::readEndTag() {
    d_cursor.take(2);
    if (!readTag())
        return;
    const std::string_view name = d_name.view();
    for (size_t i = d_open.size(); i > 0; --i) {
        if (d_open[i - 1] == name) {
            d_closeTo = i - 1;
            return;
        }
        if (shieldsFromEndTag(d_open[i - 1], name))
            break;
    }
    if (name == "p" || name == "br") { // browsers insert an empty element here
        d_count = 0;
        d_startWaits = true;
        d_endsAtOnce = true;
        closeBefore(name);
    }
}

/// Reads on from the name.
bool HtmlReader::readTag() {
    d_count = 0;
    const size_t end = std::min(d_cursor.text().find_first_of(" \t\n\f\r/>", d_cursor.at()),
                                d_cursor.text().size());
    gather(end, kPlainInNames, nullptr, d_name);
    d_cursor.moveTo(end);
    for (;;) {
        const std::string_view skipped =
            d_cursor.takeWhile([](char ch) { return ch == '/' || isHtmlBlank(ch); });
        d_hasSlash = skipped.ends_with('/');
        if (d_cursor.skip(">"))
            return true;
        if (d_cursor.atEnd() || !readAttribute()) {
            d_cursor.moveTo(d_cursor.text().size());
            return false;
        }
    }
}

bool HtmlReader::readAttribute() {
    const size_t end = d_cursor.text().find_first_of(" \t\n\f\r/>=", d_cursor.at() + 1);
    if (end == kNowhere)
        return false;
    if (d_names.size() == d_count) {
        d_names.emplace_back();
        d_values.emplace_back();
    }
    Gathered& name = d_names[d_count];
    Gathered& value = d_values[d_count];
    gather(end, kPlainInNames, nullptr, name);
    d_cursor.moveTo(end);
    value.clear();
    d_cursor.takeWhile(&isHtmlBlank);
    if (d_cursor.skip("=") && !readValue(value))
        return false;
    const bool isRepeated =
        std::any_of(d_names.begin(), d_names.begin() + static_cast<std::ptrdiff_t>(d_count),
                    [&](const Gathered& other) { return other.view() == name.view(); });
    if (!isRepeated && d_count < d_limits.attributes)
        ++d_count;
    return true;
}

bool HtmlReader::readValue(Gathered& value) {
    d_cursor.takeWhile(&isHtmlBlank);
    if (d_cursor.atEnd())
        return false;
    const char quote = d_cursor.peek();
    if (quote == '>')
        return true;
    const bool isQuoted = quote == '"' || quote == '\'';
    if (isQuoted)
        d_cursor.take(1);
    const size_t end = isQuoted ? d_cursor.text().find(quote, d_cursor.at())
                                : d_cursor.text().find_first_of(" \t\n\f\r>", d_cursor.at());
    if (end == kNowhere)
        return false;
    gather(end, kPlainBesideReferences, &kInValue, value);
    d_cursor.moveTo(isQuoted ? end + 1 : end);
    return true;
}

/// Where the text of the element that starts here ends: at its end tag or with the
/// document.
size_t HtmlReader::contentEnd() const {
    const std::string_view text = d_cursor.text();
    if (d_content == HtmlContent::Rest)
        return text.size();
    if (d_content == HtmlContent::Script)
        return scriptEnd();
    size_t at = text.find("</", d_cursor.at());
    while (at != kNowhere && !isTagAt(at, "</", d_open.back()))
        at = text.find("</", at + 1);
    return std::min(at, text.size());
}

/// Within a comment in a script, as in old pages, `<script` hides one `</script`.
size_t HtmlReader::scriptEnd() const {
    const std::string_view text = d_cursor.text();
    bool inComment = false;
    bool isHidden = false;
    for (size_t at = d_cursor.at(); (at = text.find_first_of("<-", at)) != kNowhere; ++at) {
        const std::string_view rest = text.substr(at);
        if (rest.starts_with("-->")) {
            inComment = isHidden = false;
        } else if (rest.starts_with("<!--") && !inComment) {
            inComment = true;
            ++at; // its hyphens may also end it
        } else if (isTagAt(at, "</", "script")) {
            if (!std::exchange(isHidden, false))
                return at;
        } else if (inComment && isTagAt(at, "<", "script")) {
            isHidden = true;
        }
    }
    return text.size();
}

bool HtmlReader::isTagAt(size_t at, std::string_view opening, std::string_view name) const {
    const std::string_view rest = d_cursor.text().substr(at);
    const size_t length = opening.size() + name.size();
    return rest.size() > length && rest.starts_with(opening) &&
           equalIgnoringCase(rest.substr(opening.size(), name.size()), name) &&
           (rest[length] == '>' || rest[length] == '/' || isHtmlBlank(rest[length]));
}

bool HtmlReader::isIn(std::string_view element) const {
    return std::ranges::find(d_open, element) != d_open.end();
}

void HtmlReader::skipLineEnd() {
    if (!d_cursor.skip("\r\n") && !d_cursor.skip("\r"))
        d_cursor.skip("\n");
}

/// Gathers up to `end`, or as much as the limit for texts allows.
void HtmlReader::gather(size_t end, const PlainBytes& plain, const ReferenceIn* place,
                        Gathered& out) {
    out.clear();
    const std::string_view text = d_cursor.text();
    size_t at = d_cursor.at();
    while (at < end && out.size() + kLongestPiece <= d_limits.text) {
        const size_t runEnd = std::min(end, at + d_limits.text - out.size());
        size_t run = at;
        while (run < runEnd) {
            const auto byte = static_cast<uint8_t>(text[run]);
            const bool isAscii = byte < plain.size();
            if (isAscii && !plain[byte])
                break;
            const Character character =
                isAscii ? Character{byte, 1, true} : characterAt(text.substr(run));
            if (!character.wellFormed || run + character.length > runEnd)
                break;
            run += character.length;
        }
        out.add(text.substr(at, run - at));
        at = run;
        if (at < end && out.size() + kLongestPiece <= d_limits.text)
            at += gatherOther(text.substr(at), place, out);
    }
    d_cursor.moveTo(at);
}

/// Gathers a character that does not stand for itself, and returns its length.
size_t HtmlReader::gatherOther(std::string_view rest, const ReferenceIn* place, Gathered& out) {
    const Character character = characterAt(rest);
    if (!character.wellFormed || character.code == 0) {
        out.addDecoded(kReplacement);
    } else if (rest[0] == '\r') {
        if (!rest.substr(1).starts_with('\n'))
            out.addDecoded("\n");
    } else if (rest[0] == '&' && place != nullptr) {
        std::string decoded;
        if (const size_t length = decodeReference(rest, *place, decoded); length > 0) {
            out.addDecoded(decoded);
            return length;
        }
        out.add(rest.substr(0, 1));
    } else if (isUpper(rest[0])) {
        out.addCharacter(static_cast<uint8_t>(toLower(rest[0])));
    } else {
        out.add(rest.substr(0, character.length));
    }
    return character.length;
}

} // namespace textmarkup
