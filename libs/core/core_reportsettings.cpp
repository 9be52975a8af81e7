#include "core_reportsettings.h"

#include "core_log.h"
#include "core_tokenizer.h"
#include "core_wrapper.h"

#include <array>
#include <optional>

namespace core {
namespace {

// Names the interface, which people search the log for.
constexpr CheckSite kUnknownValue{"core_testinterface.cpp", 152};

constexpr std::string_view kBlankCharacters = " \n\r\t";
constexpr CharSet kBlanks{kBlankCharacters};
constexpr size_t kLineLimit = 1000;
constexpr int32_t kHighestPort = 65534;
constexpr int32_t kHighestLevel = 3;

enum class Section { None, General, Assert, Alert };

constexpr uint32_t bitOf(ReportSettings::Effect effect, FailureType type) {
    return static_cast<uint32_t>(effect) << (type == FailureType::Alert ? 3 : 0);
}

constexpr uint32_t kAbortBits = bitOf(ReportSettings::kAbort, FailureType::Assertion) |
                                bitOf(ReportSettings::kAbort, FailureType::Alert);

/// The name between the brackets of a line that is a section's header.
std::optional<std::string_view> headerOf(std::string_view line) {
    const size_t start = line.find_first_not_of(kBlankCharacters);
    if (start == std::string_view::npos)
        return std::nullopt;
    line = line.substr(start, line.find_last_not_of(kBlankCharacters) + 1 - start);
    if (line.size() < 2 || line.front() != '[' || line.back() != ']')
        return std::nullopt;
    return line.substr(1, line.size() - 2);
}

Section sectionOf(std::string_view name) {
    if (name == "general")
        return Section::General;
    if (name == "assert")
        return Section::Assert;
    if (name == "alert")
        return Section::Alert;
    logFrom(kChannelWarn, "core::TestInterface::loadIni", "unhandled section '%s'", name);
    return Section::None;
}

std::optional<uint32_t> bitNamed(std::string_view key, FailureType type) {
    if (key == "abort")
        return bitOf(ReportSettings::kAbort, type);
    if (key == "send")
        return bitOf(ReportSettings::kSend, type);
    if (key == "backtrace")
        return bitOf(ReportSettings::kBacktrace, type);
    return std::nullopt;
}

} // namespace

bool ReportSettings::asksFor(Effect effect, FailureType type) const {
    return (flags & bitOf(effect, type)) != 0;
}

void ReportSettings::load() {
    FILE* file = Wrapper::fopen("settings/testing.ini", "r");
    if (file == nullptr)
        file = Wrapper::fopen("settings/testing.alt.ini", "r");
    if (file == nullptr)
        return;
    read(file);
    std::fclose(file);
}

void ReportSettings::read(FILE* file) {
    Section section = Section::None;
    std::array<char, kLineLimit + 1> line{};
    while (std::fgets(line.data(), static_cast<int>(line.size()), file) != nullptr) {
        const std::string_view text = line.data();
        if (const auto header = headerOf(text)) {
            section = sectionOf(*header);
            continue;
        }
        std::string_view key;
        std::string_view value;
        Tokenizer fields(text, {.delimiters = kBlanks});
        if (!fields.next(key) || !fields.next(value))
            continue;
        if (section == Section::General)
            readGeneral(key, value);
        else if (section != Section::None)
            readEffect(section == Section::Assert ? FailureType::Assertion : FailureType::Alert,
                       key, value);
    }
}

void ReportSettings::readGeneral(std::string_view key, std::string_view value) {
    const int32_t number = decimalNumber(value).value_or(0);
    if (key == "send_address")
        sendAddress = value;
    else if (key == "send_port" && number >= 1 && number <= kHighestPort)
        sendPort = number;
    else if (key == "symbol_server_address")
        symbolServerAddress = value;
    else if (key == "assert_level" && number >= 1 && number <= kHighestLevel)
        assertLevel = 1; // higher levels never made a difference
}

// The abort bits can only be cleared: no file may make the program stop at a customer's.
void ReportSettings::readEffect(FailureType type, std::string_view key, std::string_view value) {
    const std::optional<uint32_t> bit = bitNamed(key, type);
    if (!bit)
        return;
    if (value == "true" || value == "enable")
        flags = (flags | *bit) & ~kAbortBits;
    else if (value == "false" || value == "disable")
        flags &= ~*bit;
    else
        logAt(kChannelWarn, kUnknownValue, nullptr,
              format("unknown value '%s' of '%s'", value, key).c_str());
}

} // namespace core
