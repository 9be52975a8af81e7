#include "core_guniquebuf.h"

#include "core_check.h"
#include "core_varargs.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>

namespace core {
namespace {

constexpr CheckSite kMallocFailed{"core_guniquebuf_inline.h", 142};
constexpr CheckSite kPastEnd{"core_guniquebuf.cpp", 75};
constexpr CheckSite kNoData{"core_guniquebuf.cpp", 83};
constexpr CheckSite kShrinkEmpty{"core_guniquebuf.cpp", 175};
constexpr CheckSite kShrinkTooFar{"core_guniquebuf.cpp", 189};
constexpr CheckSite kReallocFailed{"core_guniquebuf.cpp", 387};

} // namespace

// Here, so that users can be compiled without exceptions.
uint8_t* GUniqueBuf::allocate(uint64_t bytes) {
    const bool fits = bytes <= std::numeric_limits<uint32_t>::max();
    void* const mem = fits ? std::malloc(static_cast<size_t>(bytes)) : nullptr;
    if (!CHECKF_AT(kMallocFailed, mem != nullptr, format("failed mallocing %u bytes", bytes)))
        throw std::bad_alloc();
    return static_cast<uint8_t*>(mem);
}

void GUniqueBuf::reserve(uint32_t head, uint32_t tail) {
    if (head > headroom())
        growHead(head, tail);
    else if (tail > tailroom())
        growTail(tail);
}

void GUniqueBuf::growHead(uint32_t head, uint32_t tail) {
    // The whole old block is the new one's data, its spare bytes included.
    const uint32_t moreTail = std::max(tail, tailroom()) - tailroom();
    GUniqueBuf grown(d_mem, d_capacity, head - headroom(), moreTail);
    grown.d_data = grown.d_mem + head;
    grown.d_size = d_size;
    swap(grown);
}

void GUniqueBuf::growTail(uint32_t tail) {
    const uint32_t head = headroom();
    const uint64_t bytes = uint64_t{d_capacity} - tailroom() + tail;
    const bool fits = bytes <= std::numeric_limits<uint32_t>::max();
    void* const mem = fits ? std::realloc(d_mem, static_cast<size_t>(bytes)) : nullptr;
    if (!CHECKF_AT(kReallocFailed, mem != nullptr, format("%u", bytes)))
        throw std::bad_alloc();
    d_mem = static_cast<uint8_t*>(mem);
    d_data = d_mem + head;
    d_capacity = static_cast<uint32_t>(bytes);
}

void GUniqueBuf::adjust(int32_t delta) {
    if (d_mem == nullptr) {
        if (!CHECKF_AT(kShrinkEmpty, delta >= 0, format("%d,%d", 0, delta)))
            throw std::out_of_range("GUniqueBuf:adjust");
        *this = GUniqueBuf(static_cast<uint32_t>(delta));
        return;
    }
    if (!CHECKF_AT(kShrinkTooFar, int64_t{d_size} + delta >= 0,
                   format("%s, delta=%d,%d", describe(), 0, delta)))
        throw std::out_of_range("GUniqueBuf:adjust");
    if (delta > 0)
        reserve(0, static_cast<uint32_t>(delta));
    d_size += static_cast<uint32_t>(delta);
}

uint8_t* GUniqueBuf::bytePtrAt(uint32_t offset) {
    if (!CHECKF_AT(kPastEnd, d_size > offset, format("%d>=core_%d", offset, d_size)) &&
        d_size < offset)
        throw std::out_of_range("GUniqueBuf:workPtrAt");
    // An offset just past the end gets a pointer, unless there is no block.
    return CHECKF_AT(kNoData, d_data != nullptr) ? d_data + offset : nullptr;
}

std::string GUniqueBuf::describe() const {
    if (d_mem == nullptr)
        return "nullptr";
    if (d_data == d_mem && d_size == d_capacity)
        return format("%p:%d", d_data, d_size);
    return format("%p:%d (%p:%d+%d+%d)", d_data, d_size, d_mem, headroom(), d_size, tailroom());
}

} // namespace core
