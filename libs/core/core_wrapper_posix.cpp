#include "internal/core_wrapper_system.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace core {
namespace {

/// The path in the thread's file-name mode; without conversion its bytes stay, but '\'
/// separates folders in both modes.
bool systemPath(const std::string& path, std::string& out) {
    if (Wrapper::wideFileNames()) {
        if (Wrapper::pathFromUtf8(path, out))
            return true;
        errno = EILSEQ;
        return false;
    }
    out = path;
    std::replace(out.begin(), out.end(), '\\', '/');
    return true;
}

} // namespace

std::string Wrapper::executablePath(size_t limit) {
    std::string path(limit, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? static_cast<size_t>(length) : 0);
    return path;
}

std::string Wrapper::systemErrorText(uint32_t code) {
    return runtimeErrorText(static_cast<int>(code));
}

const char* const detail::kNotInheritedMode = "e";

FILE* detail::openFile(const SystemText& path, const SystemText& mode) {
    struct stat status {};
    if (mode.starts_with('r') && ::stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode)) {
        errno = ENOTSUP;
        return nullptr;
    }
    return std::fopen(path.c_str(), mode.c_str());
}

int Wrapper::System::remove(const std::string& path) const {
    std::string name;
    return systemPath(path, name) ? ::unlink(name.c_str()) : -1;
}

int Wrapper::System::makeWritable(const std::string& path) const {
    std::string name;
    return systemPath(path, name) ? ::chmod(name.c_str(), S_IRUSR | S_IWUSR) : -1;
}

} // namespace core
