#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace core {

/// The names of an enumeration: from value to name and back, in constant time.
///
///     const auto colours = core::EnumNames("Colour", 0, "Unknown").add("Red", 1).add("Green", 2);
///     colours.nameOf(2);      // "Green"
///     colours.valueOf("Red"); // 1
///
/// Names and values that are missing give the unknown pair, which is not an entry itself.
/// Copies are independent; an object that was moved from can only be assigned to or
/// destroyed. Any number of threads may read at once.
class EnumNames {
public:
    /// An empty table for the type, and its unknown pair.
    EnumNames(std::string typeName, int32_t unknownValue, std::string unknownName);
    EnumNames(const EnumNames& other);
    EnumNames(EnumNames&& other) noexcept;
    EnumNames& operator=(EnumNames other) noexcept;
    ~EnumNames();

    /// Makes room for that many pairs; worth it for large tables only. Returns this object.
    EnumNames& reserve(size_t pairs) &;
    EnumNames&& reserve(size_t pairs) && { return std::move(reserve(pairs)); }

    /// Adds a pair and returns this object, so that a whole table is one expression.
    /// A name or a value that is there already: a failed check, and the new pair is
    /// dropped.
    EnumNames& add(std::string_view name, int32_t value) &;
    EnumNames&& add(std::string_view name, int32_t value) && { return std::move(add(name, value)); }

    /// The enumeration's name.
    const std::string& typeName() const { return d_typeName; }
    /// How many pairs there are, without the unknown one; whether one has this name or
    /// value.
    size_t size() const;
    bool contains(std::string_view name) const;
    bool contains(int32_t value) const;

    /// The value of a name, the unknown value for a name that is missing.
    int32_t valueOf(std::string_view name) const;

    /// The name of a value, the unknown name for a value that is missing. Valid until
    /// this object is added to or destroyed.
    std::string_view nameOf(int32_t value) const;

private:
    struct Table;

    std::string d_typeName;
    int32_t d_unknownValue;
    std::string d_unknownName;
    std::unique_ptr<Table> d_table; // null in what was moved from
};

} // namespace core
