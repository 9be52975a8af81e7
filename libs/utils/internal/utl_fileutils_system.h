#pragma once

#include <string>
#include <string_view>

/// Between utl_fileutils.cpp, its platform halves and utl_file.cpp; not for other modules.
/// Paths are UTF-8, and one that is not is logged. Where false is a failure, `error` holds
/// the system's words for it.
namespace utl::detail {

enum class PathKind { NotUtf8, Absent, File, Folder };
PathKind kindOf(std::string_view path);

/// 0 or errno.
int makeFolder(const std::string& path);

bool moveFile(const std::string& from, const std::string& to, std::string& error);

/// Whether the path begins with a server, as "\\server\share" does.
bool namesServer(std::string_view path);

/// A new, empty file and the runtime's number of it, open for reading and writing.
struct TempFile {
    std::string path;
    int handle = -1;
};

/// `folder` is not empty, `prefix` without separators.
bool makeTempFile(const std::string& folder, const std::string& prefix, TempFile& file,
                  std::string& error);

/// FileUtils::createTempFile, except that the file stays open: what is written goes into
/// the very file that was made, whatever its name has come to mean meanwhile.
bool openTempFile(const std::string& folder, const std::string& prefix, TempFile& file);

} // namespace utl::detail
