#include "collect_store.h"

#include "collect_lines.h"
#include "core_log.h"
#include "utl_fileutils.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace collect {
namespace {

constexpr size_t kReadAtOnce = size_t{1} << 18U;
constexpr size_t kMaxLine = size_t{1} << 20U; // more than any report makes

/// Hands the whole lines of `text` to the table and leaves the rest in it.
uint64_t replayLines(std::string& text, Table& table) {
    uint64_t unreadable = 0;
    size_t start = 0;
    for (size_t end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        const std::string_view line = std::string_view(text).substr(start, end - start);
        if (!line.empty() && !replayLine(line, table))
            ++unreadable;
    }
    text.erase(0, start);
    return unreadable;
}

} // namespace

Store::Store(std::string folder, Limits limits)
    : d_folder(std::move(folder)), d_limits(limits), d_rotateAt(limits.maxSize) {}

std::string Store::path(int32_t number) const {
    const std::string current = d_folder + "/failures.jsonl";
    return number == 0 ? current : current + core::format(".%d", number);
}

bool Store::replay(Table& table) {
    // The first is missing when the program ended in the middle of a rotation.
    const std::string newest = utl::FileUtils::exists(path()) ? path() : path(1);
    if (!utl::FileUtils::exists(newest))
        return true;
    utl::File file;
    if (!file.openFile(newest, utl::File::kRead))
        return false;
    uint64_t unreadable = 0;
    std::string text;
    for (std::string chunk; file.readInto(chunk, kReadAtOnce) && !chunk.empty();) {
        text += chunk;
        unreadable += replayLines(text, table);
        if (text.size() > kMaxLine)
            text.assign(1, '?'); // the rest of the line is still to come
    }
    // A line that a crash or a full disk cut off must not spoil the next.
    d_lineIsOpen = !text.empty();
    if (unreadable > 0 || d_lineIsOpen)
        core::logFrom(core::kChannelWarn, "collect::Store::replay", "(%s) - skipped %u lines",
                      newest, unreadable + (d_lineIsOpen ? 1 : 0));
    return true;
}

bool Store::open(const Table& table) {
    if (!utl::FileUtils::createPath(d_folder))
        return false;
    return utl::FileUtils::exists(path()) ? openFile() : begin(table);
}

bool Store::openFile() {
    return d_file.openFile(path(), utl::File::kWrite | utl::File::kAppend) && d_file.size(d_size);
}

/// The new file is complete, with all that the table holds, or not there at all.
bool Store::begin(const Table& table) {
    std::string text;
    for (auto entry = table.entries().rbegin(); entry != table.entries().rend(); ++entry)
        text += lineOf(*entry);
    // Room for reports, even where the table alone is large.
    d_rotateAt = std::max<uint64_t>(d_limits.maxSize, 2 * text.size());
    return utl::File::createFromMemSafe(path(), text.data(), text.size()) && openFile();
}

void Store::rotate(const Table& table) {
    (void)d_file.close();
    d_lineIsOpen = false;
    for (int32_t number = d_limits.maxFiles - 1; number >= 1; --number) {
        if (utl::FileUtils::exists(path(number - 1)))
            (void)utl::FileUtils::renameFile(path(number - 1), path(number));
    }
    if (begin(table))
        return;
    // Goes on with the old file until it has grown by as much again.
    d_rotateAt = d_size + d_limits.maxSize;
    if (utl::FileUtils::renameFile(path(1), path()))
        (void)openFile();
}

bool Store::append(const Arrival& arrival, const Table& table) {
    if (!d_file.isOpen() && !openFile())
        return false;
    const std::string line = (d_lineIsOpen ? "\n" : "") + lineOf(arrival);
    const bool written = d_file.write(line.data(), line.size());
    d_lineIsOpen = !written;
    d_size += line.size();
    if (d_size > d_rotateAt)
        rotate(table);
    return written;
}

} // namespace collect
