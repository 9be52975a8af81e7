#pragma once

#include <optional>
#include <string>

namespace cutl {

/// The machine-wide application-data folder, below which programs make folders of
/// their own, as the system names it. When there is none: a failed check, then
/// "./data". Any thread.
std::string commonDataFolder();

/// A way to find that folder; no value when there is none. A plain function: it
/// owns nothing, is called anew each time, and on any thread.
using CommonDataLookup = std::optional<std::string> (*)();

/// The system's way, in force at start. Windows: the shell's folder of all users'
/// application data. Linux: the folder that the build was configured with
/// (ORVISTRAND_COMMON_DATA_DIR), if it exists.
std::optional<std::string> systemCommonDataFolder();

/// Replaces the lookup for the whole process and returns the one before. Not null.
CommonDataLookup setCommonDataLookup(CommonDataLookup lookup);

} // namespace cutl
