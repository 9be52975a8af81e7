#include "core_utf.h"
#include "core_wrapper.h"
#include "internal/core_handle_win32.h"
#include "internal/utl_fileutils_system.h"

#include <windows.h>

#include <cerrno>
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace utl::detail {
namespace {

bool failedByErrno(int code, std::string& error) {
    error = core::Wrapper::runtimeErrorText(code);
    return false;
}

bool failedByLastError(DWORD code, std::string& error) {
    error = core::Wrapper::systemErrorText(code);
    return false;
}

constexpr ULONGLONG kPatience = 500; // milliseconds in all
constexpr DWORD kPause = 20;

/// Whether the error may pass in a moment: somebody, perhaps a scanner, has the file open.
bool mayPass(DWORD code) { return code == ERROR_SHARING_VIOLATION || code == ERROR_ACCESS_DENIED; }

bool isSeparator(char ch) { return ch == '\\' || ch == '/'; }

/// Makes a new file, whose name must not exist, not even as a link, and keeps it open.
/// Others may read it meanwhile. The runtime's number of it; or -1, with the reason in
/// `code`.
int createNew(const wchar_t* name, DWORD& code) {
    core::FileHandle file(CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!file.isValid()) {
        code = GetLastError();
        return -1;
    }
    const int handle =
        _open_osfhandle(reinterpret_cast<intptr_t>(file.get()), _O_BINARY | _O_NOINHERIT);
    if (handle < 0) {
        file.close();
        DeleteFileW(name);
        code = ERROR_TOO_MANY_OPEN_FILES;
        return -1;
    }
    (void)file.release(); // the runtime owns it now
    return handle;
}

/// The three units that the call uses, or two if that would cut a character.
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

int makeFolder(const std::string& path) {
    std::wstring name;
    if (!core::Wrapper::pathFromUtf8(path, name))
        return EILSEQ;
    return _wmkdir(name.c_str()) == 0 ? 0 : errno;
}

bool moveFile(const std::string& from, const std::string& to, std::string& error) {
    std::wstring source;
    std::wstring target;
    if (!core::Wrapper::pathFromUtf8(from, source) || !core::Wrapper::pathFromUtf8(to, target))
        return failedByErrno(EILSEQ, error);
    const ULONGLONG giveUp = GetTickCount64() + kPatience;
    while (MoveFileExW(source.c_str(), target.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        const DWORD code = GetLastError();
        if (!mayPass(code) || GetTickCount64() >= giveUp)
            return failedByLastError(code, error);
        Sleep(kPause);
    }
    return true;
}

bool namesServer(std::string_view path) {
    return path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1]);
}

bool makeTempFile(const std::string& folder, const std::string& prefix, TempFile& file,
                  std::string& error) {
    std::wstring wideFolder;
    std::wstring widePrefix;
    if (!core::Wrapper::pathFromUtf8(folder, wideFolder) ||
        !core::Wrapper::pathFromUtf8(prefix, widePrefix))
        return failedByErrno(EILSEQ, error);
    shorten(widePrefix);
    if (widePrefix.find(L':') != std::wstring::npos) // would name a stream of another file
        return failedByLastError(ERROR_INVALID_NAME, error);
    // Asked for number 0, the system would make the file itself, but close it again.
    constexpr UINT kNumbers = 0xFFFF;
    const UINT first = static_cast<UINT>(GetTickCount64());
    for (UINT i = 0; i < kNumbers; ++i) {
        wchar_t name[MAX_PATH]; // the call takes no longer ones
        const UINT number = (first + i) % kNumbers + 1;
        if (GetTempFileNameW(wideFolder.c_str(), widePrefix.c_str(), number, name) == 0)
            return failedByLastError(GetLastError(), error);
        std::string path; // before there is a handle to lose
        if (!core::Wrapper::toUtf8(name, path))
            return failedByErrno(EILSEQ, error);
        DWORD code = 0;
        file.handle = createNew(name, code);
        if (file.handle >= 0) {
            file.path = std::move(path);
            return true;
        }
        if (code != ERROR_FILE_EXISTS && code != ERROR_ALREADY_EXISTS)
            return failedByLastError(code, error);
    }
    return failedByLastError(ERROR_FILE_EXISTS, error);
}

} // namespace utl::detail
