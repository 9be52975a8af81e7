// Whatever the settings of the reports contain, values stay in their ranges, and no file can make
// the program stop at failures.

#include "core_reportsettings.h"
#include "fuzz_input.h"
#include "fuzz_textfile.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr uint32_t kAllBits = 0b111111;
    constexpr uint32_t kAbortBits = 0b001001;
    fuzz::Input input(data, size);
    core::ReportSettings settings;
    const uint32_t before = input.byte() & kAllBits;
    settings.flags = before;
    const std::string text = input.rest();
    fuzz::TextFile file(text);
    settings.read(file.get());

    fuzz::require((settings.flags & ~kAllBits) == 0);
    fuzz::require((settings.flags & ~before & kAbortBits) == 0);
    fuzz::require(settings.sendPort >= 1 && settings.sendPort <= 65534);
    fuzz::require(settings.assertLevel == 1);
    const core::ReportSettings byDefault;
    fuzz::require(settings.sendAddress == byDefault.sendAddress ||
                  text.find(settings.sendAddress, text.find("send_address")) != std::string::npos);
    if (text.find('[') == std::string::npos)
        fuzz::require(settings.flags == before && settings.sendPort == byDefault.sendPort);
    return 0;
}
