// Whatever the list of expected failures contains and whenever it is read, only sites named in it
// are excluded.

#include "fuzz_input.h"
#include "fuzz_textfile.h"
#include "internal/core_assertexclude.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const int32_t line = input.byte();
    const std::string site = input.text(12);
    const core::CivilTime now{2000 + input.byte(), input.byte() % 12 + 1, input.byte() % 28 + 1,
                              input.byte() % 24,   input.byte() % 60,     input.byte() % 60};
    const std::string text = input.rest();
    fuzz::TextFile file(text);
    core::AssertExclude list;
    list.read(file.get(), now);

    if (list.contains(site, line))
        fuzz::require(line >= 1 && !site.empty() && site[0] != '#' &&
                      text.find(site + ' ') + text.find(site + '\t') != 2 * std::string::npos &&
                      text.find(std::to_string(line)) != std::string::npos);
    return 0;
}
