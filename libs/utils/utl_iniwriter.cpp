#include "utl_iniwriter.h"

#include "core_check.h"
#include "core_tokenizer.h"
#include "utl_file.h"

#include <cstdint>
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

void IniWriter::addSection(std::string name) { d_entries.push_back({std::move(name), {}}); }

void IniWriter::add(std::string key, std::string value) {
    GASSERT_AT(kNoSection, !d_entries.empty());
    if (d_entries.empty()) // moved from
        addSection({});
    d_entries.back().entries.push_back({std::move(key), std::move(value)});
}

core::GUniqueBuf IniWriter::serialise() const {
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
}

bool IniWriter::save(const std::string& path) const {
    const core::GUniqueBuf text = serialise();
    return !text.empty() && File::createFromMemSafe(path, text);
}

} // namespace utl
