#include "cutl_environment.h"

#include "core_check.h"

#include <atomic>

namespace cutl {
namespace {

constexpr core::CheckSite kNoCommonData{"cutl_environment.cpp", 106};

constinit std::atomic<CommonDataLookup> currentLookup = &systemCommonDataFolder;

} // namespace

std::string commonDataFolder() {
    const std::optional<std::string> folder = currentLookup.load()();
    return CHECKF_AT(kNoCommonData, folder.has_value()) ? *folder : "./data";
}

CommonDataLookup setCommonDataLookup(CommonDataLookup lookup) {
    return currentLookup.exchange(lookup);
}

} // namespace cutl
