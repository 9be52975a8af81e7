#pragma once

#include <string>
#include <string_view>

/// Between utl_fileutils.cpp and its platform halves; not for other modules. Paths
/// are UTF-8, and one that is not is logged. Where false is a failure, `error` holds
/// the system's words for it.
namespace utl::detail {

enum class PathKind { NotUtf8, Absent, File, Folder };
PathKind kindOf(std::string_view path);

bool makeFolder(const std::string& path, std::string& error);

bool moveFile(const std::string& from, const std::string& to, std::string& error);

/// `folder` is not empty; `path` receives the new file's.
bool makeTempFile(const std::string& folder, const std::string& prefix, std::string& path,
                  std::string& error);

} // namespace utl::detail
