#include "core_guard.h"

#include "core_log.h"
#include "core_tokenizer.h"
#include "core_wrapper.h"

#include <algorithm>
#include <utility>

namespace core {
namespace {

constexpr std::string_view kNoGuardSwitch = "jitd";
constexpr size_t kExecutablePathLimit = 260;

} // namespace

int runGuardedWith(StartFunction start, int argc, char** argv) {
    const bool unguarded =
        argc > 1 && std::find(argv + 1, argv + argc, kNoGuardSwitch) != argv + argc;
    return unguarded ? start(argc, argv) : detail::runUnderGuard(start, argc, argv);
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
