#include "core_rcsname.h"

#include "core_check.h"

#include <optional>

// What build this is, ORVISTRAND_BUILD_TAG and its like, comes from the build system.

// Written in two pieces, or tools that expand keywords would alter this file.
#define KEYWORD_START                                                                              \
    "$"                                                                                            \
    "Name: "
#define KEYWORD_END " $"

namespace core {
namespace {

constexpr CheckSite kNoKeyword{"core_rcsname.cpp", 28};

// What stands between the two, which must not overlap.
constexpr std::optional<std::string_view> between(std::string_view text, std::string_view start,
                                                  std::string_view end) {
    if (text.size() < start.size() + end.size() || !text.starts_with(start) || !text.ends_with(end))
        return std::nullopt;
    return text.substr(start.size(), text.size() - start.size() - end.size());
}

constexpr std::optional<std::string_view> tagOf(std::string_view keyword) {
    const auto release = between(keyword, KEYWORD_START "release_", KEYWORD_END);
    return release ? release : between(keyword, KEYWORD_START, KEYWORD_END);
}

constexpr std::string_view kRcsName = KEYWORD_START ORVISTRAND_BUILD_TAG KEYWORD_END;
constexpr std::string_view kVersion = tagOf(kRcsName).value();

} // namespace

std::string_view rcsName() { return kRcsName; }

std::string_view buildStamp() { return ORVISTRAND_BUILD_STAMP; }

std::string_view buildModuleName() { return ORVISTRAND_BUILD_MODULE; }

std::string_view platformName() { return ORVISTRAND_BUILD_PLATFORM; }

std::string_view dumpVersionTag() { return ORVISTRAND_BUILD_TAG "_" ORVISTRAND_BUILD_STAMP; }

std::string_view versionFromRcsName(std::string_view text) {
    const auto tag = tagOf(text);
    return CHECKF_AT(kNoKeyword, tag.has_value()) ? *tag : text;
}

std::string_view version() { return kVersion; }

} // namespace core
