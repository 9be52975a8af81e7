#pragma once

#include <string>

namespace utl {

/// Files and folders by name. Paths are UTF-8; '\' and '/' both separate on either system.
/// Every failure, except a plain "no" of `exists`, logs a line on WARN. Any thread.
class FileUtils {
public:
    /// Whether there is a file or folder; `isDir` tells which. One '\' at the end of the
    /// path is ignored. A path that is not UTF-8 is a failed check.
    static bool exists(const std::string& path);
    static bool exists(const std::string& path, bool& isDir);

    /// Makes one folder; it is a failure if it exists. A '/' at the end of the path is
    /// removed, which is logged.
    [[nodiscard]] static bool createDir(const std::string& path);

    /// Makes every missing folder of the path, from the root down; stops at the first
    /// failure and leaves those above it. Others may make the same folders meanwhile. A
    /// drive ("C:") and a share ("\\server\share", on Windows also "//server/share") are
    /// taken as given.
    [[nodiscard]] static bool createPath(const std::string& path);

    /// Renames a file, replacing one that has the new name; a link is itself replaced. On
    /// success the new name is on disk, as far as the file system can flush a folder. On
    /// Windows somebody may have the old file open: it retries for half a second before it
    /// gives up.
    [[nodiscard]] static bool renameFile(const std::string& from, const std::string& to);

    /// Makes a new, empty file that only its owner may read and write (on Windows: those to
    /// whom the folder grants it) and returns its path: `folder`, the first three
    /// characters of the prefix, something unique and ".tmp". Empty text on failure, for
    /// example if the prefix has a separator.
    [[nodiscard]] static std::string createTempFile(const std::string& folder,
                                                    const std::string& prefix);
};

} // namespace utl
