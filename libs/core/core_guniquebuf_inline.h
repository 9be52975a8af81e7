#pragma once

#include "core_guniquebuf.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace core {

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
