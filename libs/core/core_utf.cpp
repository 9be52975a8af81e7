#include "core_utf.h"

#include "utf_character.h"

namespace core {

bool isValidUtf8(std::string_view text) { return utf::isWellFormed(text); }

} // namespace core
