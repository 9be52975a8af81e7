#include "utl_hashindex.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace {

TEST(HashIndex, TellsEqualHashesApart) {
    const std::vector<std::string> names{"a", "b", "c", "d", "e"};
    const auto named = [&](const std::string& name) {
        return [&names, name](uint32_t number) { return names.at(number) == name; };
    };
    for (const uint32_t hash : {0U, 0x55555555U, 0xFFFFFFFFU}) { // the last ones wrap around
        utl::detail::HashIndex index(names.size());
        for (uint32_t number = 0; number < names.size(); ++number)
            EXPECT_EQ(index.insert(hash, number, named(names[number])), number);
        EXPECT_EQ(index.insert(hash, 77, named("a")), 0U) << "the first one stays";
        EXPECT_EQ(index.size(), names.size());
        for (uint32_t number = 0; number < names.size(); ++number)
            EXPECT_EQ(index.find(hash, named(names[number])), number);
        EXPECT_EQ(index.find(hash, named("missing")), std::nullopt);
        EXPECT_EQ(index.find(~hash, [](uint32_t) { return true; }), std::nullopt);
    }
}

} // namespace
