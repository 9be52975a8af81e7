#include "core_utf.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace core {
namespace {

/// The well-formed sequences by first byte; only the second byte's range varies.
struct Form {
    uint8_t firstLow, firstHigh;
    uint8_t secondLow, secondHigh;
    size_t length;
};
constexpr Form kForms[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool within(char ch, uint8_t low, uint8_t high) {
    const auto byte = static_cast<uint8_t>(ch);
    return byte >= low && byte <= high;
}

/// Length of the sequence that a non-empty text begins with; 0 when it is malformed.
size_t sequenceLength(std::string_view text) {
    const auto* form =
        std::find_if(std::begin(kForms), std::end(kForms), [first = text[0]](const Form& f) {
            return within(first, f.firstLow, f.firstHigh);
        });
    if (form == std::end(kForms) || text.size() < form->length)
        return 0;
    if (form->length > 1 && !within(text[1], form->secondLow, form->secondHigh))
        return 0;
    for (size_t i = 2; i < form->length; ++i) {
        if (!within(text[i], 0x80, 0xBF))
            return 0;
    }
    return form->length;
}

} // namespace

bool isValidUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = sequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

bool fromUtf8(std::string_view text, SystemText& out) {
    if (!isValidUtf8(text))
        return false;
    out = text;
    return true;
}

bool toUtf8(SystemTextView text, std::string& out) { return fromUtf8(text, out); }

bool pathFromUtf8(std::string_view path, SystemText& out) {
    if (path.find('\0') != std::string_view::npos || !fromUtf8(path, out))
        return false;
    std::replace(out.begin(), out.end(), '\\', '/');
    return true;
}

} // namespace core
