#pragma once

#include <string_view>

/// What HTML says about some elements; names are in lower case.
namespace textmarkup {

/// `br` and others that hold nothing and have no end tag.
bool isVoidElement(std::string_view name);

/// `script`, `style` and others, whose text ends at their end tag and holds no references.
bool isRawTextElement(std::string_view name);

/// `pre` and others, whose text loses a line feed right behind the tag.
bool dropsFirstLineFeed(std::string_view name);

} // namespace textmarkup
