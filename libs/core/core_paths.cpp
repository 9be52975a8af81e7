#include "core_paths.h"

#include "core_check.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace core {
namespace {

constexpr CheckSite kNotSet{"core_paths.cpp", 104};
constexpr CheckSite kUnknownIndex{"core_paths.cpp", 121};

struct Folder {
    const char* name;
    const char* defaultPath;
};
constexpr Folder kFolders[] = {
    {"Assets", "assets"}, {"Settings", "settings"}, {"Work", "work"},
    {"Temp", "tmp"},      {"Logs", "files"},        {"Dumps", "dumps"},
};

struct PathInfo {
    std::string path;
    bool is_set = false;
};
using Table = std::array<PathInfo, std::size(kFolders)>;

// Never destroyed: a crash at the very end of the process still needs it.
Table& table() {
    static Table& instance = *new Table;
    return instance;
}

// For crashes, where damage to the heap does not reach.
struct StoredPath {
    std::array<char, 1024> text;
    size_t size;
};
constinit std::array<StoredPath, std::size(kFolders)> storedPaths{};

} // namespace

const char* Paths::pathName(PathIndex index) {
    if (index < std::size(kFolders))
        return kFolders[index].name;
    CHECKF_AT(kUnknownIndex, false);
    return "?";
}

void Paths::setPath(PathIndex index, const std::string& path) {
    PathInfo& pi = table().at(index);
    pi.path = path;
    pi.is_set = true;
    StoredPath& stored = storedPaths.at(index);
    stored.size = path.copy(stored.text.data(), stored.text.size() - 1);
}

void Paths::setDefaultPaths() {
    for (uint32_t i = 0; i < std::size(kFolders); ++i)
        setPath(static_cast<PathIndex>(i), kFolders[i].defaultPath);
}

const std::string& Paths::path(PathIndex index) {
    const PathInfo& pi = table().at(index);
    GASSERT_AT(kNotSet, pi.is_set, pathName(index));
    return pi.path;
}

std::string_view Paths::storedPath(PathIndex index) {
    const StoredPath& stored = storedPaths[std::min<size_t>(index, storedPaths.size() - 1)];
    return {stored.text.data(), stored.size};
}

std::string Paths::fullPath(PathIndex index) { return "./" + path(index); }

} // namespace core
