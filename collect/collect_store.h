#pragma once

#include "collect_table.h"
#include "utl_file.h"

#include <cstdint>
#include <string>

namespace collect {

/// What is kept of the reports: failures.jsonl in a folder, with the lines that
/// collect_lines.h describes. Each is in the system's hands before the next report is
/// read.
///
/// A file that has grown above its limit is renamed to failures.jsonl.1, that one to
/// failures.jsonl.2 and so on. The new one begins with what the table holds, so that it
/// alone makes a table whole; the old ones are there for people.
class Store {
public:
    struct Limits {
        uint64_t maxSize = uint64_t{16} << 20U; ///< of a file, in bytes
        int32_t maxFiles = 5;                   ///< the one that is written included
    };

    explicit Store(std::string folder) : Store(std::move(folder), Limits{}) {}
    Store(std::string folder, Limits limits);

    /// Fills the table from what is kept. Lines that cannot be read are skipped and
    /// counted on WARN. Nothing kept yet is no failure.
    [[nodiscard]] bool replay(Table& table);

    /// Opens the file, after `replay`, to append to it; makes it, and the folder, when they are missing.
    [[nodiscard]] bool open(const Table& table);

    /// Appends a report that the table has already been given. False when it could not
    /// be written, which was logged.
    bool append(const Arrival& arrival, const Table& table);

private:
    std::string path(int32_t number = 0) const;
    bool begin(const Table& table);
    bool openFile();
    void rotate(const Table& table);

    const std::string d_folder;
    const Limits d_limits;
    utl::File d_file;
    uint64_t d_size = 0;       // of the file
    uint64_t d_rotateAt = 0;   // bytes
    bool d_lineIsOpen = false; // the file does not end with a whole line
};

} // namespace collect
