#include "core_utf.h"
#include "internal/core_filelog_system.h"

#include <windows.h>

#include <cerrno>
#include <io.h>

namespace core::detail {

uint64_t systemThreadId() { return GetCurrentThreadId(); }

uint64_t fileSize(FILE* file) {
    const int64_t size = _filelengthi64(_fileno(file));
    return size >= 0 ? static_cast<uint64_t>(size) : 0;
}

// The system does not let an open file be moved.
bool isFileAt(FILE*, const std::string&) { return true; }

bool renameLog(const std::string& from, const std::string& to) {
    std::wstring source;
    std::wstring target;
    if (pathFromUtf8(from, source) && pathFromUtf8(to, target) &&
        MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) != 0)
        return true;
    errno = EACCES; // the usual reason
    return false;
}

} // namespace core::detail
