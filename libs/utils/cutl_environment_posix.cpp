#include "cutl_environment.h"

#include <sys/stat.h>

namespace cutl {

std::optional<std::string> systemCommonDataFolder() {
    struct stat status {};
    if (::stat(ORVISTRAND_COMMON_DATA_DIR, &status) != 0 || !S_ISDIR(status.st_mode))
        return std::nullopt;
    return ORVISTRAND_COMMON_DATA_DIR;
}

} // namespace cutl
