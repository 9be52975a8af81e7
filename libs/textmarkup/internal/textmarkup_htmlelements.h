#pragma once

#include <cstdint>
#include <string_view>

/// What HTML says about certain elements. Names are in lower case.
namespace textmarkup {

/// `br` and others, which have no content and no end tag.
bool isVoidElement(std::string_view name);

/// What an element contains.
enum class HtmlContent : uint8_t {
    Markup,
    References, ///< text with references, as in `title`
    Raw,        ///< text as it is, as in `style`
    Script,     ///< the same, with its own rules for where it ends
    Rest,       ///< everything up to the end of the document
};
HtmlContent contentOf(std::string_view name);

/// `pre` and others, whose text loses a line feed directly after the tag.
bool dropsFirstLineFeed(std::string_view name);

/// Whether an open element ends before the start tag of another one, and whether the
/// elements around it stay open then.
bool endsBefore(std::string_view open, std::string_view starting);
bool shieldsBefore(std::string_view open, std::string_view starting);

/// Whether an end tag of another name closes nothing outside this open element.
bool shieldsFromEndTag(std::string_view open, std::string_view ending);

} // namespace textmarkup
