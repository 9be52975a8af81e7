#pragma once

#include <string>

namespace utl {

/// Files and folders by name. Paths are UTF-8; '\' and '/' both separate on either
/// system. Every failure but a plain "no" of `exists` leaves a line on WARN. Any
/// thread.
class FileUtils {
public:
    /// Whether there is a file or folder, `isDir` telling which. One '\' at the end
    /// of the path is not looked at. A path that is not UTF-8 is a failed check.
    static bool exists(const std::string& path);
    static bool exists(const std::string& path, bool& isDir);

    /// Makes one folder; one that is there already is a failure. A '/' at the end of
    /// the path is removed, with a line that says so.
    [[nodiscard]] static bool createDir(const std::string& path);

    /// Makes every missing folder of the path, from the root down; stops at the first
    /// that cannot be made, with those above it left in place. Others may make the same
    /// ones meanwhile. A drive ("C:") and a share ("\\server\share", on Windows also
    /// "//server/share") are taken as given.
    [[nodiscard]] static bool createPath(const std::string& path);

    /// Renames a file, replacing one that has the new name, also a link, but not what that
    /// names. On success the change of name is on disk, as far as the file system lets a
    /// folder be flushed. On Windows, where somebody who has the old file open may be in
    /// the way, it waits for half a second before it gives up.
    [[nodiscard]] static bool renameFile(const std::string& from, const std::string& to);

    /// Makes a new, empty file that only its owner may read and write (on Windows, those
    /// to whom the folder grants it) and returns its path: `folder`, the prefix's first
    /// three characters, something unique and ".tmp". Empty text on failure, which a prefix
    /// with a separator in it is.
    [[nodiscard]] static std::string createTempFile(const std::string& folder,
                                                    const std::string& prefix);
};

} // namespace utl
