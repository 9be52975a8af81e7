#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace utl {

/// Reads settings files: named sections of key and value, all of it UTF-8 text
/// that is compared byte by byte.
///
///     answer = 42              # before any header: section "root"
///     [NVR]                    ; from '#' or ';' outside quotes on: a comment
///     Address=10.0.0.2         # these three forms
///     Port 81                  # mean
///     Name = "My Camera"       # the same
///
/// A line's first two words count, split at '=' and blanks (a tab is none), where
/// double quotes group. Reading is lenient: what does not fit is skipped, and of a
/// repeated key the first value stays, with a line on WARN for each later one. A
/// section exists only if it has a property; a later header continues it.
///
/// Takes about one and a half times the file's size in memory, up to four times for keys
/// of a byte or two. Neither copied nor moved; one thread at a time.
class IniReader {
public:
    IniReader();
    ~IniReader();
    IniReader(const IniReader&) = delete;
    IniReader& operator=(const IniReader&) = delete;

    /// Replaces the content by a file's. False, with the reader empty, when the file
    /// is missing or empty, which is silent, or cannot be read, which the file layer
    /// logs. Files above utl::File::kMaxLoadSize count as unreadable. A byte order mark
    /// and NUL bytes, with which no word is what it looks like, are a line on WARN each.
    [[nodiscard]] bool load(const std::string& path);

    /// Replaces the content by that of `size` bytes, which are copied. True, unless they
    /// need more memory than there is, or are 4 GiB: then a line on WARN, and the reader
    /// is empty.
    bool parse(const char* bytes, size_t size);

    /// Makes it empty and not loaded.
    void clear();

    /// Whether the last load or parse ran to its end.
    bool loaded() const;

    /// Whether there is one of that name.
    bool hasSection(std::string_view name) const;
    bool hasProperty(std::string_view section, std::string_view key) const;

    /// Copies the value to `out`. False, with `out` unchanged, when there is none.
    bool get(std::string_view section, std::string_view key, std::string& out) const;

    /// All sections' properties, repeated keys not counted.
    size_t propertyCount() const;

private:
    class Table;

    void parseOwned(std::string text, const std::string& path);

    std::optional<std::string_view> find(std::string_view section, std::string_view key) const;

    std::unique_ptr<Table> d_table; // null while nothing is loaded
};

} // namespace utl
