#pragma once

#include <cstdint>
#include <string_view>

/// What HTML says about some elements; names are in lower case.
namespace textmarkup {

/// `br` and others that hold nothing and have no end tag.
bool isVoidElement(std::string_view name);

/// What an element holds.
enum class HtmlContent : uint8_t {
    Markup,
    References, ///< text with references, as in `title`
    Raw,        ///< text as it is, as in `style`
    Script,     ///< the same, with rules of its own for where it ends
    Rest,       ///< all that follows in the document
};
HtmlContent contentOf(std::string_view name);

/// `pre` and others, whose text loses a line feed right behind the tag.
bool dropsFirstLineFeed(std::string_view name);

/// Whether an open element ends before the start tag of another, and whether those
/// around it stay open then.
bool endsBefore(std::string_view open, std::string_view starting);
bool shieldsBefore(std::string_view open, std::string_view starting);

/// Whether an end tag closes nothing around this open element of another name.
bool shieldsFromEndTag(std::string_view open, std::string_view ending);

} // namespace textmarkup
