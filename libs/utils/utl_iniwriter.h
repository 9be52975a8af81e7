#pragma once

#include "core_guniquebuf.h"

#include <string>
#include <vector>

namespace utl {

/// Writes settings files for utl::IniReader: sections and entries in the order in which
/// they were added, repeated ones each time.
///
///     utl::IniWriter ini;
///     ini.addSection("NVR");
///     ini.add("Address", "10.0.0.2");
///     if (!ini.save(path)) ...
///
/// A value of several words is put in double quotes; nothing is escaped. A value with '#',
/// ';', '=' or quotes reads back as less, and an empty one not at all. One thread at a
/// time.
class IniWriter {
public:
    /// Starts in a section without a name, which has no header.
    IniWriter();

    /// Begins a section; a name that exists is written again.
    void addSection(std::string name);

    /// Adds to the last section.
    void add(std::string key, std::string value);

    /// The file's text; lines end in "\n". Empty if there is no text, or if there was too
    /// little memory for anything added or for the whole: no part passes for all of it.
    core::GUniqueBuf serialise() const;

    /// Replaces the file by utl::File::createFromMemSafe, which logs failures. False,
    /// without touching the file, if there is no text.
    [[nodiscard]] bool save(const std::string& path) const;

private:
    struct Entry {
        std::string key;
        std::string value;
    };
    struct Section {
        std::string name;
        std::vector<Entry> entries;
    };

    std::vector<Section> d_entries;
    bool d_isWhole = true; // nothing was lost for lack of memory
};

} // namespace utl
