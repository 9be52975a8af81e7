#pragma once

#include "core_check.h"
#include "core_guniquebuf.h"
#include "core_varargs.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace core {

namespace detail {
inline constexpr CheckSite kMallocFailed{"core_guniquebuf_inline.h", 142};
} // namespace detail

inline uint8_t* GUniqueBuf::allocate(uint64_t bytes) {
    const bool fits = bytes <= std::numeric_limits<uint32_t>::max();
    void* const mem = fits ? std::malloc(static_cast<size_t>(bytes)) : nullptr;
    if (!CHECKF_AT(detail::kMallocFailed, mem != nullptr,
                   format("failed mallocing %u bytes", bytes)))
        throw std::bad_alloc();
    return static_cast<uint8_t*>(mem);
}

inline GUniqueBuf::GUniqueBuf(uint32_t size, uint32_t headroom, uint32_t tailroom) {
    const uint64_t bytes = uint64_t{size} + headroom + tailroom;
    if (bytes == 0)
        return;
    d_mem = allocate(bytes);
    d_capacity = static_cast<uint32_t>(bytes);
    d_data = d_mem + headroom;
    d_size = size;
}

inline GUniqueBuf::GUniqueBuf(const void* source, uint32_t size, uint32_t headroom,
                              uint32_t tailroom)
    : GUniqueBuf(size, headroom, tailroom) {
    if (source != nullptr && size != 0)
        std::memcpy(d_data, source, size);
}

inline GUniqueBuf::GUniqueBuf(GUniqueBuf&& other) noexcept { swap(other); }

inline GUniqueBuf& GUniqueBuf::operator=(GUniqueBuf&& other) noexcept {
    GUniqueBuf taken(std::move(other));
    swap(taken);
    return *this;
}

inline GUniqueBuf::~GUniqueBuf() { std::free(d_mem); }

inline void GUniqueBuf::swap(GUniqueBuf& other) noexcept {
    std::swap(d_mem, other.d_mem);
    std::swap(d_capacity, other.d_capacity);
    std::swap(d_data, other.d_data);
    std::swap(d_size, other.d_size);
}

inline void GUniqueBuf::zeroFill() {
    if (d_size != 0)
        std::memset(d_data, 0, d_size);
}

} // namespace core
