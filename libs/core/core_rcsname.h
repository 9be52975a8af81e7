#pragma once

#include <string_view>

/// What build this is: constants, set by the build system, for reports, crash dumps
/// and their names. Valid for the whole life of the process, on any thread, in crash
/// handlers too.
namespace core {

/// The source-control keyword "Name" of the build, expanded, between its dollar signs.
std::string_view rcsName();

/// Date and time of the build, "yymmdd-hhmmss".
std::string_view buildStamp();

/// The product module that the build belongs to.
std::string_view buildModuleName();

/// The target platform.
std::string_view platformName();

/// Tag and stamp of the build, joined by '_'; crash dumps are named after it.
std::string_view dumpVersionTag();

/// The version in an expanded keyword, as a slice of it: the tag without the keyword
/// around it, and without "release_" if it begins so. Any other text: a failed check,
/// and the whole text.
std::string_view versionFromRcsName(std::string_view text);

/// The version of this build.
std::string_view version();

} // namespace core
