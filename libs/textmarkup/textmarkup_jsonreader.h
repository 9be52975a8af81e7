#pragma once

#include "internal/textmarkup_strictreader.h"

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace textmarkup {

/// Reads one JSON value (RFC 8259) in UTF-8, with or without a byte-order mark. Whatever
/// the grammar does not have is an error.
///
///     {"a": [1, "x"]}    StartObject, StartArray (name "a"), Number, String, EndArray,
///                        EndObject, End
///
/// Members come in the order of the text, those with one name as often as they stand
/// there. The half of a surrogate pair in an escape becomes U+FFFD.
///
/// What the accessors return is valid until the next call of `next`, and as long as the
/// document; most are slices of it.
class JsonReader : public StrictReader {
public:
    /// The document must outlive the reader.
    explicit JsonReader(std::string_view document, const Limits& limits = {});
    template <std::same_as<std::string> Temporary>
    explicit JsonReader(const Temporary&&, const Limits& = {}) = delete; // it would be gone

    /// The next event; End and Error for ever once they came.
    Event next();

    /// At StartObject or StartArray: moves to its end. False after an error.
    [[nodiscard]] bool skip();

    /// Of the member whose value begins now; otherwise empty.
    std::string_view name() const { return d_name.view(); }

    /// Of String; of Number, Boolean and Null as it is written.
    std::string_view text() const { return d_content.view(); }

    /// At Boolean.
    bool boolean() const { return text() == "true"; }

    /// Of Number, the nearest; none beyond what a double holds, be it too large or too
    /// close to zero.
    std::optional<double> toDouble() const;

    /// Of Number, exactly; none with a fraction or an exponent, or out of range.
    std::optional<int64_t> toInt64() const;

    /// How many objects and arrays are open, one that starts or ends now among them.
    size_t depth() const { return d_open.size(); }

private:
    // They have failed when they yield false.
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

    std::string d_open;    ///< what closes each, innermost last
    bool d_isFirst = true; ///< nothing was read yet of the innermost
    Gathered d_name;
    Gathered d_content;
};

} // namespace textmarkup
