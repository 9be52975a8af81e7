#include "core_wrapper.h"
#include "internal/utl_file_system.h"

#include <fcntl.h>
#include <io.h>

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

namespace utl {
namespace {

/// Not a pipe, console or other device: reading from those may wait for ever.
bool isFile(int handle) {
    return GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(handle))) == FILE_TYPE_DISK;
}

/// Asked before the runtime, which may end the process over a bad handle.
bool isNumber(int handle) {
    if (handle < 0)
        errno = EBADF;
    return handle >= 0;
}

/// The runtime counts in int; the caller repeats a call that moved less than it asked for.
unsigned piece(size_t count) { return static_cast<unsigned>(std::min<size_t>(count, INT_MAX)); }

} // namespace

int File::System::open(const std::string& path, int flags, int mode) const {
    std::wstring name;
    if (!core::Wrapper::pathFromUtf8(path, name)) {
        errno = EILSEQ;
        return -1;
    }
    const int handle = _wopen(name.c_str(), flags | _O_BINARY | _O_NOINHERIT, mode);
    if (handle < 0 || (flags & (_O_WRONLY | _O_RDWR)) == _O_WRONLY || isFile(handle))
        return handle;
    (void)_close(handle);
    errno = EACCES; // as for a folder
    return -1;
}

int64_t File::System::size(int handle) const {
    return isNumber(handle) ? _filelengthi64(handle) : -1;
}

int64_t File::System::seek(int handle, int64_t offset) const {
    return isNumber(handle) ? _lseeki64(handle, offset, SEEK_SET) : -1;
}

int64_t File::System::read(int handle, void* buffer, size_t count) const {
    return isNumber(handle) ? _read(handle, buffer, piece(count)) : -1;
}

int64_t File::System::write(int handle, const void* data, size_t count) const {
    return isNumber(handle) ? _write(handle, data, piece(count)) : -1;
}

int File::System::flush(int handle) const { return _commit(handle); }

int File::System::close(int handle) const { return _close(handle); }

} // namespace utl
