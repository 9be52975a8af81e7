#pragma once

#include "utl_file.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// Between utl_file.cpp, its platform halves and its tests; not for other code.
namespace utl {

/// The runtime's calls on numbered files. They return -1 with errno on failure. A read or
/// write may move fewer bytes than asked for, which is no failure.
class File::System {
public:
    virtual int open(const std::string& path, int flags, int mode) const; ///< flags of <fcntl.h>
    virtual int64_t size(int handle) const;                               ///< EISDIR for a folder
    virtual int64_t seek(int handle, int64_t offset) const;               ///< from the start
    virtual int64_t read(int handle, void* buffer, size_t count) const;
    virtual int64_t write(int handle, const void* data, size_t count) const;
    virtual int flush(int handle) const;
    virtual int close(int handle) const;

protected:
    ~System() = default; // trivial, so the process's one is never destroyed
};

} // namespace utl
