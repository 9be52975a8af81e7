#pragma once

#include "textmarkup_attributes.h"

#include <cstddef>
#include <string>
#include <string_view>

/// How texts become part of XML and HTML documents.
namespace textmarkup {

/// For a text that is not cut.
inline constexpr size_t kNoLimit = static_cast<size_t>(-1);

/// `text` as the content of an element: the characters & < > ' " become entities; each
/// byte that is not part of well-formed UTF-8, and each character that XML does not
/// allow (control characters but tab, line feed and carriage return; U+FFFE; U+FFFF)
/// becomes U+FFFD. A result of more than `limit` bytes is cut between characters and
/// ends in "..."; below three bytes of room nothing is left.
std::string escaped(std::string_view text, size_t limit = kNoLimit);

/// What readers would change in content or in a value.
enum class Whitespace {
    Plain,           ///< stays as it is: readers turn CR and CR LF into LF
    KeepReturns,     ///< carriage returns become references
    KeepAllInValues, ///< tabs and line feeds, too
};
/// As `escaped`, behind what `out` has, with these for white space.
void appendEscaped(std::string& out, std::string_view text, Whitespace whitespace);

/// ` name="value"` for each; of those with one name the first. `nameOf` makes a name of
/// any text.
void appendAttributes(std::string& out, const Attributes& attributes,
                      std::string (*nameOf)(std::string_view));

/// `<!-- text -->`: of two hyphens in a row the second moves on by a blank.
void appendComment(std::string& out, std::string_view text);

} // namespace textmarkup
