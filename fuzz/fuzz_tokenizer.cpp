// The tokenizer, compared with its rules applied character by character. At its end it stays.

#include "core_tokenizer.h"
#include "fuzz_input.h"

#include <string>
#include <string_view>
#include <vector>

namespace {

using Rules = core::Tokenizer::Rules;

std::vector<std::string> byTheRules(const std::string& text, const Rules& rules) {
    std::vector<std::string> tokens;
    std::string token;
    bool inQuote = false;
    bool closingSeen = false;
    const auto finish = [&] {
        const bool emit = !token.empty() || !rules.skipEmpty;
        if (closingSeen)
            token.pop_back();
        if (emit)
            tokens.push_back(token);
        token.clear();
        inQuote = closingSeen = false;
    };
    for (const char ch : text) {
        if ((!inQuote || closingSeen) && rules.delimiters.contains(ch)) {
            finish();
        } else if (ch != rules.quote) {
            closingSeen = false;
            token += ch;
        } else if (inQuote) {
            closingSeen = true;
            token += ch;
        } else if (token.empty()) {
            inQuote = true;
        } else {
            token += ch;
        }
    }
    finish();
    return tokens;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const uint8_t options = input.byte();
    Rules rules{.delimiters = core::CharSet(input.text(4)), .skipEmpty = (options & 1) != 0};
    if ((options & 2) != 0)
        rules.quote = static_cast<char>(input.byte());
    const std::string text = input.rest();

    std::vector<std::string> tokens;
    core::Tokenizer tokenizer(text, rules);
    std::string_view token = "untouched";
    while (tokenizer.next(token))
        tokens.emplace_back(token);
    fuzz::require(tokens == byTheRules(text, rules));
    fuzz::require(token == (tokens.empty() ? "untouched" : tokens.back()));
    fuzz::require(!tokenizer.next(token));
    return 0;
}
