#pragma once

#include "internal/textmarkup_strictreader.h"

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace textmarkup {

/// Reads one JSON value (RFC 8259) in UTF-8, with or without a byte order mark. Anything
/// outside the grammar is an error.
///
///     {"a": [1, "x"]}    StartObject, StartArray (name "a"), Number, String, EndArray,
///                        EndObject, End
///
/// Members come in the order of the text, repeated ones each time. Half of a surrogate pair
/// in an escape becomes U+FFFD.
///
/// The results of the accessors are valid until the next call of `next` and as long as the
/// document; most are slices of it.
class JsonReader : public StrictReader {
public:
    /// The document must outlive the reader.
    explicit JsonReader(std::string_view document, const Limits& limits = {});
    template <std::same_as<std::string> Temporary>
    explicit JsonReader(const Temporary&&, const Limits& = {}) = delete; // it would be gone

    /// The next event. After End or Error, the same again.
    Event next();

    /// At StartObject or StartArray: moves to its end. False after an error.
    [[nodiscard]] bool skip();

    /// Of the member whose value begins now; empty otherwise.
    std::string_view name() const { return d_name.view(); }

    /// Of String; of Number, Boolean and Null as written.
    std::string_view text() const { return d_content.view(); }

    /// At Boolean.
    bool boolean() const { return text() == "true"; }

    /// Of Number: the nearest double; none if the number is too large, or too close to
    /// zero.
    std::optional<double> toDouble() const;

    /// Of Number: the exact value; none with a fraction or an exponent, or out of range.
    std::optional<int64_t> toInt64() const;

    /// The number of open objects and arrays, including one that starts or ends now.
    size_t depth() const { return d_open.size(); }

private:
    // These return false on failure.
    bool begin();
    bool readMember();
    bool readName();
    bool readValue();
    bool open(Event event, char closing);
    bool readString(Gathered& out);
    bool readEscape(Gathered& out);
    bool readNumber();
    bool readWord();

    bool skipDigits();
    std::optional<uint32_t> readCodeUnit();
    void skipBlanks() { d_cursor.takeWhile(&isBlank); }

    std::string d_open;    ///< the closing characters, innermost last
    bool d_isFirst = true; ///< nothing of the innermost has been read yet
    Gathered d_name;
    Gathered d_content;
};

} // namespace textmarkup
