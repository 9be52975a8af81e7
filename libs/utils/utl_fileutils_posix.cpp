#include "core_utf.h"
#include "core_wrapper.h"
#include "internal/utl_fileutils_system.h"
#include "utf_character.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace utl::detail {
namespace {

constexpr char kTempSuffix[] = ".tmp";

bool failed(int code, std::string& error) {
    error = core::Wrapper::runtimeErrorText(code);
    return false;
}

/// The first three bytes, or fewer if that would cut a character.
std::string shortened(const std::string& prefix) {
    return prefix.substr(0, utf::lengthWithin(3, prefix));
}

/// A folder's path, ready for a name: it ends with the separator that it uses itself.
std::string withSeparator(const std::string& folder) {
    const size_t last = folder.find_last_of("\\/");
    if (last == folder.size() - 1)
        return folder;
    return folder + (last == std::string::npos ? '/' : folder[last]);
}

/// Brings a folder's entries to disk, if its file system and permissions allow it. The
/// entries have changed in any case, so there is no result.
void flushFolder(const std::string& folder) {
    const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return;
    (void)::fsync(handle);
    (void)::close(handle);
}

/// The folder part of a path of the system.
std::string folderOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

} // namespace

PathKind kindOf(std::string_view path) {
    std::string name;
    if (!core::Wrapper::pathFromUtf8(path, name))
        return PathKind::NotUtf8;
    struct stat status {};
    if (::stat(name.c_str(), &status) != 0)
        return PathKind::Absent;
    return S_ISDIR(status.st_mode) ? PathKind::Folder : PathKind::File;
}

int makeFolder(const std::string& path) {
    std::string name;
    if (!core::Wrapper::pathFromUtf8(path, name))
        return EILSEQ;
    return ::mkdir(name.c_str(), S_IRWXU | S_IRWXG | S_IRWXO) == 0 ? 0 : errno;
}

bool moveFile(const std::string& from, const std::string& to, std::string& error) {
    std::string source;
    std::string target;
    if (!core::Wrapper::pathFromUtf8(from, source) || !core::Wrapper::pathFromUtf8(to, target))
        return failed(EILSEQ, error);
    const std::string folder = folderOf(target); // afterwards nothing may fail any more
    if (std::rename(source.c_str(), target.c_str()) != 0)
        return failed(errno, error);
    flushFolder(folder);
    return true;
}

// Not two slashes, which mean the root here.
bool namesServer(std::string_view path) { return path.starts_with("\\\\"); }

bool makeTempFile(const std::string& folder, const std::string& prefix, TempFile& file,
                  std::string& error) {
    std::string name;
    if (!core::Wrapper::pathFromUtf8(folder + prefix, name))
        return failed(EILSEQ, error);
    const std::string stem = withSeparator(folder) + shortened(prefix);
    (void)core::pathFromUtf8(stem + "XXXXXX" + kTempSuffix, name);
    std::string path = name;
    const int handle = ::mkostemps(name.data(), sizeof kTempSuffix - 1, O_CLOEXEC);
    if (handle < 0)
        return failed(errno, error);
    path.replace(0, stem.size(), stem); // spelled as the folder was
    path.replace(stem.size(), std::string::npos, name, stem.size(), std::string::npos);
    file = {std::move(path), handle};
    return true;
}

} // namespace utl::detail
