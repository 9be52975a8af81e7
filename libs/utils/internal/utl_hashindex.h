#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace utl::detail {

/// Finds items that are stored elsewhere, numbered from 0, by the hash of their names.
/// Built for all items at once, it takes six bytes for each. A slot's bits that the number
/// leaves free hold a part of the hash, so hardly any other name is compared. The slots are
/// split into areas, since items that belong together are found sooner when they are close
/// together; each item is looked for only in its own area. For utl_inireader only.
class HashIndex {
public:
    struct Area {
        uint32_t begin;
        uint32_t size;
    };

    /// Can only be assigned to.
    HashIndex() = default;

    /// For `count` items in all, fewer than 2^31, in this many areas.
    HashIndex(size_t count, size_t areas)
        : d_numberBits(static_cast<unsigned>(std::bit_width(count))) {
        d_slots.reserve(count + count / 2 + areas);
    }

    /// Room for `count` more items.
    Area addArea(size_t count) {
        const Area area{static_cast<uint32_t>(d_slots.size()),
                        static_cast<uint32_t>(count + count / 2 + 1)};
        d_slots.resize(d_slots.size() + area.size);
        return area;
    }

    size_t size() const { return d_size; }

    /// Adds the item unless one has the same name, and returns the number of the one that
    /// is in. `same(number)` says whether that number's name is the one that `hash` was
    /// made of.
    template <typename Same>
    uint32_t insert(Area area, uint32_t hash, uint32_t number, const Same& same) {
        uint32_t& entry = d_slots[search(area, hash, same)];
        if (entry == 0) {
            entry = tagOf(hash) | (number + 1);
            ++d_size;
        }
        return numberOf(entry);
    }

    template <typename Same>
    std::optional<uint32_t> find(Area area, uint32_t hash, const Same& same) const {
        const uint32_t entry = d_slots[search(area, hash, same)];
        return entry == 0 ? std::nullopt : std::optional(numberOf(entry));
    }

private:
    // A slot holds the number plus one, or 0 when it is free, and above that the tag:
    // the hash's low bits, since its high bits choose the slot.
    uint32_t numberMask() const { return (uint32_t{1} << d_numberBits) - 1; }
    uint32_t tagOf(uint32_t hash) const { return hash << d_numberBits; }
    uint32_t numberOf(uint32_t entry) const { return (entry & numberMask()) - 1; }
    static size_t slotOf(Area area, uint32_t hash) {
        return area.begin + static_cast<uint32_t>(uint64_t{hash} * area.size >> 32);
    }

    /// The slot of the item, or the free one where it belongs.
    template <typename Same>
    size_t search(Area area, uint32_t hash, const Same& same) const {
        size_t slot = slotOf(area, hash);
        for (uint32_t entry = 0; (entry = d_slots[slot]) != 0;) {
            if (((entry ^ tagOf(hash)) & ~numberMask()) == 0 && same(numberOf(entry)))
                break;
            if (++slot == size_t{area.begin} + area.size)
                slot = area.begin;
        }
        return slot;
    }

    unsigned d_numberBits = 0;
    std::vector<uint32_t> d_slots; // a third of them free
    size_t d_size = 0;
};

} // namespace utl::detail
