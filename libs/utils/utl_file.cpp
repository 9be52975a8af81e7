#include "utl_file.h"

#include "core_check.h"
#include "core_guniquebuf.h"
#include "core_log.h"
#include "core_wrapper.h"
#include "internal/utl_file_system.h"
#include "internal/utl_fileutils_system.h"
#include "utl_fileutils.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <utility>

namespace utl {
namespace {

constexpr core::CheckSite kAlreadyOpen{"utl_file.cpp", 55};
constexpr core::CheckSite kNoAccess{"utl_file.cpp", 93};
constexpr core::CheckSite kNoFileName{"utl_file.cpp", 890};

struct TheSystem final : File::System {};
constinit const TheSystem realSystem;

int runtimeFlags(int32_t flags) {
    const bool reads = (flags & File::kRead) != 0;
    const bool writes = (flags & File::kWrite) != 0;
    int result = writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY;
    if ((flags & File::kCreate) != 0)
        result |= (flags & File::kExclusive) != 0 ? O_CREAT | O_EXCL : O_CREAT;
    if ((flags & File::kTruncate) != 0)
        result |= O_TRUNC;
    if ((flags & File::kAppend) != 0)
        result |= O_APPEND;
    return result;
}

/// False if there is no memory for it.
bool resize(std::string& buffer, size_t size) {
    try {
        buffer.resize(size);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

struct Transfer {
    size_t done = 0;
    int error = 0; // errno, 0 when nothing failed
};

/// Repeats `call(done, rest)`, which returns the bytes it moved or -1, until all are moved,
/// none are left, or it fails.
template <typename Call>
Transfer transfer(size_t count, Call call) {
    Transfer result;
    while (result.done < count) {
        const int64_t moved = call(result.done, count - result.done);
        if (moved == 0)
            break;
        if (moved > 0) {
            result.done += static_cast<size_t>(moved);
        } else if (errno != EINTR) {
            result.error = errno;
            break;
        }
    }
    return result;
}

struct Target {
    std::string folder;
    std::string name; // empty if the path ends in a separator
};

/// A folder that is a root keeps its separator.
Target splitPath(const std::string& path) {
    const size_t separator = path.find_last_of("\\/");
    if (separator == std::string::npos)
        return {".", path};
    const bool root = separator == 0 || path[separator - 1] == ':';
    return {path.substr(0, separator + (root ? 1 : 0)), path.substr(separator + 1)};
}

void logSafeStoreFailure(const char* failure, const std::string& path, size_t size,
                         const std::string& temporary) {
    constexpr int32_t kNoFlags = 0; // the caller's; those of the temporary file do not matter
    core::logFrom(core::kChannelWarn, "utl::File::createFromMemSafe",
                  "(%s,%uB,flags=%d,mode=%d) - %s '%s'", path, size, kNoFlags, File::kOwnerOnly,
                  failure, temporary);
}

} // namespace

const File::System& File::theSystem() { return realSystem; }

bool File::openFile(const std::string& name, int32_t flags, int32_t mode) try {
    if (!CHECKF_AT(kAlreadyOpen, !isOpen(),
                   core::format("can't open '%s', '%s' already open", name, d_name)))
        return false;
    if (!CHECKF_AT(kNoAccess, (flags & (kRead | kWrite)) != 0,
                   core::format("READ/WRITE not set (%s)", name)))
        return false;
    std::string kept = name; // before there is a handle to lose
    // The systems differ on what truncating does without the right to write.
    const bool contradictory = (flags & (kTruncate | kWrite)) == kTruncate;
    const int handle = contradictory ? -1 : d_system->open(name, runtimeFlags(flags), mode);
    if (handle < 0) {
        const int error = contradictory ? EINVAL : errno;
        core::logf(core::kChannelWarn, "File:openFile(%s,%d,%d) - failed opening : %s", name, flags,
                   mode, core::Wrapper::runtimeErrorText(error));
        return false;
    }
    attach(handle, std::move(kept), flags, mode);
    return true;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("utl::File::openFile");
}

void File::attach(int handle, std::string name, int32_t flags, int32_t mode) noexcept {
    d_name = std::move(name);
    d_flags = flags;
    d_mode = mode;
    d_handle = handle;
    d_position = 0;
}

bool File::close() {
    if (!isOpen())
        return true;
    constexpr int32_t kWrittenDown = kWrite | kFlush; // Windows flushes no other files
    const bool flushed = (d_flags & kWrittenDown) != kWrittenDown || d_system->flush(d_handle) == 0;
    int error = flushed ? 0 : errno;
    if (d_system->close(d_handle) != 0 && flushed)
        error = errno;
    d_handle = -1;
    if (error == 0)
        return true;
    core::logf(core::kChannelWarn, "File(%s):close - failed with error %d:%s", d_name, error,
               core::Wrapper::runtimeErrorText(error));
    return false;
}

bool File::size(uint64_t& bytes) const {
    const int64_t size = d_system->size(d_handle);
    if (size < 0) {
        const int error = errno;
        core::logf(core::kChannelWarn, "File(%s):size - failed with error %d:%s", d_name, error,
                   core::Wrapper::runtimeErrorText(error));
        return false;
    }
    bytes = static_cast<uint64_t>(size);
    return true;
}

bool File::readInto(std::string& buffer, size_t count) {
    if (!resize(buffer, count)) {
        buffer.clear();
        logReadError(count, ENOMEM);
        return false;
    }
    const Transfer read = transfer(count, [&](size_t done, size_t rest) {
        return d_system->read(d_handle, buffer.data() + done, rest);
    });
    buffer.resize(read.done);
    d_position += read.done;
    if (read.error != 0)
        logReadError(count, read.error);
    return read.error == 0;
}

void File::logReadError(size_t count, int error) const {
    core::logf(core::kChannelWarn, "File(%s):readInto - failed reading %d bytes with error %d:%s",
               d_name, count, error, core::Wrapper::runtimeErrorText(error));
}

bool File::write(const void* data, size_t count) {
    const auto* const bytes = static_cast<const char*>(data);
    const uint64_t offset = d_position;
    const Transfer written = transfer(count, [&](size_t done, size_t rest) {
        return d_system->write(d_handle, bytes + done, rest);
    });
    d_position += written.done;
    if (written.error != 0)
        logWriteError(offset, count, written.error);
    if (written.done < count && (written.done > 0 || written.error == 0))
        core::logf(core::kChannelWarn, "failed writing %u bytes to %s (only wrote %d bytes)", count,
                   d_name, written.done);
    return written.done == count;
}

bool File::write(uint64_t offset, const void* data, size_t count) {
    if (d_system->seek(d_handle, static_cast<int64_t>(offset)) < 0) {
        logWriteError(offset, count, errno);
        return false;
    }
    d_position = offset;
    return write(data, count);
}

void File::logWriteError(uint64_t offset, size_t count, int error) const {
    core::logf(core::kChannelWarn, "File(%s):write(%u,%u,%u) - failed with error %d:%s", d_name,
               offset, count, d_position, error, core::Wrapper::runtimeErrorText(error));
}

bool File::loadIntoMem(const std::string& path, std::string& buffer, uint64_t maxSize,
                       const System& system) {
    buffer.clear();
    File file(system);
    uint64_t size = 0;
    if (!file.openFile(path, kRead) || !file.size(size))
        return false;
    const uint64_t limit = std::min<uint64_t>(maxSize, buffer.max_size());
    if (size > limit) {
        core::logf(core::kChannelWarn, "size (%d) exceeds max_size (%d) for file %s", size, limit,
                   path);
        return false;
    }
    const bool read = file.readInto(buffer, static_cast<size_t>(size));
    if (read && buffer.size() == size)
        return true;
    if (read)
        core::logf(core::kChannelWarn, "got %d instead of %d for '%s'", buffer.size(), size, path);
    buffer.clear();
    return false;
}

bool File::createFromMem(const std::string& path, const void* data, size_t size, int32_t flags,
                         int32_t mode, const System& system) {
    File file(system);
    return file.openFile(path, flags | kWrite | kCreate | kTruncate, mode) &&
           file.write(data, size) && file.close();
}

bool File::createFromMemSafe(const std::string& path, const void* data, size_t size,
                             const System& system) try {
    const Target target = splitPath(path);
    if (!CHECKF_AT(kNoFileName, !target.name.empty()))
        return false;
    detail::TempFile temporary;
    if (!detail::openTempFile(target.folder, target.name, temporary)) {
        core::logf(core::kChannelWarn,
                   "File::createFromMemSafe - failed creating temp file (path=%s, prefix=%s)",
                   target.folder, target.name);
        return false;
    }
    File file(system);
    file.attach(temporary.handle, std::move(temporary.path), kWrite | kFlush, kOwnerOnly);
    const bool written = file.write(data, size);
    if (!file.close() || !written) {
        logSafeStoreFailure("failed creating temp file", path, size, file.name());
        return false;
    }
    if (!FileUtils::renameFile(file.name(), path)) {
        logSafeStoreFailure("failed renaming file from temporary", path, size, file.name());
        (void)core::Wrapper::unlink(file.name());
        return false;
    }
    return true;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("utl::File::createFromMemSafe");
}

bool File::createFromMemSafe(const std::string& path, const core::GUniqueBuf& buffer) {
    return createFromMemSafe(path, buffer.data(), buffer.size());
}

} // namespace utl
