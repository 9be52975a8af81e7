#pragma once

#include <windows.h>

#include <memory>
#include <utility>

/// Owners of what Windows gives, for the Windows halves of all libraries.
namespace core {

/// A file or a snapshot; INVALID_HANDLE_VALUE for none.
class FileHandle {
public:
    explicit FileHandle(HANDLE handle) : d_handle(handle) {}
    ~FileHandle() { close(); }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    bool isValid() const { return d_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return d_handle; }

    void close() {
        if (isValid())
            CloseHandle(release());
    }

    /// The caller closes it.
    HANDLE release() { return std::exchange(d_handle, INVALID_HANDLE_VALUE); }

private:
    HANDLE d_handle;
};

struct LocalFreer {
    void operator()(void* memory) const { LocalFree(static_cast<HLOCAL>(memory)); }
};

/// Memory that a system call has allocated for its caller.
template <typename T>
using LocalMemory = std::unique_ptr<T, LocalFreer>;

} // namespace core
