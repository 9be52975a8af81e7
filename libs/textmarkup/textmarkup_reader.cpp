#include "textmarkup_reader.h"

#include "internal/textmarkup_characters.h"

namespace textmarkup {

Position positionAt(std::string_view text, size_t offset) {
    Position position;
    const size_t end = offset < text.size() ? offset : text.size();
    for (size_t at = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0; at < end;) {
        const char ch = text[at];
        at += characterAt(text.substr(at)).length;
        if (ch == '\n' || (ch == '\r' && !text.substr(at).starts_with('\n')))
            position = {position.line + 1, 1};
        else
            ++position.column;
    }
    return position;
}

std::string Error::text() const {
    return "line " + std::to_string(position.line) + ", column " + std::to_string(position.column) +
           ": " + message;
}

} // namespace textmarkup
