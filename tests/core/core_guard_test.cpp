#include "core_guard.h"

#include "child_process.h"
#include "core_check.h"
#include "core_wrapper.h"
#include "log_recorder.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::EndsWith;

constexpr int kCrashed = 129; // what a parent sees of kCrashStatus

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

TEST(Guard, TurnsAnEscapingExceptionIntoTheCrashStatus) {
    EXPECT_EQ(runWith(throwNumber, {"tool"}), core::kCrashStatus);
}

TEST(Guard, OnlyTheExactSwitchBehindTheNameLeavesItOut) {
    for (const char* other : {"JITD", "-jitd", "jitd2", "jit", ""})
        EXPECT_EQ(runWith(throwNumber, {"jitd", other}), core::kCrashStatus) << other;
    EXPECT_THROW(runWith(throwNumber, {"tool", "jitd"}), int);
    EXPECT_THROW(runWith(throwNumber, {"tool", "x", "jitd"}), int);
    EXPECT_EQ(core::runGuardedWith([](int, char**) { return 5; }, 0, nullptr), 5);
}

volatile bool deeper = true;

int overflowStack(volatile char* above) {
    volatile char frame[4096];
    frame[0] = above[0];
    return deeper ? overflowStack(frame) + frame[0] : 0;
}

int crash(int, char** argv) {
    const std::string kind = argv[1];
    if (kind == "nullWrite")
        core::deliberateFault();
    if (kind == "badInstruction")
        __builtin_trap();
    char bottom = 0;
    return kind == "stackOverflow" ? overflowStack(&bottom) : 0;
}

CHILD_CASE(guardedCrash) { std::exit(runWith(crash, {"tool", argument})); }
CHILD_CASE(unguardedCrash) { std::exit(runWith(crash, {"tool", argument, "jitd"})); }

TEST(GuardProcess, EndsACrashWithTheCrashStatus) {
    for (const char* kind : {"nullWrite", "badInstruction", "stackOverflow"}) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(test::runChild("guardedCrash", kind).status, kCrashed);
    }
    EXPECT_EQ(test::runChild("guardedCrash", "none").status, 0);
    EXPECT_NE(test::runChild("unguardedCrash", "nullWrite").status, kCrashed);
}

CHILD_CASE(crashesAfterTheGuard) {
    const bool ran = runWith(addArguments, {"tool", "1", "2"}) == 3;
    if (ran && runWith(throwNumber, {"tool"}) == core::kCrashStatus)
        core::deliberateFault();
}

TEST(GuardProcess, IsGoneWhenItHasReturned) {
    const test::ChildResult after = test::runChild("crashesAfterTheGuard");
    const test::ChildResult without = test::runChild("unguardedCrash", "nullWrite");
    EXPECT_NE(without.status, 0);
    EXPECT_EQ(after.status, without.status);
    EXPECT_EQ(after.signal, without.signal);
}

CHILD_CASE(endsAtOnce) {
    std::atexit([] { std::fputs("exit handler", stdout); });
    std::fputs("written before", stdout);
    core::endProcess(core::kCrashStatus);
}

TEST(GuardProcess, EndsAtOnceWithItsOutputWritten) {
    const test::ChildResult child = test::runChild("endsAtOnce");
    EXPECT_EQ(child.status, kCrashed);
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
