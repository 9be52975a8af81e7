#include "core_crashdump.h"

#include "core_crashdump_calls.h"
#include "core_paths.h"
#include "core_rcsname.h"

namespace core {
namespace {

using detail::PathText;

PathText backslashed(std::string_view folder) {
    PathText text;
    text << folder;
    text.replace('/', '\\');
    return text;
}

PathText filePath(const PathText& folder, std::string_view executable, std::string_view tag) {
    PathText path = folder;
    path << "\\" << dumpModuleName(executable) << "-" << tag << ".dmp";
    return path;
}

} // namespace

std::string_view dumpModuleName(std::string_view executable) {
    constexpr std::string_view kSuffix = ".exe";
    if (executable.empty())
        return "unknown";
    if (executable.ends_with(kSuffix))
        executable.remove_suffix(kSuffix.size());
    return executable;
}

std::string dumpFilePath(std::string_view folder, std::string_view executable,
                         std::string_view tag) {
    return std::string(filePath(backslashed(folder), executable, tag).view());
}

detail::DumpPlace detail::dumpPlace(std::string_view executable) {
    PathText folder;
    folder << "./" << Paths::path(Paths::Dumps);
    folder = backslashed(folder.view());
    return {folder, filePath(folder, executable, dumpVersionTag())};
}

} // namespace core
