#include "cutl_environment.h"

#include <windows.h>

#include <shlobj.h>

namespace cutl {

std::optional<std::string> systemCommonDataFolder() {
    char folder[MAX_PATH] = "";
    if (SHGetFolderPathA(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder) < 0)
        return std::nullopt;
    return folder;
}

} // namespace cutl
