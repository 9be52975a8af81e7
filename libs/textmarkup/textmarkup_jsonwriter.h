#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace textmarkup {

/// A JSON value that is no object or array. Texts are kept as views.
class JsonScalar {
public:
    /// What it may be.
    using Variant = std::variant<std::nullptr_t, bool, int64_t, uint64_t, double, std::string_view>;

    /// For every type that JSON has, or that fits into one.
    JsonScalar(std::nullptr_t value) : d_value(value) {}
    template <std::same_as<bool> T>
    JsonScalar(T value) : d_value(value) {}
    template <std::signed_integral T>
    JsonScalar(T value) : d_value(int64_t{value}) {}
    template <std::unsigned_integral T>
    requires(!std::same_as<T, bool>) JsonScalar(T value) : d_value(uint64_t{value}) {}
    JsonScalar(double value) : d_value(value) {}
    JsonScalar(std::string_view value) : d_value(value) {}
    JsonScalar(const std::string& value) : d_value(std::string_view(value)) {}
    JsonScalar(const char* value) : d_value(std::string_view(value)) {}

    /// A text must outlive it.
    const Variant& variant() const { return d_value; }

private:
    Variant d_value;
};

/// Writes one JSON value, on one line and without blanks. Every parser accepts it, whatever
/// texts the writer is given and in whatever order it is called.
///
///     JsonWriter writer;
///     writer.openObject();
///     writer.member("message", message);
///     writer.openArray("lines");
///     writer.value(7);
///     file.write(writer.finish());
///
/// Strings are escaped; each byte that is not part of well-formed UTF-8 becomes U+FFFD. '<'
/// is escaped too, so that the text may stand in a script of a page. Numbers are the
/// shortest that read back the same; NaN and infinities become null. In an object, a value
/// without a name gets the empty name; elsewhere a name is left out. Anything after the one
/// value is left out.
class JsonWriter {
public:
    /// Opens an object or array: in an array, or as the one value; with a name, in an
    /// object.
    void openObject();
    void openObject(std::string_view name);
    void openArray();
    void openArray(std::string_view name);

    /// Closes the innermost object or array.
    void close();

    /// In an array.
    void value(const JsonScalar& value);

    /// In an object. Names may repeat.
    void member(std::string_view name, const JsonScalar& value);

    /// Closes what is open and returns the text, "null" if nothing was written; the writer
    /// is then as new.
    std::string finish();

private:
    bool begin(std::string_view name);
    void open(std::string_view name, char opening, char closing);

    std::string d_text;
    std::string d_closing; ///< the closing characters, innermost last
    bool d_isFirst = true; ///< the innermost object or array is empty so far
};

} // namespace textmarkup
