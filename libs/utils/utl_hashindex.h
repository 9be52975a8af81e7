#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace utl::detail {

/// Finds items that are kept elsewhere, numbered from 0, by the hash of their names.
/// Made for all items at once, it takes eight bytes for each; a slot's bits that the
/// number leaves free hold a part of the hash, so that hardly any other name is
/// looked at. Not for other modules than utl_inireader.
class HashIndex {
public:
    /// One that can only be assigned to.
    HashIndex() = default;

    /// With room for `count` items, fewer than 2^31.
    explicit HashIndex(size_t count)
        : d_numberBits(static_cast<unsigned>(std::bit_width(count))), d_slots(2 * count + 1) {}

    size_t size() const { return d_size; }

    /// Starts to fetch what `insert` or `find` will need.
    void prefetch(uint32_t hash) const { __builtin_prefetch(&d_slots[slotOf(hash)]); }

    /// Adds the item unless there is one with the same name, and returns the number of
    /// the one that is in. `same(number)` says whether a number's name is the one that
    /// `hash` was made of.
    template <typename Same>
    uint32_t insert(uint32_t hash, uint32_t number, Same same) {
        uint32_t& entry = d_slots[search(hash, same)];
        if (entry == 0) {
            entry = tagOf(hash) | (number + 1);
            ++d_size;
        }
        return numberOf(entry);
    }

    template <typename Same>
    std::optional<uint32_t> find(uint32_t hash, Same same) const {
        const uint32_t entry = d_slots[search(hash, same)];
        return entry == 0 ? std::nullopt : std::optional(numberOf(entry));
    }

private:
    // A slot holds the number plus one, or 0 when it is free, and above that the tag:
    // the hash's low bits, since its high bits choose the slot.
    uint32_t numberMask() const { return (uint32_t{1} << d_numberBits) - 1; }
    uint32_t tagOf(uint32_t hash) const { return hash << d_numberBits; }
    uint32_t numberOf(uint32_t entry) const { return (entry & numberMask()) - 1; }
    size_t slotOf(uint32_t hash) const {
        return static_cast<size_t>(uint64_t{hash} * d_slots.size() >> 32);
    }

    /// The slot of the item, or the free one where it belongs.
    template <typename Same>
    size_t search(uint32_t hash, Same same) const {
        size_t slot = slotOf(hash);
        for (uint32_t entry = 0; (entry = d_slots[slot]) != 0;) {
            if (((entry ^ tagOf(hash)) & ~numberMask()) == 0 && same(numberOf(entry)))
                break;
            if (++slot == d_slots.size())
                slot = 0;
        }
        return slot;
    }

    unsigned d_numberBits = 0;
    std::vector<uint32_t> d_slots; // half of them free
    size_t d_size = 0;
};

} // namespace utl::detail
