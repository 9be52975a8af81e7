// Any bytes parse, and what is found is a slice of them.

#include "fuzz_input.h"
#include "utl_inireader.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const std::string section = input.text(8);
    const std::string key = input.text(8);
    const std::string text = input.rest();

    utl::IniReader reader;
    fuzz::require(reader.parse(text.data(), text.size()) && reader.loaded());
    for (const std::string& name : {section, std::string("root"), std::string("NVR")}) {
        std::string value = "unchanged";
        const bool found = reader.get(name, key, value);
        fuzz::require(found == reader.hasProperty(name, key));
        fuzz::require(!found || (reader.hasSection(name) && text.find(value) != std::string::npos));
        fuzz::require(found || value == "unchanged");
    }
    return 0;
}
