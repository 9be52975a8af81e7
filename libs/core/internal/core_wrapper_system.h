#pragma once

#include "core_wrapper.h"

#include <cstdio>
#include <string>

/// Between core_wrapper.cpp, its platform halves and its tests; not for other modules.
namespace core {

/// These read the thread's file-name mode; -1 with errno on failure.
class Wrapper::System {
public:
    virtual int remove(const std::string& path) const;
    virtual int makeWritable(const std::string& path) const;

protected:
    ~System() = default; // trivial, so that the one of the process is never destroyed
};

namespace detail {

/// What fopen's mode needs so that child processes do not inherit the file.
extern const char* const kNotInheritedMode;

FILE* openFile(const SystemText& path, const SystemText& mode);

} // namespace detail
} // namespace core
