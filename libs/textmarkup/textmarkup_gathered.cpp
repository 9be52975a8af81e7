#include "internal/textmarkup_gathered.h"

#include "internal/textmarkup_characters.h"

namespace textmarkup {

void Gathered::clear() {
    d_slice = {};
    d_copied = false;
}

void Gathered::copy() {
    if (d_copied)
        return;
    d_copy.assign(d_slice);
    d_copied = true;
}

void Gathered::add(std::string_view piece) {
    if (!d_copied && d_slice.empty()) {
        d_slice = piece;
    } else if (!d_copied && d_slice.data() + d_slice.size() == piece.data()) {
        d_slice = {d_slice.data(), d_slice.size() + piece.size()};
    } else if (!piece.empty()) {
        addDecoded(piece);
    }
}

void Gathered::addDecoded(std::string_view piece) {
    copy();
    d_copy += piece;
}

void Gathered::addCharacter(uint32_t code) {
    copy();
    appendCharacter(d_copy, code);
}

} // namespace textmarkup
