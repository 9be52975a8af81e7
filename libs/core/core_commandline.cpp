#include "core_commandline.h"

#include "core_tokenizer.h"
#include "core_wrapper.h"

#include <utility>

namespace core {
namespace {

constexpr size_t kExecutablePathLimit = 260;

} // namespace

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
