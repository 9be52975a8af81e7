// Random formats with random kinds of arguments, mismatches included: the result is always a text,
// and each matching conversion prints the same as it does alone. Doubles of any bits print as in
// the runtime library.

#include "core_check.h"
#include "core_varargs.h"
#include "fuzz_input.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

int failedChecks = 0;

bool countCheck(const char*, const char* file, int32_t line, int32_t, const std::string&) {
    const bool known = line == 16 || line == 35 || line == 65 || line == 462;
    fuzz::require(known && std::string_view(file) == "core_varargs.cpp");
    ++failedChecks;
    return false;
}

core::FormatArg makeArgument(fuzz::Input& input, std::vector<std::string>& texts) {
    const uint8_t kind = input.byte();
    const uint64_t number = input.number();
    switch (kind % 10) {
    case 0:
        return static_cast<char>(number);
    case 1:
        return static_cast<int16_t>(number);
    case 2:
        return static_cast<int32_t>(number);
    case 3:
        return number;
    case 4:
        return static_cast<int64_t>(number);
    case 5:
        return static_cast<double>(static_cast<int64_t>(number)) / 1000;
    case 6:
        return reinterpret_cast<const void*>(static_cast<uintptr_t>(number)); // NOLINT
    case 7:
        return static_cast<const char*>(nullptr);
    case 8:
        return texts.emplace_back(input.text(40)).c_str();
    default:
        return texts.emplace_back(input.text(40));
    }
}

std::string formatAll(const std::string& format, const std::vector<core::FormatArg>& args) {
    failedChecks = 0;
    std::string out;
    core::formatTo(out, format.c_str(), args.data(), args.size());
    return out;
}

void printsDoublesAsTheRuntimeDoes(fuzz::Input input) {
    constexpr std::array kDirectives{"%f", "%.0f", "%e", "%.17E", "%.1g", "%.40G", "%a", "%.2A"};
    const char* const directive = kDirectives[input.byte() % kDirectives.size()];
    const auto value = std::bit_cast<double>(input.number());
    if (std::isnan(value)) // its sign is not printed by every runtime
        return;
    std::array<char, 24> text{};                               // of the length where it is cut
    std::snprintf(text.data(), text.size(), directive, value); // NOLINT
    fuzz::require(formatAll(directive, {value}) == text.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    core::detail::storeFailureHandler(&countCheck);
    fuzz::Input input(data, size);
    std::vector<std::string> texts;
    texts.reserve(8); // arguments keep views into it
    std::vector<core::FormatArg> args;
    for (size_t count = input.byte() % 8; count != 0; --count)
        args.push_back(makeArgument(input, texts));
    const std::string format = std::string(input.rest().c_str());

    const std::string text = formatAll(format, args);
    const bool fits = failedChecks == 0;
    fuzz::require(text == formatAll(format, args));

    // Appended to other text, the result is the same.
    if (fits) {
        std::string joined = text + ' ';
        core::formatTo(joined, format.c_str(), args.data(), args.size());
        fuzz::require(joined == text + ' ' + text);
    }
    if (format.find('%') == std::string::npos)
        fuzz::require(text == format && (failedChecks != 0) == !args.empty());
    printsDoublesAsTheRuntimeDoes({data, size});
    return 0;
}
