#pragma once

#include "collect_table.h"
#include "utl_file.h"

#include <cstdint>
#include <string>

namespace collect {

/// Keeps the reports in a folder's failures.jsonl, whose lines collect_lines.h describes.
/// Each report is in the system's hands before the next one is read.
///
/// A file above its limit is renamed to failures.jsonl.1, that one to failures.jsonl.2 and
/// so on. The new file begins with all that the table holds, so it is enough to restore the
/// table; the old ones are for people to read.
class Store {
public:
    struct Limits {
        uint64_t maxSize = uint64_t{16} << 20U; ///< of a file, in bytes
        int32_t maxFiles = 5;                   ///< including the one being written
    };

    explicit Store(std::string folder) : Store(std::move(folder), Limits{}) {}
    Store(std::string folder, Limits limits);

    /// Fills the table from what is kept. Unreadable lines are skipped and counted on WARN.
    /// Having nothing yet is no failure.
    [[nodiscard]] bool replay(Table& table);

    /// After `replay`: opens the file to append to it. Makes it, and the folder, if
    /// missing.
    [[nodiscard]] bool open(const Table& table);

    /// Appends a report that the table already has. False, after a log line, when it could
    /// not be written.
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
