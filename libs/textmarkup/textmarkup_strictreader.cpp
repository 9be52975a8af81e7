#include "internal/textmarkup_strictreader.h"

#include "internal/textmarkup_characters.h"

namespace textmarkup {

bool StrictReader::fail(size_t at, std::string message) {
    d_start = at;
    d_event = Event::Error;
    d_error = {positionAt(d_cursor.text(), at), std::move(message)};
    return false;
}

bool StrictReader::skipByteOrderMark() {
    const std::string_view front = d_cursor.text().substr(0, 2);
    if (front == "\xFE\xFF" || front == "\xFF\xFE" || front.find('\0') != std::string_view::npos)
        return fail(0, "the document is in UTF-16 or UTF-32, and only UTF-8 is read");
    d_cursor.skip(kByteOrderMark);
    return true;
}

bool StrictReader::fits(const Gathered& content) {
    return content.size() <= d_limits.text ||
           fail(d_start, "a text is longer than " + std::to_string(d_limits.text) + " bytes");
}

bool StrictReader::fitsOneMore(size_t depth) {
    return depth < d_limits.depth ||
           fail(d_start, "more than " + std::to_string(d_limits.depth) + " levels are open");
}

bool StrictReader::readPlain(const PlainBytes& plain, bool (*allowed)(uint32_t), Gathered& out) {
    const std::string_view text = d_cursor.text();
    size_t at = d_cursor.at();
    while (at < text.size()) {
        const auto byte = static_cast<uint8_t>(text[at]);
        if (byte < plain.size()) {
            if (!plain[byte])
                break;
            ++at;
            continue;
        }
        const Character character = characterAt(text.substr(at));
        if (!character.wellFormed)
            return fail(at, "a byte is not part of UTF-8");
        if (!allowed(character.code))
            break;
        at += character.length;
    }
    out.add(d_cursor.take(at - d_cursor.at()));
    return true;
}

std::string quoted(std::string_view text) {
    constexpr size_t kLongest = 40;
    if (text.size() <= kLongest)
        return "'" + std::string(text) + "'";
    return "'" + std::string(text.substr(0, utf::lengthWithin(kLongest, text))) + "...'";
}

} // namespace textmarkup
