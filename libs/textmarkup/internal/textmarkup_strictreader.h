#pragma once

#include "internal/textmarkup_cursor.h"
#include "internal/textmarkup_gathered.h"
#include "textmarkup_reader.h"

#include <string>
#include <string_view>
#include <utility>

namespace textmarkup {

/// The common part of XmlReader and JsonReader, which stop at the first error.
class StrictReader {
public:
    StrictReader(const StrictReader&) = delete;
    StrictReader& operator=(const StrictReader&) = delete;

    /// Where the event begins in the document, in bytes.
    size_t offset() const { return d_start; }

    /// After Event::Error.
    const Error& error() const { return d_error; }

protected:
    /// The document must outlive the reader.
    StrictReader(std::string_view document, const Limits& limits)
        : d_cursor(document), d_limits(limits) {}
    ~StrictReader() = default;

    /// Whether `next` has nothing left to read.
    bool isOver() const { return d_event == Event::Error || (d_event == Event::End && d_begun); }

    /// These return false on failure; `fail` always does.
    bool fail(size_t at, std::string message);
    bool failHere(std::string message) { return fail(d_cursor.at(), std::move(message)); }
    bool skipByteOrderMark();
    bool fits(const Gathered& content);
    bool fitsOneMore(size_t depth);

    /// Gathers bytes that stand for themselves, up to one that is not in `plain` or a
    /// non-ASCII character that is not `allowed`.
    bool readPlain(const PlainBytes& plain, bool (*allowed)(uint32_t), Gathered& out);

    Cursor d_cursor;
    Limits d_limits;
    size_t d_start = 0;
    Event d_event = Event::End;
    bool d_begun = false;

private:
    Error d_error;
};

/// A text in quotes for messages, shortened.
std::string quoted(std::string_view text);

} // namespace textmarkup
