#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

namespace core {

/// Owning byte block with spare room at both ends, so that a header can be put
/// before the data without moving it:
///
///     [ headroom | size() bytes of data | tailroom ]
///
/// All lengths are bytes, and a block has at most 2^32 - 1 of them. Move-only; a
/// moved-from buffer is empty and usable. New bytes are not initialised. One thread
/// at a time.
///
/// Misuse is a failed check, then std::out_of_range; no memory, or a block too large,
/// is a failed check, then std::bad_alloc. Either way nothing has changed.
class GUniqueBuf {
public:
    /// Without a block: every length is 0, every pointer null.
    GUniqueBuf() = default;

    /// Allocates nothing when all lengths are 0.
    explicit GUniqueBuf(uint32_t size, uint32_t headroom = 0, uint32_t tailroom = 0);

    /// The same, with `size` bytes copied from `source` unless that is null.
    GUniqueBuf(const void* source, uint32_t size, uint32_t headroom, uint32_t tailroom);

    GUniqueBuf(GUniqueBuf&& other) noexcept;
    GUniqueBuf& operator=(GUniqueBuf&& other) noexcept;
    ~GUniqueBuf();

    /// Valid until the buffer reallocates (`reserve`, a growing `adjust`), is moved
    /// from or destroyed.
    uint8_t* data() { return d_data; }
    const uint8_t* data() const { return d_data; }
    uint32_t size() const { return d_size; }
    bool empty() const { return d_size == 0; } ///< no data; there may be room
    uint32_t capacity() const { return d_capacity; }
    uint32_t headroom() const { return static_cast<uint32_t>(d_data - d_mem); }
    uint32_t tailroom() const { return d_capacity - d_size - headroom(); }

    /// Sets all data bytes to 0.
    void zeroFill();

    /// Makes room for at least `head` bytes before and `tail` after the data, which is
    /// unchanged. Never shrinks. When headroom was missing, the data moves to a new
    /// block with exactly `head` bytes of it.
    void reserve(uint32_t head, uint32_t tail);

    /// Adds `delta` bytes at the data's end, or removes them if it is negative. A
    /// negative size is misuse.
    void adjust(int32_t delta);

    /// The byte where a T is to be read or written, by std::memcpy, since it need not be
    /// aligned. All of the T must lie in the data, but only its first byte is checked,
    /// and `offset` == size() is a failed check without an exception.
    template <typename T>
    requires std::is_trivially_copyable_v<T> uint8_t* workPtrAt(uint32_t offset) {
        return bytePtrAt(offset);
    }

    /// For debugging: "nullptr", "DATA:SIZE" where there is no spare room, otherwise
    /// "DATA:SIZE (BLOCK:HEADROOM+SIZE+TAILROOM)".
    std::string describe() const;

private:
    static uint8_t* allocate(uint64_t bytes);
    void swap(GUniqueBuf& other) noexcept;
    void growHead(uint32_t head, uint32_t tail);
    void growTail(uint32_t tail);
    uint8_t* bytePtrAt(uint32_t offset);

    uint8_t* d_mem = nullptr; // from malloc
    uint32_t d_capacity = 0;
    uint8_t* d_data = nullptr; // null exactly when d_mem is
    uint32_t d_size = 0;
};

} // namespace core

#include "core_guniquebuf_inline.h"
