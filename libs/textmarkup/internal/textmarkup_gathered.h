#pragma once

#include <array>
#include <string>
#include <string_view>

namespace textmarkup {

/// For each ASCII byte, whether it stands for itself.
using PlainBytes = std::array<bool, 128>;

/// A text that a reader puts together piece by piece: a slice of the input while the pieces
/// are adjacent there, a copy from the first decoded piece on.
class Gathered {
public:
    void clear();

    /// A piece of the input.
    void add(std::string_view piece);

    /// What a piece of the input stands for.
    void addDecoded(std::string_view piece);
    void addCharacter(uint32_t code);

    /// Valid until it changes.
    std::string_view view() const { return d_copied ? std::string_view(d_copy) : d_slice; }
    size_t size() const { return view().size(); }
    bool empty() const { return view().empty(); }

private:
    void copy();

    std::string_view d_slice;
    std::string d_copy;
    bool d_copied = false;
};

} // namespace textmarkup
