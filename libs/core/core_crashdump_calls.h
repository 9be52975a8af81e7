#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// How the guard has the dump written. Not for callers, and not installed.
namespace core::detail {

/// Text in memory of its own, for what runs after a crash and may not ask the heap. What
/// does not fit is left out.
template <size_t Size>
class FixedText {
public:
    FixedText& operator<<(std::string_view text) {
        d_size += text.copy(d_text.data() + d_size, Size - 1 - d_size);
        return *this;
    }
    FixedText& operator<<(std::integral auto number) { return add(number, 10); }
    template <std::integral T>
    FixedText& addHex(T number) {
        *this << "0x";
        return add(number, 16);
    }
    void replace(char from, char to) {
        for (size_t i = 0; i < d_size; ++i)
            d_text[i] = d_text[i] == from ? to : d_text[i];
    }

    std::string_view view() const { return {d_text.data(), d_size}; }
    const char* c_str() const { return d_text.data(); }

private:
    FixedText& add(std::integral auto number, int base) {
        std::array<char, 24> digits;
        const auto end = std::to_chars(digits.begin(), digits.end(), number, base).ptr;
        return *this << std::string_view(digits.data(), static_cast<size_t>(end - digits.data()));
    }

    std::array<char, Size> d_text{}; // always ends with a NUL
    size_t d_size = 0;
};

using PathText = FixedText<4096>;

/// Where a dump goes, with '\\' between folders on Linux, too.
struct DumpPlace {
    PathText folder;
    PathText file;
};

/// The place of this program's dumps; neither allocates nor locks.
DumpPlace dumpPlace(std::string_view executable);

struct DumpResult {
    bool written = false;
    uint32_t error = 0; ///< the system's number, if it was not
};

/// Makes the folder's last level and writes the dump over the file. `fault` is that of
/// core::writeCrashDump.
DumpResult writeDump(const DumpPlace& place, void* fault);

/// Writes the dump of a fault from where hardly anything can be had. On Windows `fault` is
/// the EXCEPTION_POINTERS of a thread at the end of its stack; another thread does the work.
/// On Linux it is a SignalFault, in the signal's handler; nothing is allocated or locked.
/// There the safest goes first: should the report meet a fault itself, what was written
/// till then counts, and `result` is up to date.
void writeDumpInDistress(void* fault, DumpResult& result);

/// What a signal's handler is given. The context is altered where that lets the stack be
/// walked.
struct SignalFault {
    const void* info; ///< siginfo_t
    void* context;    ///< ucontext_t
};

/// The system's text for an error.
std::string errorText(uint32_t error);

} // namespace core::detail
