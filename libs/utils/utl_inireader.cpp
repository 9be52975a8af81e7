#include "utl_inireader.h"

#include "core_check.h"
#include "core_log.h"
#include "core_tokenizer.h"
#include "internal/utl_hashindex.h"
#include "utl_file.h"
#include "utl_fileutils.h"

#include <absl/hash/hash.h>
#include <absl/strings/string_view.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace utl {
namespace {

constexpr core::CheckSite kPropertyLost{"utl_inireader.cpp", 210};
constexpr const char* kLoad = "utl::IniReader::load";
constexpr std::string_view kFirstSection = "root";
constexpr core::Tokenizer::Rules kWordRules{.delimiters = core::CharSet("= "), .quote = '"'};

/// What a byte does to a line.
enum class Kind : uint8_t { Text, Delimiter, Quote, Comment, LineEnd };

constexpr auto kKinds = [] {
    std::array<Kind, 256> kinds{};
    kinds['='] = kinds[' '] = Kind::Delimiter;
    kinds['"'] = kinds['\''] = Kind::Quote;
    kinds['#'] = kinds[';'] = Kind::Comment;
    kinds['\n'] = kinds['\r'] = Kind::LineEnd;
    return kinds;
}();

Kind kindOf(char ch) { return kKinds[static_cast<uint8_t>(ch)]; }

constexpr size_t kBlock = 64;

// Lines are read by the few bytes that are more than text, found many at a time.
#ifdef __SSE2__
template <char... characters>
uint32_t findAny(const char* sixteen) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sixteen));
    __m128i found = _mm_setzero_si128();
    ((found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(characters)))), ...);
    return static_cast<uint32_t>(_mm_movemask_epi8(found));
}

/// A bit for each byte of a block that is more than text.
uint64_t findSpecial(const char* block) {
    uint64_t found = 0;
    for (unsigned i = 0; i < kBlock; i += 16)
        found |= uint64_t{findAny<'=', ' ', '"', '\'', '#', ';', '\n', '\r'>(block + i)} << i;
    return found;
}
#else
uint64_t findSpecial(const char* block) {
    uint64_t found = 0;
    for (unsigned i = 0; i < kBlock; ++i)
        found |= uint64_t{kindOf(block[i]) != Kind::Text} << i;
    return found;
}
#endif

std::string_view slice(const char* begin, const char* end) {
    return {begin, static_cast<size_t>(end - begin)};
}

uint32_t hashOf(std::string_view name) {
    return static_cast<uint32_t>(absl::HashOf(absl::string_view(name.data(), name.size())));
}

/// The first words of a line; the rest does not count.
struct Words {
    size_t count = 0;
    std::array<std::string_view, 2> word;
};

/// The part of a line before its comment. Any quote character opens or closes a quoted run,
/// whichever opened it; the quoting of words is stricter.
std::string_view withoutComment(std::string_view line) {
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const Kind kind = kindOf(line[i]);
        if (kind == Kind::Quote)
            quoted = !quoted;
        else if (kind == Kind::Comment && !quoted)
            return line.substr(0, i);
    }
    return line;
}

void scanQuotedLine(std::string_view line, Words& words) {
    core::Tokenizer tokens(withoutComment(line), kWordRules);
    words.count = 0;
    while (words.count < words.word.size() && tokens.next(words.word[words.count]))
        ++words.count;
}

/// Reads lines one by one, by the bytes that are more than text.
class LineScanner {
public:
    LineScanner(const char* pos, const char* end) : d_pos(pos), d_block(pos), d_end(end) {
        findInBlock();
    }

    /// Stores the words of the next line and returns where it begins; null when none is
    /// left. Inline, which keeps its state in registers: that saves a fifth of a file's
    /// time.
    __attribute__((always_inline)) const char* next(Words& words);

private:
    void findInBlock() {
        const auto left = static_cast<size_t>(d_end - d_block);
        if (left >= kBlock) {
            d_special = findSpecial(d_block);
        } else {
            char last[kBlock] = {};
            std::copy_n(d_block, left, last);
            d_special = findSpecial(last);
        }
    }
    const char* nextSpecial() {
        while (d_special == 0) {
            if (static_cast<size_t>(d_end - d_block) <= kBlock)
                return d_end;
            d_block += kBlock;
            findInBlock();
        }
        const char* const special = d_block + std::countr_zero(d_special);
        d_special &= d_special - 1;
        return special;
    }

    const char* d_pos;
    const char* d_block; // of which d_special has the bytes still ahead
    const char* const d_end;
    uint64_t d_special;
};

inline const char* LineScanner::next(Words& words) {
    const char* const begin = d_pos;
    const char* word = begin;
    bool quoted = false;
    words.count = 0;
    for (size_t wanted = words.word.size();;) {
        const char* const special = nextSpecial();
        const Kind kind = special == d_end ? Kind::LineEnd : kindOf(*special);
        if (words.count < wanted) {
            quoted = quoted || kind == Kind::Quote;
            if (special != word)
                words.word[words.count++] = slice(word, special);
        }
        if (kind == Kind::LineEnd) {
            d_pos = special == d_end ? d_end : special + 1;
            if (quoted)
                scanQuotedLine(slice(begin, special), words);
            return begin != d_end ? begin : nullptr;
        }
        if (kind == Kind::Comment)
            wanted = words.count; // no more are needed, nor quotes
        word = special + 1;
    }
}

/// Logs what editors and scripts put into files unasked, and what hides lines from the
/// reader: it takes both for text.
void warnOfEncoding(std::string_view text, const std::string& path) {
    for (const std::string_view mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
        if (text.starts_with(mark))
            core::logFrom(core::kChannelWarn, kLoad, "(%s) - begins with a byte order mark", path);
    }
    if (text.find('\0') != std::string_view::npos)
        core::logFrom(core::kChannelWarn, kLoad, "(%s) - holds NUL bytes", path);
}

/// Runs `parse`; false if there was not enough memory.
template <typename Parse>
bool fitsIntoMemory(const std::string& path, Parse parse) {
    try {
        parse();
        return true;
    } catch (const std::bad_alloc&) {
        core::logFrom(core::kChannelWarn, kLoad, "(%s) - too little memory", path);
        return false;
    }
}

/// Whether it names a section, as `[NVR]` does.
bool isHeader(std::string_view word) {
    return word.size() > 2 && word.front() == '[' && word.back() == ']';
}

} // namespace

/// The text, and where its properties and sections begin. Filled in two steps: first all
/// properties, then the indices, which are made for their number. A property's words are
/// read from its line again, so that the table stays small.
class IniReader::Table {
public:
    explicit Table(std::string text);
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    const std::string& text() const { return d_text; }

    /// Goes on in this section, which exists once it has a property.
    void enterSection(std::string_view name);

    /// Adds to the section the property whose line begins at this place of `text()`.
    void add(const char* line, std::string_view key) {
        d_lines.push_back(offsetOf(line));
        const bool isShort = key.data() == line && key.size() <= UINT8_MAX;
        d_keySizes.push_back(isShort ? static_cast<uint8_t>(key.size()) : 0);
    }

    /// After the last `add`: makes everything known to `find`, except properties whose key
    /// the section already has; for those it calls `repeated(key, section)`.
    template <typename Repeated>
    void buildIndices(Repeated repeated);

    size_t size() const { return d_propertyIndex.size(); }
    bool hasSection(std::string_view name) const { return findSection(name) != nullptr; }
    std::optional<std::string_view> find(std::string_view section, std::string_view key) const;

private:
    /// The part below one header. The first one with a name stands for the section.
    struct Passage {
        uint32_t name;
        uint32_t nameSize;
        uint32_t begin;       // its first property
        uint32_t section = 0; // the number of the first one with the name
        uint32_t count = 0;   // the section's properties
        detail::HashIndex::Area slots{};
    };

    uint32_t offsetOf(const char* pos) const { return static_cast<uint32_t>(pos - d_text.data()); }
    std::string_view nameOf(const Passage& passage) const {
        return passage.nameSize == 0
                   ? kFirstSection
                   : std::string_view(d_text).substr(passage.name, passage.nameSize);
    }
    Words wordsOf(uint32_t property) const {
        Words words;
        LineScanner(d_text.data() + d_lines[property], d_text.data() + d_text.size()).next(words);
        return words;
    }
    std::string_view keyOf(uint32_t property) const {
        const uint8_t size = d_keySizes[property];
        return size != 0 ? std::string_view(d_text.data() + d_lines[property], size)
                         : wordsOf(property).word[0];
    }
    uint32_t endOf(size_t passage) const {
        return passage + 1 < d_passages.size() ? d_passages[passage + 1].begin
                                               : static_cast<uint32_t>(d_lines.size());
    }
    void indexPassages();
    const Passage* findSection(std::string_view name) const;
    auto hasName(std::string_view name) const {
        return [this, name](uint32_t passage) { return nameOf(d_passages[passage]) == name; };
    }
    auto hasKey(std::string_view key) const {
        return [this, key](uint32_t property) { return keyOf(property) == key; };
    }

    std::string d_text;
    std::vector<Passage> d_passages; // the last one may be empty
    std::vector<uint32_t> d_lines;   // where the properties' lines begin
    std::vector<uint8_t> d_keySizes; // of keys at the beginning of a line, or 0
    detail::HashIndex d_passageIndex;
    detail::HashIndex::Area d_passageSlots{};
    detail::HashIndex d_propertyIndex; // an area for each section
};

IniReader::Table::Table(std::string text) : d_text(std::move(text)), d_passages{{0, 0, 0}} {
    constexpr size_t kUsualLine = 16; // slightly low, since growing is expensive
    d_lines.reserve(d_text.size() / kUsualLine + 1);
    d_keySizes.reserve(d_lines.capacity());
}

void IniReader::Table::enterSection(std::string_view name) {
    const auto first = static_cast<uint32_t>(d_lines.size());
    if (d_passages.back().begin == first) // empty
        d_passages.pop_back();
    d_passages.push_back({offsetOf(name.data()), static_cast<uint32_t>(name.size()), first});
}

void IniReader::Table::indexPassages() {
    if (d_passages.back().begin == d_lines.size())
        d_passages.pop_back();
    d_passageIndex = detail::HashIndex(d_passages.size(), 1);
    d_passageSlots = d_passageIndex.addArea(d_passages.size());
    for (uint32_t number = 0; number < d_passages.size(); ++number) {
        Passage& passage = d_passages[number];
        passage.section = d_passageIndex.insert(d_passageSlots, hashOf(nameOf(passage)), number,
                                                hasName(nameOf(passage)));
        d_passages[passage.section].count += endOf(number) - passage.begin;
    }
}

template <typename Repeated>
void IniReader::Table::buildIndices(Repeated repeated) {
    indexPassages();
    d_propertyIndex = detail::HashIndex(d_lines.size(), d_passages.size());
    for (Passage& passage : d_passages) {
        if (passage.count != 0)
            passage.slots = d_propertyIndex.addArea(passage.count);
    }
    for (size_t number = 0; number < d_passages.size(); ++number) {
        const Passage& section = d_passages[d_passages[number].section];
        for (uint32_t property = d_passages[number].begin; property < endOf(number); ++property) {
            const std::string_view key = keyOf(property);
            if (d_propertyIndex.insert(section.slots, hashOf(key), property, hasKey(key)) !=
                property)
                repeated(key, nameOf(section));
        }
    }
}

const IniReader::Table::Passage* IniReader::Table::findSection(std::string_view name) const {
    const std::optional<uint32_t> number =
        d_passageIndex.find(d_passageSlots, hashOf(name), hasName(name));
    return number ? &d_passages[*number] : nullptr;
}

std::optional<std::string_view> IniReader::Table::find(std::string_view section,
                                                       std::string_view key) const {
    const Passage* const known = findSection(section);
    const auto property = known != nullptr
                              ? d_propertyIndex.find(known->slots, hashOf(key), hasKey(key))
                              : std::nullopt;
    return property ? std::optional(wordsOf(*property).word[1]) : std::nullopt;
}

IniReader::IniReader() = default;
IniReader::~IniReader() = default;

bool IniReader::loaded() const { return d_table != nullptr; }

void IniReader::clear() { d_table.reset(); }

bool IniReader::load(const std::string& path) {
    clear();
    if (!FileUtils::exists(path))
        return false;
    std::string text;
    if (!File::loadIntoMem(path, text) || text.empty())
        return false;
    warnOfEncoding(text, path);
    return fitsIntoMemory(path, [&] { parseOwned(std::move(text), path); });
}

bool IniReader::parse(const char* bytes, size_t size) {
    clear();
    if (!std::in_range<uint32_t>(size)) {
        core::logFrom(core::kChannelWarn, "utl::IniReader::parse", "%u bytes are too many", size);
        return false;
    }
    return fitsIntoMemory({}, [&] { parseOwned(std::string(bytes, size), {}); });
}

void IniReader::parseOwned(std::string text, const std::string& path) {
    auto table = std::make_unique<Table>(std::move(text));
    LineScanner lines(table->text().data(), table->text().data() + table->text().size());
    for (Words words; const char* const line = lines.next(words);) {
        const std::string_view key = words.word[0];
        if (words.count >= 1 && isHeader(key))
            table->enterSection(key.substr(1, key.size() - 2));
        else if (words.count == 2)
            table->add(line, key);
    }
    table->buildIndices([&](std::string_view key, std::string_view section) {
        core::logFrom(core::kChannelWarn, kLoad, "(%s) - duplicate property '%s' in section '%s'",
                      path, key, section);
    });
    d_table = std::move(table);
}

std::optional<std::string_view> IniReader::find(std::string_view section,
                                                std::string_view key) const {
    return loaded() ? d_table->find(section, key) : std::nullopt;
}

bool IniReader::hasSection(std::string_view name) const {
    return loaded() && d_table->hasSection(name);
}

bool IniReader::hasProperty(std::string_view section, std::string_view key) const {
    return find(section, key).has_value();
}

bool IniReader::get(std::string_view section, std::string_view key, std::string& out) const try {
    if (!hasProperty(section, key))
        return false;
    const std::optional<std::string_view> value = find(section, key);
    if (!CHECKF_AT(kPropertyLost, value.has_value()))
        return false;
    out = *value;
    return true;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("utl::IniReader::get");
}

size_t IniReader::propertyCount() const { return loaded() ? d_table->size() : 0; }

} // namespace utl
