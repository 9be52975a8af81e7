#pragma once

#include <string_view>

/// Which build this is, for reports, crash dumps and their names: set by the build
/// system, or by a program that uses these libraries. Valid for the whole life of the
/// process, on any thread, in crash handlers, too.
namespace core {

/// Empty members keep what the build system set; an empty product gets the module's name.
struct BuildIdentity {
    std::string_view tag = {};      ///< of the source control, "release_2_1"
    std::string_view stamp = {};    ///< date and time of the build, "yymmdd-hhmmss"
    std::string_view module = {};   ///< the product module that the build belongs to
    std::string_view product = {};  ///< as reports name it
    std::string_view platform = {}; ///< "win_i686", "linux_x86_64"
};

/// Replaces what the build system set, for all functions below; copies the texts. Call it
/// first thing in main, before other threads start or anything fails:
///
///     core::setBuildIdentity({.tag = "release_1_4", .stamp = "240531-120000",
///                             .module = "viewer", .product = "Viewer"});
void setBuildIdentity(const BuildIdentity& identity);

/// The source-control keyword "Name", expanded to the tag, between its dollar signs.
std::string_view rcsName();

/// As in BuildIdentity.
std::string_view buildStamp();
std::string_view buildModuleName();
std::string_view productName();
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
