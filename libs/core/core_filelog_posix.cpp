#include "core_utf.h"
#include "internal/core_filelog_system.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace core::detail {

uint64_t systemThreadId() { return static_cast<uint64_t>(syscall(SYS_gettid)); }

uint64_t fileSize(FILE* file) {
    struct stat status {};
    return fstat(fileno(file), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

bool isFileAt(FILE* file, const std::string& path) {
    std::string name;
    struct stat open {};
    struct stat there {};
    return pathFromUtf8(path, name) && fstat(fileno(file), &open) == 0 &&
           stat(name.c_str(), &there) == 0 && open.st_dev == there.st_dev &&
           open.st_ino == there.st_ino;
}

bool renameLog(const std::string& from, const std::string& to) {
    std::string source;
    std::string target;
    return pathFromUtf8(from, source) && pathFromUtf8(to, target) &&
           std::rename(source.c_str(), target.c_str()) == 0;
}

} // namespace core::detail
