// Items are found by their names, even if their hashes collide or wrap around.

#include "fuzz_input.h"
#include "internal/utl_hashindex.h"

#include <array>
#include <map>
#include <optional>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr std::array<uint32_t, 4> kHashes{0, 1, 0x55555555, 0xFFFFFFFF};
    using Name = std::pair<uint32_t, uint8_t>; // hash and rest

    fuzz::Input input(data, size);
    utl::detail::HashIndex index(size + 1, 2); // more than there will be names
    const auto other = index.addArea(1);
    const auto area = index.addArea(size);
    std::vector<Name> names;
    std::map<Name, uint32_t> expected;
    const auto named = [&names](const Name& name) {
        return [&names, name](uint32_t number) { return names.at(number) == name; };
    };
    while (!input.empty()) {
        const uint8_t choice = input.byte();
        const Name name{kHashes[choice % kHashes.size()] ^ (choice & 0x80 ? input.byte() : 0U),
                        input.byte()};
        const auto number = static_cast<uint32_t>(names.size());
        names.push_back(name);
        const auto known = expected.find(name);
        fuzz::require(index.find(area, name.first, named(name)) ==
                      (known != expected.end() ? std::optional(known->second) : std::nullopt));
        fuzz::require(index.insert(area, name.first, number, named(name)) ==
                      expected.emplace(name, number).first->second);
    }
    fuzz::require(index.size() == expected.size());
    for (const auto& [name, number] : expected)
        fuzz::require(index.find(area, name.first, named(name)) == number);
    fuzz::require(!index.find(other, 0, [](uint32_t) { return true; }));
    return 0;
}
