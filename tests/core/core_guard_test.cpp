#include "core_guard.h"

#include "child_process.h"
#include "core_wrapper.h"
#include "log_recorder.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::EndsWith;

int addArguments(int argc, char** argv) {
    return argc == 3 && argv[3] == nullptr ? std::atoi(argv[1]) + std::atoi(argv[2]) : -1;
}

int throwNumber(int, char**) { throw 7; }

int runWith(core::StartFunction start, std::vector<std::string> texts) {
    core::Arguments arguments(std::move(texts));
    return core::runGuardedWith(start, arguments.count(), arguments.values());
}

TEST(Guard, ReturnsWhatTheStartFunctionReturns) {
    EXPECT_EQ(runWith(addArguments, {"tool", "40", "2"}), 42);
}

TEST(Guard, IsLeftOutByASwitchBehindTheName) {
    EXPECT_THROW(runWith(throwNumber, {"tool", "jitd"}), int);
    EXPECT_THROW(runWith(throwNumber, {"tool", "x", "jitd"}), int);
    EXPECT_EQ(core::runGuardedWith([](int, char**) { return 5; }, 0, nullptr), 5);
}

TEST(DumpFilePath, JoinsFolderModuleAndTag) {
    const struct {
        const char* folder;
        const char* executable;
        const char* path;
    } rows[] = {
        {R"(C:\Data\Dumps)", "configure", R"(C:\Data\Dumps\configure-tag.dmp)"},
        {"./a/dumps", "configure.exe", R"(.\a\dumps\configure-tag.dmp)"},
        {"d", "tool.EXE", R"(d\tool.EXE-tag.dmp)"},
        {"d", "", R"(d\unknown-tag.dmp)"},
        {"d", ".exe", R"(d\-tag.dmp)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(core::dumpFilePath(row.folder, row.executable, "tag"), row.path);
}

CHILD_CASE(endsAtOnce) {
    std::atexit([] { std::fputs("exit handler", stdout); });
    std::fputs("written before", stdout);
    core::endProcess(core::kCrashStatus);
}

TEST(EndProcess, EndsAtOnceWithItsOutputWritten) {
    const test::ChildResult child = test::runChild("endsAtOnce");
    EXPECT_EQ(child.status, 129); // what a parent sees of kCrashStatus
    EXPECT_THAT(child.out, EndsWith("written before"));
}

TEST(Guard, LogsInvalidParameters) {
    test::LogRecorder log({core::kChannelCrit});
    core::onInvalidParameter("a != 0", "strcpy_s", "strcpy.c", 57);
    EXPECT_THAT(log.take(), ElementsAre("CRIT Invalid parameter detected (exp=a != 0) "
                                        "(func=strcpy_s) (file=strcpy.c:57)"));
}

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
