#pragma once

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace textmarkup {

/// A name and its value: views of unescaped texts.
struct Attribute {
    std::string_view name;  ///< as written
    std::string_view value; ///< without quotes

    bool operator==(const Attribute&) const = default;
};

/// The attributes of one tag, in order. A view, which can also be of a list in braces:
///
///     writer.open("a", {{"href", address}, {"title", text}});
class Attributes {
public:
    Attributes() = default;
    /// Keeps a view: the list must outlive it.
    Attributes(std::initializer_list<Attribute> list)
        : Attributes(std::span(list.begin(), list.size())) {}
    explicit Attributes(std::span<const Attribute> list) : d_list(list) {}

    /// As for a vector.
    auto begin() const { return d_list.begin(); }
    auto end() const { return d_list.end(); }
    size_t size() const { return d_list.size(); }
    const Attribute& operator[](size_t index) const { return d_list[index]; }

    /// The value of the first attribute with that name.
    std::optional<std::string_view> find(std::string_view name) const {
        const auto found = std::ranges::find(d_list, name, &Attribute::name);
        return found == d_list.end() ? std::nullopt : std::optional(found->value);
    }

private:
    std::span<const Attribute> d_list;
};

} // namespace textmarkup
