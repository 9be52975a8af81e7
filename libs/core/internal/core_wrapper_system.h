#pragma once

#include "core_utf.h"

#include <cstdio>
#include <functional>
#include <string>

/// Between core_wrapper.cpp and its platform halves; not for other modules.
namespace core::detail {

/// What fopen's mode needs so that child processes do not inherit the file.
extern const char* const kNotInheritedMode;

FILE* openFile(const SystemText& path, const SystemText& mode);

/// These read the thread's file-name mode; -1 with errno on failure.
int removeFile(const std::string& path);
int makeWritable(const std::string& path);

/// Wrapper::unlink over the calls given.
struct FileCalls {
    std::function<int(const std::string&)> remove;
    std::function<int(const std::string&)> makeWritable;
};
int unlinkWith(const FileCalls& calls, const std::string& path);

} // namespace core::detail
