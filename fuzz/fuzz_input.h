#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// Takes small decisions from the front of a fuzzer's input; at its end come zeros and empty texts.
class Input {
public:
    Input(const uint8_t* data, size_t size) : d_data(data), d_size(size) {}

    bool empty() const { return d_size == 0; }
    uint8_t byte() { return empty() ? 0 : *take(1); }
    uint64_t number() {
        uint64_t value = 0;
        for (int i = 0; i < 8; ++i)
            value = value << 8 | byte();
        return value;
    }
    std::string text(size_t atMost) {
        const size_t wanted = byte();
        return bytes(std::min(wanted, atMost));
    }
    std::string rest() { return bytes(d_size); }

private:
    std::string bytes(size_t size) {
        size = std::min(size, d_size);
        const uint8_t* const start = take(size);
        return {start, start + size};
    }
    const uint8_t* take(size_t size) {
        const uint8_t* const start = d_data;
        d_data += size;
        d_size -= size;
        return start;
    }

    const uint8_t* d_data;
    size_t d_size;
};

/// Ends the program if the condition is false; the fuzzer keeps that input.
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace fuzz
