// The arguments of a command line are its words in order, with a null pointer at the end.

#include "core_commandline.h"
#include "fuzz_input.h"

#include <cstring>
#include <sstream>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = fuzz::Input(data, size).rest();
    core::Arguments made = core::splitCommandLine(text);
    core::Arguments arguments = std::move(made);
    fuzz::require(arguments.count() >= 1 && arguments.values()[arguments.count()] == nullptr);

    size_t from = 0;
    for (int i = 1; i < arguments.count(); ++i) {
        // An argument ends at its NUL, like main's.
        const std::string_view argument = arguments.values()[i];
        const size_t found = text.find(argument, from);
        fuzz::require(found != std::string::npos);
        from = found + argument.size();
    }
    if (text.find_first_of(std::string_view("\"\t\n\v\f\r\0", 7)) == std::string::npos) {
        std::istringstream words(text);
        std::string word;
        for (int i = 1; words >> word; ++i)
            fuzz::require(i < arguments.count() && word == arguments.values()[i]);
    }
    return 0;
}
