#include "core_utf.h"

#include <algorithm>

namespace core {

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
