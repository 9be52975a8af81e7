#include "textmarkup_xmlreader.h"

#include "internal/textmarkup_characters.h"

#include <algorithm>

namespace textmarkup {
namespace {

/// The allowed ASCII characters except `stops`.
constexpr PlainBytes plainBut(std::string_view stops) {
    PlainBytes plain{};
    for (size_t code = 0; code < plain.size(); ++code) {
        const char ch = static_cast<char>(code);
        plain[code] = (code >= ' ' || isBlank(ch)) && stops.find(ch) == std::string_view::npos;
    }
    return plain;
}
constexpr PlainBytes kPlainContent = plainBut("<&]\r");
constexpr PlainBytes kPlainValue = plainBut("<&\"'\t\n\r");
constexpr PlainBytes kPlainMarkup = plainBut("-?]\r");

constexpr std::string_view kCData = "<![CDATA[";

bool isVersion(std::string_view text) {
    return text.size() > 2 && text.starts_with("1.") &&
           std::ranges::all_of(text.substr(2), isDigit);
}

/// The character of one of the five entities; empty for any other name.
std::string_view entity(std::string_view name) {
    struct Entity {
        std::string_view name;
        std::string_view text;
    };
    constexpr Entity kEntities[] = {
        {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"apos", "'"}, {"quot", "\""}};
    const auto* const found = std::ranges::find(kEntities, name, &Entity::name);
    return found == std::end(kEntities) ? std::string_view() : found->text;
}

/// The number of a character reference, without "&#" and ";"; 0 if it is invalid.
uint32_t referenced(std::string_view digits) {
    const bool isHex = digits.starts_with('x');
    const uint32_t base = isHex ? 16 : 10;
    uint32_t code = 0;
    for (const char ch : digits.substr(isHex ? 1 : 0)) {
        const int digit = hexValue(ch);
        if (digit < 0 || static_cast<uint32_t>(digit) >= base)
            return 0;
        code = std::min(code * base + static_cast<uint32_t>(digit), kLastCharacter + 1);
    }
    return code;
}

} // namespace

XmlReader::XmlReader(std::string_view document, const Limits& limits)
    : StrictReader(document, limits) {}

Event XmlReader::next() {
    if (isOver())
        return d_event;
    if (d_event == Event::EndElement)
        d_open.pop_back();
    d_start = d_cursor.at();
    if (d_endsAtOnce) {
        d_endsAtOnce = false;
        return d_event = Event::EndElement;
    }
    if (d_begun || begin())
        d_open.empty() ? readOutside() : readInside();
    return d_event;
}

bool XmlReader::readText(std::string& out) {
    out.clear();
    const size_t depth = d_open.size();
    for (;;) {
        const Event event = next();
        if (event == Event::Error || event == Event::End)
            return false;
        if (event == Event::Text && d_open.size() == depth)
            out += text();
        if (event == Event::EndElement && d_open.size() == depth)
            return true;
    }
}

bool XmlReader::begin() {
    d_begun = true;
    if (!skipByteOrderMark())
        return false;
    constexpr std::string_view kDeclaration = "<?xml";
    const std::string_view text = d_cursor.rest();
    if (!text.starts_with(kDeclaration) || text.size() == kDeclaration.size() ||
        !isBlank(text[kDeclaration.size()]))
        return true;
    d_cursor.take(kDeclaration.size());
    return readDeclaration();
}

bool XmlReader::readDeclaration() {
    const std::string_view version = readPseudoAttribute("version");
    if (!isVersion(version))
        return failHere("the XML declaration does not begin with a version 1.x");
    const std::string_view encoding = readPseudoAttribute("encoding");
    if (!encoding.empty() && !equalIgnoringCase(encoding, "utf-8"))
        return failHere("the document is in " + quoted(encoding) + ", only UTF-8 is read");
    const std::string_view standalone = readPseudoAttribute("standalone");
    if (!standalone.empty() && standalone != "yes" && standalone != "no")
        return failHere("'standalone' is neither 'yes' nor 'no'");
    skipBlanks();
    return d_cursor.skip("?>") || failHere("the XML declaration is malformed");
}

/// Its value. Empty, with nothing read, if it does not come next.
std::string_view XmlReader::readPseudoAttribute(std::string_view name) {
    const size_t start = d_cursor.at();
    if (skipBlanks() && d_cursor.skip(name)) {
        skipBlanks();
        const bool hasValue = d_cursor.skip("=");
        skipBlanks();
        if (hasValue && (d_cursor.stands("'") || d_cursor.stands("\""))) {
            const char quote = d_cursor.take(1)[0];
            const std::string_view value =
                d_cursor.takeWhile([quote](char ch) { return ch != quote; });
            if (!d_cursor.take(1).empty())
                return value;
        }
    }
    d_cursor.moveTo(start);
    return {};
}

bool XmlReader::readOutside() {
    skipBlanks();
    d_start = d_cursor.at();
    if (d_cursor.atEnd()) {
        d_event = Event::End;
        return d_rootSeen || failHere("the document has no element");
    }
    if (!d_cursor.stands("<"))
        return failHere("text outside the root element");
    return readMarkup();
}

bool XmlReader::readInside() {
    for (;;) {
        d_start = d_cursor.at();
        if (d_cursor.atEnd())
            return failHere("the document ends within the element " + quoted(d_open.back()));
        if (d_cursor.stands("<") && !d_cursor.stands(kCData))
            return readMarkup();
        if (!readCharacterData())
            return false;
        if (!d_content.empty()) {
            d_event = Event::Text;
            return true;
        }
    }
}

bool XmlReader::readMarkup() {
    if (d_cursor.stands("</"))
        return readEndTag();
    if (d_cursor.skip("<!--"))
        return readComment();
    if (d_cursor.skip("<?"))
        return readInstruction();
    if (d_cursor.stands("<!DOCTYPE"))
        return failHere("the document has a document type, and such are not read");
    if (d_cursor.stands("<!"))
        return failHere("'<!' begins neither a comment nor a CDATA section");
    return readStartTag();
}

bool XmlReader::readStartTag() {
    if (d_open.empty() && d_rootSeen)
        return failHere("a second element follows the root element");
    if (!fitsOneMore(d_open.size()))
        return false;
    d_cursor.take(1);
    d_name = readName();
    if (d_name.empty())
        return fail(d_start, "'<' begins no tag");
    d_attributes.clear();
    while (skipBlanks() && !d_cursor.atEnd() && !d_cursor.stands(">") && !d_cursor.stands("/")) {
        if (!readAttribute())
            return false;
    }
    return endStartTag();
}

bool XmlReader::endStartTag() {
    d_endsAtOnce = d_cursor.skip("/");
    if (!d_cursor.skip(">"))
        return failHere("the tag " + quoted(d_name) + " is malformed here");
    for (size_t i = 0; i < d_attributes.size(); ++i)
        d_attributes[i].value = d_values[i].view();
    d_rootSeen = true;
    d_open.push_back(d_name);
    d_event = Event::StartElement;
    return true;
}

bool XmlReader::readAttribute() {
    const size_t start = d_cursor.at();
    const std::string_view name = readName();
    if (name.empty())
        return failHere("the tag " + quoted(d_name) + " is malformed here");
    if (Attributes(d_attributes).find(name))
        return fail(start, "the attribute " + quoted(name) + " is there twice");
    if (d_attributes.size() == d_limits.attributes)
        return fail(start, "the element " + quoted(d_name) + " has more than " +
                               std::to_string(d_limits.attributes) + " attributes");
    skipBlanks();
    if (!d_cursor.skip("="))
        return failHere("the attribute " + quoted(name) + " has no '='");
    skipBlanks();
    d_attributes.push_back({name, {}});
    if (d_values.size() < d_attributes.size())
        d_values.emplace_back();
    return readValue(d_values[d_attributes.size() - 1]);
}

bool XmlReader::readValue(Gathered& value) {
    value.clear();
    if (!d_cursor.stands("\"") && !d_cursor.stands("'"))
        return failHere("the attribute " + quoted(d_attributes.back().name) +
                        " has no value in quotes");
    const std::string_view quote = d_cursor.take(1);
    while (readCharacters(kPlainValue, value) && fits(value)) {
        if (d_cursor.atEnd() || d_cursor.stands("<"))
            return failHere("the value of " + quoted(d_attributes.back().name) +
                            " has no closing quote");
        if (d_cursor.skip(quote))
            return true;
        if (d_cursor.stands("&")) {
            if (!readReference(value))
                return false;
        } else if (const std::string_view taken = d_cursor.take(1); !isBlank(taken[0])) {
            value.add(taken); // the other quote
        } else if (taken != "\r" || !d_cursor.stands("\n")) {
            value.addDecoded(" ");
        }
    }
    return false;
}

bool XmlReader::readEndTag() {
    d_cursor.take(2);
    d_name = readName();
    if (d_open.empty())
        return fail(d_start, "an element is closed that was not opened");
    if (d_name != d_open.back())
        return fail(d_start,
                    "the element " + quoted(d_open.back()) + " is closed as " + quoted(d_name));
    skipBlanks();
    d_event = Event::EndElement;
    return d_cursor.skip(">") || failHere("the end tag " + quoted(d_name) + " is malformed here");
}

bool XmlReader::readComment() {
    d_content.clear();
    if (!readUntil("--", "a comment"))
        return false;
    d_event = Event::Comment;
    return d_cursor.skip(">") || fail(d_cursor.at() - 2, "'--' within a comment");
}

bool XmlReader::readInstruction() {
    d_name = readName();
    if (d_name.empty())
        return failHere("a processing instruction has no target");
    if (equalIgnoringCase(d_name, "xml"))
        return fail(d_start, "an XML declaration that is not at the very beginning");
    if (!skipBlanks() && !d_cursor.stands("?>"))
        return failHere("the target of a processing instruction is malformed here");
    d_content.clear();
    d_event = Event::Instruction;
    return readUntil("?>", "a processing instruction");
}

/// Adds the content of a comment, an instruction or a CDATA section, and moves past its
/// end.
bool XmlReader::readUntil(std::string_view end, const char* what) {
    while (readCharacters(kPlainMarkup, d_content) && fits(d_content)) {
        if (d_cursor.skip(end))
            return true;
        if (d_cursor.atEnd())
            return fail(d_start, std::string(what) + " does not end");
        if (d_cursor.stands("\r"))
            readLineEnd(d_content);
        else
            d_content.add(d_cursor.take(1));
    }
    return false;
}

bool XmlReader::readCharacterData() {
    d_content.clear();
    while (readCharacters(kPlainContent, d_content) && fits(d_content)) {
        if (d_cursor.stands("]]>"))
            return failHere("']]>' in a text");
        if (d_cursor.skip(kCData)) {
            if (!readUntil("]]>", "a CDATA section"))
                return false;
        } else if (d_cursor.atEnd() || d_cursor.stands("<")) {
            return true;
        } else if (d_cursor.stands("&")) {
            if (!readReference(d_content))
                return false;
        } else if (d_cursor.stands("\r")) {
            readLineEnd(d_content);
        } else {
            d_content.add(d_cursor.take(1));
        }
    }
    return false;
}

bool XmlReader::readReference(Gathered& out) {
    const size_t start = d_cursor.at();
    d_cursor.take(1);
    const bool isNumber = d_cursor.skip("#");
    const std::string_view what = d_cursor.takeWhile(
        [](char ch) { return std::string_view(";&<\"' \n").find(ch) == std::string_view::npos; });
    if (!d_cursor.skip(";"))
        return fail(start, "'&' begins no reference that ends in ';'");
    if (!isNumber) {
        const std::string_view text = entity(what);
        out.addDecoded(text);
        return !text.empty() || fail(start, "the entity " + quoted(what) + " is not known");
    }
    const uint32_t code = referenced(what);
    if (!isXmlCharacter(code))
        return fail(start,
                    quoted("&#" + std::string(what) + ";") + " is not a character that XML allows");
    out.addCharacter(code);
    return true;
}

/// Gathers characters that stand for themselves; one that XML does not allow is an error.
bool XmlReader::readCharacters(const PlainBytes& plain, Gathered& out) {
    if (!readPlain(plain, &isXmlCharacter, out))
        return false;
    return d_cursor.atEnd() || isXmlCharacter(characterAt(d_cursor.rest()).code) ||
           fail(d_cursor.at(), "a character that XML does not allow");
}

/// Empty if no name comes next.
std::string_view XmlReader::readName() {
    const std::string_view text = d_cursor.rest();
    size_t length = 0;
    while (length < text.size()) {
        const Character character = characterAt(text.substr(length));
        const bool fits =
            character.wellFormed &&
            (length == 0 ? isXmlNameStart(character.code) : isXmlNameCharacter(character.code));
        if (!fits)
            break;
        length += character.length;
    }
    return d_cursor.take(length);
}

void XmlReader::readLineEnd(Gathered& out) {
    d_cursor.take(1);
    if (!d_cursor.stands("\n"))
        out.addDecoded("\n");
}

bool XmlReader::skipBlanks() { return !d_cursor.takeWhile(&isBlank).empty(); }

} // namespace textmarkup
