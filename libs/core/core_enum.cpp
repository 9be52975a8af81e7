#include "core_enum.h"

#include "core_check.h"
#include "core_varargs.h"

#include <absl/container/flat_hash_map.h>
#include <absl/strings/string_view.h>
#include <algorithm>
#include <memory_resource>

namespace core {
namespace {

// Abseil's maps look up its own kind of view, which is not everywhere the standard one.
absl::string_view keyOf(std::string_view name) { return {name.data(), name.size()}; }

} // namespace

struct EnumNames::Table {
    std::pmr::monotonic_buffer_resource texts; // of the names, seen by both maps
    absl::flat_hash_map<absl::string_view, int32_t> byName;
    absl::flat_hash_map<int32_t, absl::string_view> byValue;

    void reserve(size_t pairs) {
        byName.reserve(pairs);
        byValue.reserve(pairs);
    }

    absl::string_view keep(absl::string_view name) {
        auto* const text = static_cast<char*>(texts.allocate(name.size(), 1));
        std::copy(name.begin(), name.end(), text);
        return {text, name.size()};
    }

    // False, with the maps unchanged, for a duplicate. Asks each map only once.
    bool insert(absl::string_view name, int32_t value) {
        const absl::string_view kept = keep(name);
        const auto [entry, isNewValue] = byValue.try_emplace(value, kept);
        if (!isNewValue)
            return false;
        const bool isNewName = byName.try_emplace(kept, value).second;
        if (!isNewName)
            byValue.erase(entry);
        return isNewName;
    }
};

EnumNames::EnumNames(std::string typeName, int32_t unknownValue, std::string unknownName)
    : d_typeName(std::move(typeName)),
      d_unknownValue(unknownValue),
      d_unknownName(std::move(unknownName)),
      d_table(std::make_unique<Table>()) {}

EnumNames::EnumNames(const EnumNames& other)
    : EnumNames(other.d_typeName, other.d_unknownValue, other.d_unknownName) {
    d_table->reserve(other.size());
    for (const auto& [name, value] : other.d_table->byName)
        d_table->insert(name, value);
}

EnumNames::EnumNames(EnumNames&& other) noexcept = default;

EnumNames& EnumNames::operator=(EnumNames other) noexcept {
    d_typeName.swap(other.d_typeName);
    std::swap(d_unknownValue, other.d_unknownValue);
    d_unknownName.swap(other.d_unknownName);
    d_table.swap(other.d_table);
    return *this;
}

EnumNames::~EnumNames() = default;

EnumNames& EnumNames::reserve(size_t pairs) & {
    d_table->reserve(pairs);
    return *this;
}

EnumNames& EnumNames::add(std::string_view name, int32_t value) & {
    CHECKF(d_table->insert(keyOf(name), value),
           core::format("(%s) - duplicate entry '%s'", d_typeName, name));
    return *this;
}

size_t EnumNames::size() const { return d_table->byName.size(); }

bool EnumNames::contains(std::string_view name) const {
    return d_table->byName.contains(keyOf(name));
}
bool EnumNames::contains(int32_t value) const { return d_table->byValue.contains(value); }

int32_t EnumNames::valueOf(std::string_view name) const {
    const auto found = d_table->byName.find(keyOf(name));
    return found != d_table->byName.end() ? found->second : d_unknownValue;
}

std::string_view EnumNames::nameOf(int32_t value) const {
    const auto found = d_table->byValue.find(value);
    if (found == d_table->byValue.end())
        return d_unknownName;
    return {found->second.data(), found->second.size()};
}

} // namespace core
