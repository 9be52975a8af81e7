#pragma once

#include "textmarkup_attributes.h"

#include <cstddef>
#include <string>
#include <string_view>

/// How texts become part of XML and HTML documents.
namespace textmarkup {

/// For texts that are not cut.
inline constexpr size_t kNoLimit = static_cast<size_t>(-1);

/// `text` as the content of an element: the characters & < > ' " become entities. Each byte
/// that is not part of well-formed UTF-8 and each character that XML does not allow
/// (control characters except tab, line feed and carriage return; U+FFFE; U+FFFF) becomes
/// U+FFFD. A result of more than `limit` bytes is cut between characters and ends in "...";
/// with a limit below three bytes it is empty.
std::string escaped(std::string_view text, size_t limit = kNoLimit);

/// White space that readers would change in content or in a value.
enum class Whitespace {
    Plain,           ///< stays as it is: readers turn CR and CR LF into LF
    KeepReturns,     ///< carriage returns become references
    KeepAllInValues, ///< so do tabs and line feeds
};
/// The same, appended to `out`, with this treatment of white space.
void appendEscaped(std::string& out, std::string_view text, Whitespace whitespace);

/// ` name="value"` for each; of several with one name only the first. `nameOf` turns any
/// text into a name.
void appendAttributes(std::string& out, const Attributes& attributes,
                      std::string (*nameOf)(std::string_view));

/// `<!-- text -->`. A blank is put between two hyphens in a row.
void appendComment(std::string& out, std::string_view text);

} // namespace textmarkup
