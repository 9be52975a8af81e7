#include "core_guard.h"

#include "core_crashdump_calls.h"
#include "core_log.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "core_timespec.h"
#include "core_tokenizer.h"
#include "core_wrapper.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace core {
namespace {

constexpr std::string_view kNoGuardSwitch = "jitd";
constexpr size_t kExecutablePathLimit = 260;

/// The line that stays when the next crash of the same build replaces the dump.
void recordCrash(std::string_view module, std::string_view tag) {
    const CivilTime time = localCivilTime(now());
    const std::string line = format("%04d-%02d-%02d %02d:%02d:%02d: %s %s\n", time.year, time.month,
                                    time.day, time.hour, time.minute, time.second, module, tag);
    if (FILE* file = Wrapper::fopen(Paths::fullPath(Paths::Logs) + "/dumps.log", "a")) {
        std::fputs(line.c_str(), file);
        std::fclose(file);
    }
}

} // namespace

int runGuardedWith(StartFunction start, int argc, char** argv) {
    const bool unguarded =
        argc > 1 && std::find(argv + 1, argv + argc, kNoGuardSwitch) != argv + argc;
    return unguarded ? start(argc, argv) : detail::runUnderGuard(start, argc, argv);
}

int detail::runCatching(StartFunction start, int argc, char** argv) noexcept {
    try {
        return start(argc, argv);
    } catch (...) {
        writeCrashDump(nullptr);
        return kCrashStatus;
    }
}

void detail::recordDump(const DumpResult& result) {
    const std::string executable = Wrapper::moduleBaseName();
    const std::string_view module = dumpModuleName(executable);
    const std::string_view tag = dumpVersionTag();
    const DumpPlace place = dumpPlace(executable);
    if (result.written)
        CORE_LOGF(kChannelCrit, "Wrote minidump for '%s' to '%s', version '%s'", module,
                  place.file.view(), tag);
    else
        CORE_LOGF(kChannelCrit, "Failed to write minidump for '%s' to '%s', version '%s' (%s)",
                  module, place.file.view(), tag, errorText(result.error));
    recordCrash(module, tag);
}

int32_t writeCrashDump(void* fault) {
    detail::recordDump(detail::writeDump(detail::dumpPlace(Wrapper::moduleBaseName()), fault));
    return 1;
}

void onInvalidParameter(std::string_view expression, std::string_view function,
                        std::string_view file, uint32_t line) {
    CORE_LOGF(kChannelCrit, "Invalid parameter detected (exp=%s) (func=%s) (file=%s:%d)",
              expression, function, file, line);
}

Arguments::Arguments(std::vector<std::string> texts) : d_texts(std::move(texts)) {
    d_values.reserve(d_texts.size() + 1);
    for (std::string& text : d_texts)
        d_values.push_back(text.data());
    d_values.push_back(nullptr);
}

Arguments splitCommandLine(std::string_view commandLine) {
    std::vector<std::string> texts{Wrapper::executablePath(kExecutablePathLimit)};
    Tokenizer words(commandLine, {.delimiters = CharSet(" "), .quote = '"'});
    for (std::string_view word; words.next(word);)
        texts.emplace_back(word);
    return Arguments(std::move(texts));
}

} // namespace core
