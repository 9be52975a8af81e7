#include "core_rcsname.h"

#include "core_check.h"

#include <atomic>
#include <list>
#include <optional>
#include <string>

// ORVISTRAND_BUILD_TAG and the others come from the build system.

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

struct Identity {
    BuildIdentity parts;
    std::string_view rcsName;
    std::string_view dumpVersionTag;
};

constexpr Identity kOwn{
    {.tag = ORVISTRAND_BUILD_TAG,
     .stamp = ORVISTRAND_BUILD_STAMP,
     .module = ORVISTRAND_BUILD_MODULE,
     .product = ORVISTRAND_BUILD_MODULE,
     .platform = ORVISTRAND_BUILD_PLATFORM},
    KEYWORD_START ORVISTRAND_BUILD_TAG KEYWORD_END,
    ORVISTRAND_BUILD_TAG "_" ORVISTRAND_BUILD_STAMP,
};

constinit std::atomic<const Identity*> current{&kOwn};

const Identity& identity() { return *current.load(std::memory_order_acquire); }

// Never freed: a crash at the very end of the process still needs it.
std::string_view kept(std::string text) {
    static auto& texts = *new std::list<std::string>;
    return texts.emplace_back(std::move(text));
}

std::string_view kept(std::string_view text, std::string_view otherwise) {
    return kept(std::string(text.empty() ? otherwise : text));
}

} // namespace

void setBuildIdentity(const BuildIdentity& own) {
    const BuildIdentity& built = kOwn.parts;
    static auto& identities = *new std::list<Identity>;
    Identity& fresh = identities.emplace_back();
    fresh.parts = {.tag = kept(own.tag, built.tag),
                   .stamp = kept(own.stamp, built.stamp),
                   .module = kept(own.module, built.module),
                   .product = kept(own.product, own.module.empty() ? built.product : own.module),
                   .platform = kept(own.platform, built.platform)};
    fresh.rcsName = kept(std::string(KEYWORD_START).append(fresh.parts.tag) + KEYWORD_END);
    fresh.dumpVersionTag = kept(std::string(fresh.parts.tag).append("_").append(fresh.parts.stamp));
    current.store(&fresh, std::memory_order_release);
}

std::string_view rcsName() { return identity().rcsName; }

std::string_view buildStamp() { return identity().parts.stamp; }

std::string_view buildModuleName() { return identity().parts.module; }

std::string_view productName() { return identity().parts.product; }

std::string_view platformName() { return identity().parts.platform; }

std::string_view dumpVersionTag() { return identity().dumpVersionTag; }

std::string_view versionFromRcsName(std::string_view text) {
    const auto tag = tagOf(text);
    return CHECKF_AT(kNoKeyword, tag.has_value()) ? *tag : text;
}

std::string_view version() { return tagOf(rcsName()).value_or(rcsName()); }

} // namespace core
