#pragma once

#include <optional>
#include <string>

namespace cutl {

/// The machine-wide application-data folder, as the system names it. Programs make their
/// own folders below it. If there is none: a failed check, then "./data". Any thread.
std::string commonDataFolder();

/// A way to find that folder; no value if there is none. Owns nothing, is called each time,
/// and on any thread.
using CommonDataLookup = std::optional<std::string> (*)();

/// The system's way, the default. Windows: the shell's folder for the application data of
/// all users. Linux: the folder that the build was configured with
/// (ORVISTRAND_COMMON_DATA_DIR), if it exists.
std::optional<std::string> systemCommonDataFolder();

/// Replaces the lookup for the whole process and returns the previous one. Not null.
CommonDataLookup setCommonDataLookup(CommonDataLookup lookup);

} // namespace cutl
