// The reader reads what the writer has written: keys without delimiters, and values without quotes
// whose ends the format can represent.

#include "core_guniquebuf.h"
#include "fuzz_input.h"
#include "utl_inireader.h"
#include "utl_iniwriter.h"

#include <map>
#include <string>
#include <utility>

namespace {

// The text with all characters of `forbidden` replaced.
std::string without(std::string text, const std::string& forbidden) {
    for (char& ch : text) {
        if (ch == '\0' || forbidden.find(ch) != std::string::npos)
            ch = '_';
    }
    return text;
}

// Only a value of several words is written in quotes, which preserve blanks and comment marks.
std::string makeValue(std::string text) {
    text = without(std::move(text), "\r\n\"'");
    const size_t word = text.find_first_not_of(' ');
    const size_t gap = text.find(' ', word);
    const bool several = word != std::string::npos && gap != std::string::npos &&
                         text.find_first_not_of(' ', gap) != std::string::npos;
    return several ? text : "_" + without(std::move(text), " =#;");
}

std::string makeName(std::string text) { return "n" + without(std::move(text), "\r\n\"' =#;]"); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    utl::IniWriter writer;
    std::map<std::pair<std::string, std::string>, std::string> expected;
    std::string section = "root"; // of the entries before the first header
    while (!input.empty()) {
        if (input.byte() % 4 == 0) {
            section = makeName(input.text(10));
            writer.addSection(section);
        }
        const std::string key = makeName(input.text(10));
        const std::string value = makeValue(input.text(30));
        writer.add(key, value);
        expected.emplace(std::pair(section, key), value); // the first one stays
    }

    const core::GUniqueBuf buffer = writer.serialise();
    utl::IniReader reader;
    reader.parse(reinterpret_cast<const char*>(buffer.data()), buffer.size());
    for (const auto& [property, value] : expected) {
        std::string read;
        fuzz::require(reader.get(property.first, property.second, read) && read == value);
    }
    fuzz::require(reader.propertyCount() == expected.size());
    return 0;
}
