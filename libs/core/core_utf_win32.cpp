#include "core_utf.h"

#include <windows.h>

#include <climits>
#include <utility>

namespace core {
namespace {

/// The system counts in int.
bool fits(size_t length) { return length <= static_cast<size_t>(INT_MAX); }

/// Units needed for a non-empty text; 0 when it is malformed.
int wideLength(std::string_view text) {
    return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                               static_cast<int>(text.size()), nullptr, 0);
}

int utf8Length(SystemTextView text) {
    return WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text.data(),
                               static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
}

} // namespace

bool fromUtf8(std::string_view text, SystemText& out) {
    if (text.empty()) {
        out.clear();
        return true;
    }
    const int length = fits(text.size()) ? wideLength(text) : 0;
    if (length <= 0)
        return false;
    SystemText wide(static_cast<size_t>(length), L'\0');
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                            static_cast<int>(text.size()), wide.data(), length) != length)
        return false;
    out = std::move(wide);
    return true;
}

bool toUtf8(SystemTextView text, std::string& out) {
    if (text.empty()) {
        out.clear();
        return true;
    }
    const int length = fits(text.size()) ? utf8Length(text) : 0;
    if (length <= 0)
        return false;
    std::string narrow(static_cast<size_t>(length), '\0');
    if (WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text.data(),
                            static_cast<int>(text.size()), narrow.data(), length, nullptr,
                            nullptr) != length)
        return false;
    out = std::move(narrow);
    return true;
}

bool pathFromUtf8(std::string_view path, SystemText& out) {
    return path.find('\0') == std::string_view::npos && fromUtf8(path, out);
}

} // namespace core
