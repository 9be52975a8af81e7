// Any bytes parse, with the same result as a simple reader that applies the rules one by one.

#include "core_tokenizer.h"
#include "core_varargs.h"
#include "fuzz_input.h"
#include "testing_logrecorder.h"
#include "utl_inireader.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr core::CharSet kLineEnds{"\n\r"};
constexpr core::CharSet kDelimiters{"= "};

// The rules of the reader, written simply instead of in one pass over slices.
struct PlainReader {
    std::map<std::pair<std::string, std::string>, std::string> values; // by section and key
    std::map<std::string, bool> sections = {{"root", false}};          // whether it has any
    std::vector<std::string> repeated;                                 // log lines, sorted or not

    explicit PlainReader(std::string_view text) {
        core::Tokenizer lines(text, {.delimiters = kLineEnds});
        std::string current = "root";
        for (std::string_view line; lines.next(line);) {
            std::vector<std::string> words;
            core::Tokenizer tokens(line.substr(0, commentStart(line)),
                                   {.delimiters = kDelimiters, .quote = '"'});
            for (std::string_view word; tokens.next(word);)
                words.emplace_back(word);
            const std::string first = words.empty() ? "" : words.front();
            if (first.size() > 2 && first.front() == '[' && first.back() == ']')
                sections.emplace(current = first.substr(1, first.size() - 2), false);
            else if (words.size() >= 2)
                add(current, first, words[1]);
        }
    }

    void add(const std::string& section, const std::string& key, const std::string& value) {
        sections[section] = true;
        if (!values.emplace(std::pair(section, key), value).second)
            repeated.push_back(core::format("WARN utl::IniReader::load() - duplicate property "
                                            "'%s' in section '%s'",
                                            key, section));
    }

    static size_t commentStart(std::string_view line) {
        bool quoted = false;
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '"' || line[i] == '\'')
                quoted = !quoted;
            else if (!quoted && (line[i] == '#' || line[i] == ';'))
                return i;
        }
        return line.size();
    }
};

// Most inputs once, some short ones repeated in enough sections for the indices to grow.
std::string makeText(fuzz::Input& input) {
    const bool many = input.byte() == 0xFF;
    std::string text = input.rest();
    const std::string content = text.substr(0, 20);
    for (size_t i = 0; many && i < 100; ++i)
        text += core::format("\n[s%u]\n%s", i, content);
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const std::string section = input.text(8);
    const std::string key = input.text(8);
    const std::string text = makeText(input);
    const PlainReader plain(text);

    test::LogRecorder log;
    utl::IniReader reader;
    fuzz::require(reader.parse(text.data(), text.size()) && reader.loaded());
    fuzz::require(log.take() == plain.repeated);
    fuzz::require(reader.propertyCount() == plain.values.size());
    std::string value;
    for (const auto& [name, expected] : plain.values)
        fuzz::require(reader.get(name.first, name.second, value) && value == expected);
    for (const auto& [name, hasProperties] : plain.sections)
        fuzz::require(reader.hasSection(name) == hasProperties);

    const auto known = plain.values.find({section, key});
    const std::string unchanged = value = "unchanged";
    fuzz::require(reader.hasProperty(section, key) == (known != plain.values.end()));
    fuzz::require(reader.get(section, key, value) == (known != plain.values.end()));
    fuzz::require(value == (known != plain.values.end() ? known->second : unchanged));
    return 0;
}
