#include "textmarkup_xmlreader.h"

#include "textmarkup_characters.h"

#include <algorithm>

namespace textmarkup {
namespace {

constexpr bool isBlank(char ch) { return ch == ' ' || ch == '\n' || ch == '\t' || ch == '\r'; }

/// The allowed ASCII characters but `stops`.
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

/// For messages, which stay short.
std::string quoted(std::string_view text) {
    constexpr size_t kLongest = 40;
    if (text.size() <= kLongest)
        return "'" + std::string(text) + "'";
    size_t length = kLongest;
    while ((static_cast<uint8_t>(text[length]) & 0xC0) == 0x80)
        --length;
    return "'" + std::string(text.substr(0, length)) + "...'";
}

bool isVersion(std::string_view text) {
    return text.size() > 2 && text.starts_with("1.") &&
           std::ranges::all_of(text.substr(2), isDigit);
}

/// What one of the five entities stands for; empty for another name.
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

/// The number of a character reference, without "&#" and ";"; 0 for what is none.
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
    : d_document(document), d_limits(limits) {}

Event XmlReader::next() {
    if (d_event == Event::Error || (d_event == Event::End && d_begun))
        return d_event;
    if (d_event == Event::EndElement)
        d_open.pop_back();
    d_start = d_at;
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

bool XmlReader::fail(size_t at, std::string message) {
    d_start = at;
    d_event = Event::Error;
    d_error = {positionAt(d_document, at), std::move(message)};
    return false;
}

bool XmlReader::begin() {
    d_begun = true;
    const std::string_view front = d_document.substr(0, 2);
    if (front == "\xFE\xFF" || front == "\xFF\xFE" || front.find('\0') != std::string_view::npos)
        return fail(0, "the document is in UTF-16 or UTF-32, of which only UTF-8 is read");
    skip(kByteOrderMark);
    const std::string_view text = rest();
    constexpr std::string_view kDeclaration = "<?xml";
    if (text.starts_with(kDeclaration) && text.size() > kDeclaration.size() &&
        isBlank(text[kDeclaration.size()])) {
        d_at += kDeclaration.size();
        return readDeclaration();
    }
    return true;
}

bool XmlReader::readDeclaration() {
    const std::string_view version = readPseudoAttribute("version");
    if (!isVersion(version))
        return fail(d_at, "the XML declaration does not begin with a version 1.x");
    const std::string_view encoding = readPseudoAttribute("encoding");
    if (!encoding.empty() && !equalIgnoringCase(encoding, "utf-8"))
        return fail(d_at, "the document is in " + quoted(encoding) + ", only UTF-8 is read");
    const std::string_view standalone = readPseudoAttribute("standalone");
    if (!standalone.empty() && standalone != "yes" && standalone != "no")
        return fail(d_at, "'standalone' is neither 'yes' nor 'no'");
    skipBlanks();
    return skip("?>") || fail(d_at, "the XML declaration is malformed");
}

/// Its value; empty, with nothing read, when it does not stand here.
std::string_view XmlReader::readPseudoAttribute(std::string_view name) {
    const size_t start = d_at;
    if (skipBlanks() && skip(name)) {
        skipBlanks();
        const bool hasValue = skip("=");
        skipBlanks();
        const size_t quote = d_at;
        const size_t end = hasValue && (stands("'") || stands("\""))
                               ? d_document.find(d_document[quote], quote + 1)
                               : std::string_view::npos;
        if (end != std::string_view::npos) {
            d_at = end + 1;
            return d_document.substr(quote + 1, end - quote - 1);
        }
    }
    d_at = start;
    return {};
}

bool XmlReader::readOutside() {
    skipBlanks();
    d_start = d_at;
    if (atEnd()) {
        d_event = Event::End;
        return d_rootSeen || fail(d_at, "the document has no element");
    }
    if (!stands("<"))
        return fail(d_at, "text stands outside the root element");
    return readMarkup();
}

bool XmlReader::readInside() {
    for (;;) {
        d_start = d_at;
        if (atEnd())
            return fail(d_at, "the document ends within the element " + quoted(d_open.back()));
        if (stands("<") && !stands(kCData))
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
    if (stands("</"))
        return readEndTag();
    if (skip("<!--"))
        return readComment();
    if (skip("<?"))
        return readInstruction();
    if (stands("<!DOCTYPE"))
        return fail(d_at, "the document has a document type, and such are not read");
    if (stands("<!"))
        return fail(d_at, "'<!' begins neither a comment nor a CDATA section");
    return readStartTag();
}

bool XmlReader::readStartTag() {
    if (d_open.empty() && d_rootSeen)
        return fail(d_at, "a second element follows the root element");
    if (d_open.size() == d_limits.depth)
        return fail(d_at, "more than " + std::to_string(d_limits.depth) +
                              " elements are open in one another");
    ++d_at;
    d_name = readName();
    if (d_name.empty())
        return fail(d_start, "'<' begins no tag");
    d_attributes.clear();
    while (skipBlanks() && !atEnd() && !stands(">") && !stands("/")) {
        if (!readAttribute())
            return false;
    }
    return endStartTag();
}

bool XmlReader::endStartTag() {
    d_endsAtOnce = skip("/");
    if (!skip(">"))
        return fail(d_at, "the tag " + quoted(d_name) + " is malformed here");
    for (size_t i = 0; i < d_attributes.size(); ++i)
        d_attributes[i].value = d_values[i].view();
    d_rootSeen = true;
    d_open.push_back(d_name);
    d_event = Event::StartElement;
    return true;
}

bool XmlReader::readAttribute() {
    const size_t start = d_at;
    const std::string_view name = readName();
    if (name.empty())
        return fail(d_at, "the tag " + quoted(d_name) + " is malformed here");
    if (Attributes(d_attributes).find(name))
        return fail(start, "the attribute " + quoted(name) + " is there twice");
    if (d_attributes.size() == d_limits.attributes)
        return fail(start, "the element " + quoted(d_name) + " has more than " +
                               std::to_string(d_limits.attributes) + " attributes");
    skipBlanks();
    if (!skip("="))
        return fail(d_at, "the attribute " + quoted(name) + " has no '='");
    skipBlanks();
    d_attributes.push_back({name, {}});
    if (d_values.size() < d_attributes.size())
        d_values.emplace_back();
    return readValue(d_values[d_attributes.size() - 1]);
}

bool XmlReader::readValue(Gathered& value) {
    value.clear();
    if (!stands("\"") && !stands("'"))
        return fail(d_at, "the attribute " + quoted(d_attributes.back().name) +
                              " has no value in quotes");
    const char quote = d_document[d_at++];
    while (readPlain(kPlainValue, value) && fits(value)) {
        if (atEnd() || stands("<"))
            return fail(d_at, "the value of " + quoted(d_attributes.back().name) +
                                  " has no closing quote");
        const char ch = d_document[d_at];
        if (ch == '&') {
            if (!readReference(value))
                return false;
            continue;
        }
        ++d_at;
        if (ch == quote)
            return true;
        if (ch == '"' || ch == '\'')
            value.add(d_document.substr(d_at - 1, 1));
        else if (ch != '\r' || !stands("\n"))
            value.addDecoded(" ");
    }
    return false;
}

bool XmlReader::readEndTag() {
    d_at += 2;
    d_name = readName();
    if (d_open.empty())
        return fail(d_start, "an element is closed that was not opened");
    if (d_name != d_open.back())
        return fail(d_start,
                    "the element " + quoted(d_open.back()) + " is closed as " + quoted(d_name));
    skipBlanks();
    d_event = Event::EndElement;
    return skip(">") || fail(d_at, "the end tag " + quoted(d_name) + " is malformed here");
}

bool XmlReader::readComment() {
    d_content.clear();
    if (!readUntil("--", "a comment"))
        return false;
    d_event = Event::Comment;
    return skip(">") || fail(d_at - 2, "'--' stands within a comment");
}

bool XmlReader::readInstruction() {
    d_name = readName();
    if (d_name.empty())
        return fail(d_at, "a processing instruction has no target");
    if (equalIgnoringCase(d_name, "xml"))
        return fail(d_start, "an XML declaration stands only at the very beginning");
    if (!skipBlanks() && !stands("?>"))
        return fail(d_at, "the target of a processing instruction is malformed here");
    d_content.clear();
    d_event = Event::Instruction;
    return readUntil("?>", "a processing instruction");
}

/// Adds the content of a comment, an instruction or a CDATA section, up to behind its end.
bool XmlReader::readUntil(std::string_view end, const char* what) {
    while (readPlain(kPlainMarkup, d_content) && fits(d_content)) {
        if (skip(end))
            return true;
        if (atEnd())
            return fail(d_start, std::string(what) + " does not end");
        if (stands("\r"))
            readLineEnd(d_content);
        else
            d_content.add(d_document.substr(d_at++, 1));
    }
    return false;
}

bool XmlReader::readCharacterData() {
    d_content.clear();
    while (readPlain(kPlainContent, d_content) && fits(d_content)) {
        if (stands("]]>"))
            return fail(d_at, "']]>' stands in a text");
        if (skip(kCData)) {
            if (!readUntil("]]>", "a CDATA section"))
                return false;
        } else if (atEnd() || stands("<")) {
            return true;
        } else if (stands("&")) {
            if (!readReference(d_content))
                return false;
        } else if (stands("\r")) {
            readLineEnd(d_content);
        } else {
            d_content.add(d_document.substr(d_at++, 1));
        }
    }
    return false;
}

bool XmlReader::readReference(Gathered& out) {
    const size_t start = d_at++;
    const bool isNumber = skip("#");
    const size_t end = d_document.find_first_of(";&<\"' \n", d_at);
    if (end == std::string_view::npos || d_document[end] != ';')
        return fail(start, "'&' begins no reference that ends in ';'");
    const std::string_view what = d_document.substr(d_at, end - d_at);
    d_at = end + 1;
    if (!isNumber) {
        const std::string_view text = entity(what);
        out.addDecoded(text);
        return !text.empty() || fail(start, "the entity " + quoted(what) + " is not known");
    }
    const uint32_t code = referenced(what);
    if (!isXmlCharacter(code))
        return fail(start,
                    quoted("&#" + std::string(what) + ";") + " is no character that XML allows");
    out.addCharacter(code);
    return true;
}

/// All that stands for itself, up to a byte that `plain` does not hold.
bool XmlReader::readPlain(const PlainBytes& plain, Gathered& out) {
    const size_t start = d_at;
    while (d_at < d_document.size()) {
        const auto byte = static_cast<uint8_t>(d_document[d_at]);
        if (byte < plain.size()) {
            if (!plain[byte])
                break;
            ++d_at;
            continue;
        }
        const Character character = characterAt(rest());
        if (!character.wellFormed)
            return fail(d_at, "a byte is not part of UTF-8");
        if (!isXmlCharacter(character.code))
            break;
        d_at += character.length;
    }
    out.add(d_document.substr(start, d_at - start));
    if (!atEnd() && !isXmlCharacter(characterAt(rest()).code))
        return fail(d_at, "a character stands here that XML does not allow");
    return true;
}

bool XmlReader::fits(const Gathered& content) {
    return content.size() <= d_limits.text ||
           fail(d_start, "a text is longer than " + std::to_string(d_limits.text) + " bytes");
}

/// Empty when no name stands here.
std::string_view XmlReader::readName() {
    const size_t start = d_at;
    while (!atEnd()) {
        const Character character = characterAt(rest());
        if (!character.wellFormed ||
            !(d_at == start ? isXmlNameStart(character.code) : isXmlNameCharacter(character.code)))
            break;
        d_at += character.length;
    }
    return d_document.substr(start, d_at - start);
}

void XmlReader::readLineEnd(Gathered& out) {
    ++d_at;
    if (!stands("\n"))
        out.addDecoded("\n");
}

bool XmlReader::skipBlanks() {
    const size_t start = d_at;
    while (!atEnd() && isBlank(d_document[d_at]))
        ++d_at;
    return d_at > start;
}

bool XmlReader::skip(std::string_view what) {
    const bool there = stands(what);
    if (there)
        d_at += what.size();
    return there;
}

} // namespace textmarkup
