#include "core_wrapper.h"
#include "internal/utl_file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace utl {
namespace {

/// Not a pipe, terminal or other device: reading from those may wait for ever.
bool isFileOrFolder(int handle) {
    struct stat status {};
    return ::fstat(handle, &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

} // namespace

int File::System::open(const std::string& path, int flags, int mode) const {
    std::string name;
    if (!core::Wrapper::pathFromUtf8(path, name)) {
        errno = EILSEQ;
        return -1;
    }
    const int handle =
        ::open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, static_cast<mode_t>(mode));
    if (handle < 0 || (flags & O_ACCMODE) == O_WRONLY || isFileOrFolder(handle))
        return handle;
    (void)::close(handle);
    errno = ENOTSUP;
    return -1;
}

int64_t File::System::size(int handle) const {
    struct stat status {};
    if (::fstat(handle, &status) != 0)
        return -1;
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return -1;
    }
    return status.st_size;
}

int64_t File::System::seek(int handle, int64_t offset) const {
    return ::lseek(handle, offset, SEEK_SET);
}

int64_t File::System::read(int handle, void* buffer, size_t count) const {
    return ::read(handle, buffer, count);
}

int64_t File::System::write(int handle, const void* data, size_t count) const {
    return ::write(handle, data, count);
}

int File::System::flush(int handle) const { return ::fsync(handle); }

/// The handle is closed even if a signal interrupts the call.
int File::System::close(int handle) const {
    return ::close(handle) == 0 || errno == EINTR ? 0 : -1;
}

} // namespace utl
