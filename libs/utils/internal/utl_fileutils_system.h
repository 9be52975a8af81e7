#pragma once

#include <string>
#include <string_view>

/// Between utl_fileutils.cpp, its platform halves and utl_file.cpp; not for other code.
/// Paths are UTF-8; an invalid one is logged. Where false is a failure, `error` gets the
/// system's text.
namespace utl::detail {

enum class PathKind { NotUtf8, Absent, File, Folder };
PathKind kindOf(std::string_view path);

/// 0 or errno.
int makeFolder(const std::string& path);

bool moveFile(const std::string& from, const std::string& to, std::string& error);

/// Whether the path begins with a server, as "\\server\share" does.
bool namesServer(std::string_view path);

/// A new, empty file and its runtime number, open for reading and writing.
struct TempFile {
    std::string path;
    int handle = -1;
};

/// `folder` is not empty, `prefix` without separators.
bool makeTempFile(const std::string& folder, const std::string& prefix, TempFile& file,
                  std::string& error);

/// FileUtils::createTempFile, but the file stays open: writes go to the file that was made,
/// whatever its name has come to mean since.
bool openTempFile(const std::string& folder, const std::string& prefix, TempFile& file);

} // namespace utl::detail
