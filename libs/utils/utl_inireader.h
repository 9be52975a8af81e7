#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace utl {

/// Reads settings files: named sections of keys and values, all of it UTF-8 text that is
/// compared byte by byte.
///
///     answer = 42              # before any header: section "root"
///     [NVR]                    ; from '#' or ';' outside quotes on: a comment
///     Address=10.0.0.2         # these three forms
///     Port 81                  # mean
///     Name = "My Camera"       # the same
///
/// The first two words of a line count. Words are separated by '=' and blanks (not tabs);
/// double quotes group. Reading is lenient: lines that do not fit are skipped, and of a
/// repeated key the first value counts; each later one logs a line on WARN. A section
/// exists only if it has a property; a later header continues it.
///
/// Takes about one and a half times the file's size in memory, up to four times if keys
/// have only a byte or two. Not copied or moved; one thread at a time.
class IniReader {
public:
    IniReader();
    ~IniReader();
    IniReader(const IniReader&) = delete;
    IniReader& operator=(const IniReader&) = delete;

    /// Replaces the content by a file's. False, with the reader empty, if the file is
    /// missing or empty, which is silent, or cannot be read, which the file layer logs.
    /// Files above utl::File::kMaxLoadSize cannot be read. A byte order mark and NUL bytes,
    /// which make words differ from what they look like, log a line on WARN each.
    [[nodiscard]] bool load(const std::string& path);

    /// Replaces the content by a copy of `size` bytes. True, unless they need more memory
    /// than there is, or are 4 GiB or more: then it logs a line on WARN and is empty.
    bool parse(const char* bytes, size_t size);

    /// Makes it empty and not loaded.
    void clear();

    /// Whether the last load or parse was completed.
    bool loaded() const;

    /// Whether there is one with that name.
    bool hasSection(std::string_view name) const;
    bool hasProperty(std::string_view section, std::string_view key) const;

    /// Copies the value to `out`. False, with `out` unchanged, if there is none.
    bool get(std::string_view section, std::string_view key, std::string& out) const;

    /// The properties of all sections, without repeated keys.
    size_t propertyCount() const;

private:
    class Table;

    void parseOwned(std::string text, const std::string& path);

    std::optional<std::string_view> find(std::string_view section, std::string_view key) const;

    std::unique_ptr<Table> d_table; // null while nothing is loaded
};

} // namespace utl
