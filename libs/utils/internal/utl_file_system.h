#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Between utl_file.cpp, its platform halves and its tests; not for other modules.
namespace utl::detail {

/// The runtime's calls on numbered files. They return -1 with errno on failure; a
/// read or write may move fewer bytes than asked, which is no failure.
struct FileCalls {
    int (*open)(const std::string& path, int flags, int mode); ///< flags as in <fcntl.h>
    int64_t (*size)(int handle);                               ///< EISDIR for a folder
    int64_t (*seek)(int handle, int64_t offset);               ///< from the start
    int64_t (*read)(int handle, void* buffer, size_t count);
    int64_t (*write)(int handle, const void* data, size_t count);
    int (*flush)(int handle);
    int (*close)(int handle);
};

/// The platform's own, in its half.
extern const FileCalls kSystemFileCalls;

/// The calls in use: the platform's, unless a test has put others in their place.
/// No other thread may use files at the moment of exchange.
extern const FileCalls* fileCalls;

} // namespace utl::detail
