#include "textmarkup_escape.h"

#include "internal/textmarkup_characters.h"

#include <algorithm>
#include <array>
#include <vector>

namespace textmarkup {
namespace {

constexpr std::string_view kCut = "...";

/// Whether a byte stands for itself in content and values.
constexpr auto kPlain = [] {
    std::array<bool, 256> plain{};
    for (size_t code = ' '; code < 0x80; ++code)
        plain[code] =
            std::string_view("&<>'\"").find(static_cast<char>(code)) == std::string_view::npos;
    return plain;
}();

/// How many bytes at the front of `text` stand for themselves.
size_t plainLength(std::string_view text) {
    const auto* const end =
        std::ranges::find_if_not(text, [](char ch) { return kPlain[static_cast<uint8_t>(ch)]; });
    return static_cast<size_t>(end - text.begin());
}

/// The replacement of the character that `source` holds.
std::string_view markupOf(const Character& character, std::string_view source,
                          Whitespace whitespace) {
    if (!character.wellFormed || !isXmlCharacter(character.code))
        return kReplacement;
    switch (character.code) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\'':
        return "&apos;";
    case '"':
        return "&quot;";
    case '\r':
        return whitespace == Whitespace::Plain ? source : "&#13;";
    case '\n':
        return whitespace == Whitespace::KeepAllInValues ? "&#10;" : source;
    case '\t':
        return whitespace == Whitespace::KeepAllInValues ? "&#9;" : source;
    default:
        return source;
    }
}

/// Cuts an escaped text so that the mark, which follows, has room.
std::string escapedAndCut(std::string_view text, size_t limit) {
    std::string out;
    size_t cutAt = 0; // the last place where the mark has room
    while (!text.empty() && out.size() <= limit) {
        if (limit - out.size() >= kCut.size())
            cutAt = out.size();
        const Character character = characterAt(text);
        out += markupOf(character, text.substr(0, character.length), Whitespace::Plain);
        text.remove_prefix(character.length);
    }
    out.resize(cutAt);
    return limit < kCut.size() ? out : out.append(kCut);
}

} // namespace

void appendEscaped(std::string& out, std::string_view text, Whitespace whitespace) {
    while (!text.empty()) {
        const size_t plain = plainLength(text);
        out.append(text, 0, plain);
        text.remove_prefix(plain);
        if (text.empty())
            return;
        const Character character = characterAt(text);
        out += markupOf(character, text.substr(0, character.length), whitespace);
        text.remove_prefix(character.length);
    }
}

std::string escaped(std::string_view text, size_t limit) {
    if (text.size() > limit) // escaping makes nothing shorter
        return escapedAndCut(text, limit);
    std::string whole;
    appendEscaped(whole, text, Whitespace::Plain);
    return whole.size() <= limit ? whole : escapedAndCut(text, limit);
}

void appendAttributes(std::string& out, const Attributes& attributes,
                      std::string (*nameOf)(std::string_view)) {
    std::vector<std::string> names;
    for (const Attribute& attribute : attributes) {
        std::string name = nameOf(attribute.name);
        if (std::ranges::find(names, name) != names.end())
            continue;
        out.append(" ").append(name).append("=\"");
        appendEscaped(out, attribute.value, Whitespace::KeepAllInValues);
        out += '"';
        names.push_back(std::move(name));
    }
}

void appendComment(std::string& out, std::string_view text) {
    out += "<!-- ";
    while (!text.empty()) {
        const Character character = characterAt(text);
        const bool allowed = character.wellFormed && isXmlCharacter(character.code);
        out += allowed ? text.substr(0, character.length) : kReplacement;
        text.remove_prefix(character.length);
        if (character.code == '-' && text.starts_with('-'))
            out += ' ';
    }
    out += " -->";
}

} // namespace textmarkup
