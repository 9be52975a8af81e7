#include "core_commandline.h"

#include "core_wrapper.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(SplitCommandLine, FollowsTheExecutableByWords) {
    const struct {
        const char* text;
        std::vector<std::string> words;
    } rows[] = {
        {"", {}},
        {"   ", {}},
        {"one  two ", {"one", "two"}},
        {R"("C:\Program Files\a b" jitd)", {R"(C:\Program Files\a b)", "jitd"}},
        {R"("" x="a b")", {"", "x=\"a", "b\""}},
        {R"("open end)", {"open end"}},
        {"a\tb", {"a\tb"}},
    };
    for (const auto& row : rows) {
        core::Arguments arguments = core::splitCommandLine(row.text);
        std::vector<std::string> expected = row.words;
        expected.insert(expected.begin(), core::Wrapper::executablePath(260));
        char** const values = arguments.values();
        EXPECT_EQ(std::vector<std::string>(values, values + arguments.count()), expected);
        EXPECT_EQ(values[arguments.count()], nullptr);
    }
}

TEST(Arguments, KeepTheirTextsWhenMoved) {
    core::Arguments first({"tool", "short"});
    const char* const text = first.values()[1];
    core::Arguments second(std::move(first));
    EXPECT_EQ(second.count(), 2);
    EXPECT_EQ(second.values()[1], text);
    EXPECT_STREQ(second.values()[1], "short");
}

} // namespace
