#include "textmarkup_htmlelements.h"

#include <algorithm>

namespace textmarkup {
namespace {

constexpr std::string_view kVoid[] = {"area",  "base",  "basefont", "bgsound", "br",    "col",
                                      "embed", "frame", "hr",       "img",     "input", "keygen",
                                      "link",  "meta",  "param",    "source",  "track", "wbr"};
constexpr std::string_view kRawText[] = {"iframe", "noembed", "noframes", "script", "style", "xmp"};

template <size_t size>
bool isOneOf(const std::string_view (&names)[size], std::string_view name) {
    return std::ranges::find(names, name) != std::end(names);
}

} // namespace

bool isVoidElement(std::string_view name) { return isOneOf(kVoid, name); }

bool isRawTextElement(std::string_view name) { return isOneOf(kRawText, name); }

bool dropsFirstLineFeed(std::string_view name) {
    return name == "pre" || name == "textarea" || name == "listing";
}

} // namespace textmarkup
