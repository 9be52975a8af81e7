#include "utl_iniwriter.h"

#include "core_check.h"
#include "core_log.h"
#include "core_tokenizer.h"
#include "utl_file.h"

#include <cstdint>
#include <new>
#include <string_view>
#include <utility>

namespace utl {
namespace {

constexpr core::CheckSite kNoSection{"utl_iniwriter.cpp", 26};

bool hasSeveralWords(std::string_view value) {
    core::Tokenizer words(value, {.delimiters = core::CharSet(" ")});
    std::string_view word;
    return words.next(word) && words.next(word);
}

} // namespace

IniWriter::IniWriter() { addSection({}); }

void IniWriter::addSection(std::string name) try {
    d_entries.push_back({std::move(name), {}});
} catch (const std::bad_alloc&) {
    d_isWhole = core::logNoMemory("utl::IniWriter::addSection");
}

void IniWriter::add(std::string key, std::string value) try {
    if (!d_isWhole)
        return;
    GASSERT_AT(kNoSection, !d_entries.empty());
    if (d_entries.empty()) // moved from
        d_entries.emplace_back();
    d_entries.back().entries.push_back({std::move(key), std::move(value)});
} catch (const std::bad_alloc&) {
    d_isWhole = core::logNoMemory("utl::IniWriter::add");
}

core::GUniqueBuf IniWriter::serialise() const try {
    if (!d_isWhole)
        return {};
    std::string text;
    for (const Section& section : d_entries) {
        if (!section.name.empty())
            text.append(text.empty() ? "[" : "\n[").append(section.name).append("]\n");
        for (const Entry& entry : section.entries) {
            const char* const quote = hasSeveralWords(entry.value) ? "\"" : "";
            text.append(entry.key).append(" ");
            text.append(quote).append(entry.value).append(quote).append("\n");
        }
    }
    if (!CHECKF(std::in_range<uint32_t>(text.size()), "text of 4 GiB or more"))
        return {};
    return core::GUniqueBuf(text.data(), static_cast<uint32_t>(text.size()), 0, 0);
} catch (const std::bad_alloc&) {
    core::logNoMemory("utl::IniWriter::serialise");
    return {};
}

bool IniWriter::save(const std::string& path) const {
    const core::GUniqueBuf text = serialise();
    return !text.empty() && File::createFromMemSafe(path, text);
}

} // namespace utl
