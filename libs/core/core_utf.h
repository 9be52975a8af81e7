#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The program's text, UTF-8, and what the system's own calls take instead.
///
/// Well-formed UTF-8 here has no overlong forms, no surrogates and nothing above
/// U+10FFFF. A failed conversion leaves its output unchanged. Nothing is logged,
/// see core::Wrapper for that. Any thread.
namespace core {

/// UTF-16 in wchar_t on Windows, the same bytes on Linux.
using SystemText = std::filesystem::path::string_type;
/// A view of it.
using SystemTextView = std::basic_string_view<SystemText::value_type>;

/// Whether the text is well-formed UTF-8.
bool isValidUtf8(std::string_view text);

/// False when `text` is not well-formed UTF-8.
[[nodiscard]] bool fromUtf8(std::string_view text, SystemText& out);

/// False when `text` is not well-formed: a lone surrogate, or bad bytes.
[[nodiscard]] bool toUtf8(SystemTextView text, std::string& out);

/// Makes a path of the program one that the system's calls take: converted by
/// `fromUtf8`, and on Linux every '\' becomes '/'. False also for a path with a
/// NUL character, which the calls would silently cut there.
[[nodiscard]] bool pathFromUtf8(std::string_view path, SystemText& out);

} // namespace core
