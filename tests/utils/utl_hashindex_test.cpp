#include "utl_hashindex.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace {

/// Inserts every name, all of the same hash, and finds each again by comparing names.
void expectAllFound(const std::vector<std::string>& names, uint32_t hash) {
    const auto named = [&](const std::string& name) {
        return [&names, &name](uint32_t number) { return names.at(number) == name; };
    };
    utl::detail::HashIndex index(names.size());
    for (uint32_t number = 0; number < names.size(); ++number)
        EXPECT_EQ(index.insert(hash, number, named(names[number])), number);
    EXPECT_EQ(index.insert(hash, 77, named(names.front())), 0U) << "the first one stays";
    EXPECT_EQ(index.size(), names.size());
    for (uint32_t number = 0; number < names.size(); ++number)
        EXPECT_EQ(index.find(hash, named(names[number])), number);
    EXPECT_EQ(index.find(hash, named("missing")), std::nullopt);
    EXPECT_EQ(index.find(~hash, [](uint32_t) { return true; }), std::nullopt);
}

TEST(HashIndex, TellsEqualHashesApart) {
    for (const uint32_t hash : {0U, 1U, 0x55555555U, 0x80000000U, 0xFFFFFFFFU})
        expectAllFound({"a", "b", "c", "d", "e"}, hash); // the last ones wrap around
}

TEST(HashIndex, AsksForFewNames) {
    utl::detail::HashIndex index(1000);
    int asked = 0;
    const auto differs = [&](uint32_t) { return ++asked == 0; };
    for (uint32_t number = 0; number < 1000; ++number)
        index.insert(number * 0x9E3779B9U, number, differs);
    EXPECT_EQ(index.size(), 1000U);
    EXPECT_LT(asked, 10) << "the tags tell most names apart";
}

TEST(HashIndex, WithoutItemsFindsNone) {
    EXPECT_EQ(utl::detail::HashIndex(0).find(7, [](uint32_t) { return true; }), std::nullopt);
}

} // namespace
