#include "core_utf.h"
#include "core_wrapper.h"
#include "utl_fileutils_calls.h"

#include <windows.h>

#include <cerrno>
#include <direct.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace utl::detail {
namespace {

bool failedByErrno(int code, std::string& error) {
    error = std::generic_category().message(code);
    return false;
}

bool failedByLastError(DWORD code, std::string& error) {
    error = core::Wrapper::systemErrorText(code);
    return false;
}

/// The three units of it that the call uses, or two where a character would be cut.
void shorten(std::wstring& prefix) {
    if (prefix.size() > 3)
        prefix.resize(IS_HIGH_SURROGATE(prefix[2]) ? 2 : 3);
}

} // namespace

PathKind kindOf(std::string_view path) {
    std::wstring name;
    if (!core::Wrapper::pathFromUtf8(path, name))
        return PathKind::NotUtf8;
    struct _stat64 status {};
    if (_wstat64(name.c_str(), &status) != 0)
        return PathKind::Absent;
    return (status.st_mode & _S_IFMT) == _S_IFDIR ? PathKind::Folder : PathKind::File;
}

bool makeFolder(const std::string& path, std::string& error) {
    std::wstring name;
    if (!core::Wrapper::pathFromUtf8(path, name))
        return failedByErrno(EILSEQ, error);
    return _wmkdir(name.c_str()) == 0 || failedByErrno(errno, error);
}

bool moveFile(const std::string& from, const std::string& to, std::string& error) {
    std::wstring source;
    std::wstring target;
    if (!core::Wrapper::pathFromUtf8(from, source) || !core::Wrapper::pathFromUtf8(to, target))
        return failedByErrno(EILSEQ, error);
    return MoveFileExW(source.c_str(), target.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0 ||
           failedByLastError(GetLastError(), error);
}

bool makeTempFile(const std::string& folder, const std::string& prefix, std::string& path,
                  std::string& error) {
    std::wstring wideFolder;
    std::wstring widePrefix;
    if (!core::Wrapper::pathFromUtf8(folder, wideFolder) ||
        !core::Wrapper::pathFromUtf8(prefix, widePrefix))
        return failedByErrno(EILSEQ, error);
    shorten(widePrefix);
    wchar_t name[MAX_PATH]; // the call takes no longer ones
    if (GetTempFileNameW(wideFolder.c_str(), widePrefix.c_str(), 0, name) == 0)
        return failedByLastError(GetLastError(), error);
    return core::Wrapper::toUtf8(name, path) || failedByErrno(EILSEQ, error);
}

} // namespace utl::detail
