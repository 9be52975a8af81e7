#include "utl_inireader.h"

#include "core_check.h"
#include "core_log.h"
#include "core_tokenizer.h"
#include "utl_file.h"
#include "utl_fileutils.h"
#include "utl_hashindex.h"

#include <absl/hash/hash.h>
#include <absl/strings/string_view.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <optional>
#include <utility>
#include <vector>

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

const char* skip(const char* pos, const char* end, Kind kind) {
    while (pos != end && kindOf(*pos) == kind)
        ++pos;
    return pos;
}

const char* endOfLine(const char* pos, const char* end) {
    while (pos != end && kindOf(*pos) != Kind::LineEnd)
        ++pos;
    return pos;
}

std::string_view slice(const char* begin, const char* end) {
    return {begin, static_cast<size_t>(end - begin)};
}

uint32_t hashOf(std::string_view section) {
    return static_cast<uint32_t>(absl::HashOf(absl::string_view(section.data(), section.size())));
}

uint32_t hashOf(uint32_t section, std::string_view key) {
    return static_cast<uint32_t>(absl::HashOf(section, absl::string_view(key.data(), key.size())));
}

/// A line's first words: all of it that counts.
struct Words {
    size_t count = 0;
    std::array<std::string_view, 2> word;
};

/// The words of a line without quotes, which most are. Where it stopped, which is
/// behind the words, or null when it met a quote before.
const char* scanPlainLine(const char* pos, const char* end, Words& words) {
    for (words.count = 0; words.count < words.word.size(); ++words.count) {
        const char* const begin = skip(pos, end, Kind::Delimiter);
        pos = skip(begin, end, Kind::Text);
        if (pos != end && kindOf(*pos) == Kind::Quote)
            return nullptr;
        if (pos == begin)
            break;
        words.word[words.count] = slice(begin, pos);
    }
    return pos;
}

/// The part of a line before its comment. Any quote character opens or closes,
/// whatever opened: the words' own quoting is stricter.
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

/// Stores the words of the line at `pos` and returns its end.
const char* scanLine(const char* pos, const char* end, Words& words) {
    if (const char* const behind = scanPlainLine(pos, end, words))
        return endOfLine(behind, end);
    const char* const lineEnd = endOfLine(pos, end);
    scanQuotedLine(slice(pos, lineEnd), words);
    return lineEnd;
}

/// Says what editors and scripts put into files without being asked, and what hides lines
/// from the reader: both are text to it.
void warnOfEncoding(std::string_view text, const std::string& path) {
    for (const std::string_view mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
        if (text.starts_with(mark))
            core::logFrom(core::kChannelWarn, kLoad, "(%s) - begins with a byte order mark", path);
    }
    if (text.find('\0') != std::string_view::npos)
        core::logFrom(core::kChannelWarn, kLoad, "(%s) - holds NUL bytes", path);
}

/// Whether there was memory enough for what `parse` does.
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

/// `[NVR]` names a section.
bool isHeader(std::string_view word) {
    return word.size() > 2 && word.front() == '[' && word.back() == ']';
}

} // namespace

/// The text and, as slices of it, what it says. Filled in two steps: all properties
/// first, then the indices, which are made for their number.
class IniReader::Table {
public:
    explicit Table(std::string text);
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    std::string_view text() const { return d_text; }

    /// Goes on in the section, which comes into being with its first property.
    void enterSection(std::string_view name);

    /// Adds slices of `text()` to the section.
    void add(std::string_view key, std::string_view value);

    /// After the last `add`: makes all known to `find`, except properties whose section
    /// has the key already, for which it calls `repeated(key, section)`.
    template <typename Repeated>
    void buildIndices(Repeated repeated);

    size_t size() const { return d_propertyIndex.size(); }
    bool hasSection(std::string_view name) const { return findSection(name).has_value(); }
    std::optional<std::string_view> find(std::string_view section, std::string_view key) const;

private:
    struct Slice { // 32 bits are enough, and what keeps the table small
        uint32_t begin;
        uint32_t size;
    };
    struct Property {
        Slice key;
        Slice value;
        uint32_t section; // its passage until the indices are built
    };
    /// What stands below one header. A section goes by its first passage's number.
    struct Passage {
        std::string_view name;
        uint32_t section;
    };

    Slice sliceOf(std::string_view text) const {
        return {static_cast<uint32_t>(text.data() - d_text.data()),
                static_cast<uint32_t>(text.size())};
    }
    std::string_view view(const Slice& slice) const {
        return {d_text.data() + slice.begin, slice.size};
    }
    bool isInUse(size_t passage) const {
        return !d_properties.empty() && d_properties.back().section == passage;
    }
    void indexPassages();
    std::optional<uint32_t> findSection(std::string_view name) const;
    auto hasName(std::string_view name) const {
        return [this, name](uint32_t passage) { return d_passages[passage].name == name; };
    }
    auto hasName(uint32_t section, std::string_view key) const {
        return [this, section, key](uint32_t number) {
            const Property& property = d_properties[number];
            return property.section == section && view(property.key) == key;
        };
    }

    std::string d_text;
    std::vector<Passage> d_passages; // the last one may be without properties
    std::vector<Property> d_properties;
    detail::HashIndex d_passageIndex;
    detail::HashIndex d_propertyIndex;
};

IniReader::Table::Table(std::string text)
    : d_text(std::move(text)), d_passages{{kFirstSection, 0}} {
    constexpr size_t kUsualLine = 16; // a little shorter, since growing is dear
    d_properties.reserve(d_text.size() / kUsualLine + 1);
}

void IniReader::Table::enterSection(std::string_view name) {
    if (isInUse(d_passages.size() - 1))
        d_passages.push_back({name, 0});
    else
        d_passages.back().name = name;
}

void IniReader::Table::add(std::string_view key, std::string_view value) {
    const auto passage = static_cast<uint32_t>(d_passages.size() - 1);
    d_properties.push_back({sliceOf(key), sliceOf(value), passage});
}

void IniReader::Table::indexPassages() {
    if (!isInUse(d_passages.size() - 1))
        d_passages.pop_back();
    d_passageIndex = detail::HashIndex(d_passages.size());
    for (uint32_t number = 0; number < d_passages.size(); ++number) {
        Passage& passage = d_passages[number];
        passage.section =
            d_passageIndex.insert(hashOf(passage.name), number, hasName(passage.name));
    }
}

template <typename Repeated>
void IniReader::Table::buildIndices(Repeated repeated) {
    indexPassages();
    const auto count = static_cast<uint32_t>(d_properties.size());
    d_propertyIndex = detail::HashIndex(count);
    // In groups, so that the slots of a group are fetched while hashes are made.
    std::array<uint32_t, 16> hashes;
    for (uint32_t begin = 0; begin < count; begin += hashes.size()) {
        const auto end = static_cast<uint32_t>(std::min<size_t>(begin + hashes.size(), count));
        for (uint32_t number = begin; number < end; ++number) {
            Property& property = d_properties[number];
            property.section = d_passages[property.section].section;
            hashes[number - begin] = hashOf(property.section, view(property.key));
            d_propertyIndex.prefetch(hashes[number - begin]);
        }
        for (uint32_t number = begin; number < end; ++number) {
            const uint32_t section = d_properties[number].section;
            const std::string_view key = view(d_properties[number].key);
            if (d_propertyIndex.insert(hashes[number - begin], number, hasName(section, key)) !=
                number)
                repeated(key, d_passages[section].name);
        }
    }
}

std::optional<uint32_t> IniReader::Table::findSection(std::string_view name) const {
    return d_passageIndex.find(hashOf(name), hasName(name));
}

std::optional<std::string_view> IniReader::Table::find(std::string_view section,
                                                       std::string_view key) const {
    const std::optional<uint32_t> known = findSection(section);
    if (!known)
        return std::nullopt;
    const std::optional<uint32_t> number =
        d_propertyIndex.find(hashOf(*known, key), hasName(*known, key));
    if (!number)
        return std::nullopt;
    return view(d_properties[*number].value);
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
    const char* pos = table->text().data();
    const char* const end = pos + table->text().size();
    Words words;
    while ((pos = skip(pos, end, Kind::LineEnd)) != end) {
        pos = scanLine(pos, end, words);
        const auto& [key, value] = words.word;
        if (words.count >= 1 && isHeader(key))
            table->enterSection(key.substr(1, key.size() - 2));
        else if (words.count == 2)
            table->add(key, value);
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

bool IniReader::get(std::string_view section, std::string_view key, std::string& out) const {
    if (!hasProperty(section, key))
        return false;
    const std::optional<std::string_view> value = find(section, key);
    if (!CHECKF_AT(kPropertyLost, value.has_value()))
        return false;
    out = *value;
    return true;
}

size_t IniReader::propertyCount() const { return loaded() ? d_table->size() : 0; }

} // namespace utl
