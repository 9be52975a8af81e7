#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/// Between core_filelog.cpp and its platform halves; not for other modules. Paths are
/// UTF-8, failures silent: they happen inside of the log.
namespace core::detail {

/// The calling thread, as the system's own tools name it.
uint64_t systemThreadId();

/// 0 also when the system does not know.
uint64_t fileSize(FILE* file);

/// Whether the path still leads to the open file.
bool isFileAt(FILE* file, const std::string& path);

/// Replaces the file that has the new name.
bool renameLog(const std::string& from, const std::string& to);

} // namespace core::detail
