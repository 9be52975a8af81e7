#include "utl_fileutils.h"

#include "core_check.h"
#include "core_log.h"
#include "core_tokenizer.h"
#include "core_wrapper.h"
#include "internal/utl_file_system.h"
#include "internal/utl_fileutils_system.h"

#include <cerrno>
#include <new>
#include <string_view>
#include <utility>

namespace utl {
namespace {

constexpr core::CheckSite kNotUtf8{"utl_fileutils_win32.cpp", 176};

bool isDrive(std::string_view level) {
    const auto letter = static_cast<char>(level.front() | 0x20);
    return level.size() == 2 && letter >= 'a' && letter <= 'z' && level.back() == ':';
}

/// Drives, servers and shares are not folders: the system neither finds nor makes them.
bool isRoot(std::string_view path, std::string_view level, size_t depth) {
    return detail::namesServer(path) ? depth < 2 : depth == 0 && isDrive(level);
}

bool isFolder(const std::string& path) {
    bool isDir = false;
    return FileUtils::exists(path, isDir) && isDir;
}

void logFolderNotMade(const std::string& path, int error) {
    core::logf(core::kChannelWarn, "failed to create '%s' : %s", path,
               core::Wrapper::runtimeErrorText(error));
}

/// Makes a folder, unless it is there: somebody else may have made it just now.
bool ensureFolder(const std::string& path) {
    if (isFolder(path))
        return true;
    const int error = detail::makeFolder(path);
    if (error == 0 || (error == EEXIST && isFolder(path)))
        return true;
    logFolderNotMade(path, error);
    return false;
}

} // namespace

bool FileUtils::exists(const std::string& path) {
    bool isDir = false;
    return exists(path, isDir);
}

bool FileUtils::exists(const std::string& path, bool& isDir) try {
    std::string_view name = path;
    if (name.ends_with('\\'))
        name.remove_suffix(1);
    const detail::PathKind kind = detail::kindOf(name);
    isDir = kind == detail::PathKind::Folder;
    return CHECKF_AT(kNotUtf8, kind != detail::PathKind::NotUtf8, path) &&
           kind != detail::PathKind::Absent;
} catch (const std::bad_alloc&) {
    isDir = false;
    return core::logNoMemory("utl::FileUtils::exists");
}

bool FileUtils::createDir(const std::string& path) try {
    std::string name = path;
    if (name.ends_with('/')) {
        core::logf(core::kChannelWarn, "removing trailing / from '%s'", path);
        name.pop_back();
    }
    const int error = detail::makeFolder(name);
    if (error != 0)
        logFolderNotMade(name, error);
    return error == 0;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("utl::FileUtils::createDir");
}

bool FileUtils::createPath(const std::string& path) try {
    core::Tokenizer levels(path, {.delimiters = core::CharSet("\\/")});
    size_t depth = 0;
    for (std::string_view level; levels.next(level); ++depth) {
        const std::string folder(path.data(), level.data() + level.size());
        if (!isRoot(path, level, depth) && !ensureFolder(folder))
            return false;
    }
    return true;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("utl::FileUtils::createPath");
}

bool FileUtils::renameFile(const std::string& from, const std::string& to) try {
    std::string error;
    if (detail::moveFile(from, to, error))
        return true;
    core::logf(core::kChannelWarn, "'%s'=>'%s' failed : %s", from, to, error);
    return false;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("utl::FileUtils::renameFile");
}

std::string FileUtils::createTempFile(const std::string& folder, const std::string& prefix) {
    detail::TempFile file;
    if (detail::openTempFile(folder, prefix, file))
        (void)File::theSystem().close(file.handle);
    return std::move(file.path);
}

bool detail::openTempFile(const std::string& folder, const std::string& prefix,
                          TempFile& file) try {
    std::string error;
    if (folder.empty()) // the systems would take it for the root
        error = core::Wrapper::runtimeErrorText(ENOENT);
    else if (prefix.find_first_of("\\/") != std::string::npos) // it would lead elsewhere
        error = core::Wrapper::runtimeErrorText(EINVAL);
    else if (makeTempFile(folder, prefix, file, error))
        return true;
    core::logf(core::kChannelWarn,
               "FileUtils::createTempFile - failed getting temp filename (path='%s', "
               "prefix='%s', err='%s')",
               folder, prefix, error);
    return false;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("utl::FileUtils::createTempFile");
}

} // namespace utl
