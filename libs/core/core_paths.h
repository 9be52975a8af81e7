#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace core {

/// Where the application keeps its files: six folders, relative to the working
/// directory at the time they are used. Filled on the main thread before others
/// start, and only read afterwards; nothing is locked.
///
/// The settings of core::TestInterface and its list of excluded checks do not move with
/// the folder Settings: they are always sought in "settings" of the working directory.
class Paths {
public:
    /// What the program brings with it, its settings, what it works on, temporary files, logs
    /// and dumps.
    enum PathIndex : uint32_t { Assets, Settings, Work, Temp, Logs, Dumps };

    /// The folder's display name; "?" after a failed check for an unknown index.
    static const char* pathName(PathIndex index);

    /// Unknown index: std::out_of_range, nothing has changed.
    static void setPath(PathIndex index, const std::string& path);

    /// "assets", "settings", "work", "tmp", "files" and "dumps".
    static void setDefaultPaths();

    /// The folder as it was set; until then empty, with a failed check of level 1. Valid
    /// to the end of the process. Unknown index: std::out_of_range.
    static const std::string& path(PathIndex index);

    /// The same from static storage, cut at 1,023 bytes, for code that runs after a
    /// crash: needs no heap and no check.
    static std::string_view storedPath(PathIndex index);

    /// The folder with "./" before it, whatever it is: an absolute path, too, then names a
    /// place below the working directory.
    static std::string fullPath(PathIndex index);
};

} // namespace core
