#include "core_stacktrace.h"

#include "core_stacktrace_calls.h"
#include "core_varargs.h"
#include "log_recorder.h"

#include <gmock/gmock.h>

#include <utility>

namespace core {

/// As after a symbol engine that did not start.
class StackTraceWithoutSymbols {
public:
    StackTraceWithoutSymbols() { std::swap(trace.d_process, d_process); }
    ~StackTraceWithoutSymbols() { std::swap(trace.d_process, d_process); }

    StackTrace trace;

private:
    void* d_process = nullptr;
};

} // namespace core

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

core::StackFrame named(const std::string& function) { return {"", "", function, "", 0}; }

TEST(StackLines, NumberNamesSourcesAndImages) {
    const core::StackFrame nameless;
    const core::StackFrame f = named("f()");
    struct Row {
        int line;
        std::vector<core::StackFrame> frames; // behind the three that are discarded
        std::vector<std::string> lines;
    };
    const Row rows[] = {
        {__LINE__, {}, {"Stack with 0 frames (discarded 3)"}},
        {__LINE__, {f, f}, {"#01 in f()", "#02 in f()"}},
        {__LINE__,
         {{"C:\\App\\tool.exe", "", "run()", "C:\\src\\a.cpp", 57}, {"", "", "g()", "b.cpp", 0}},
         {"#01 in run() at a.cpp:57 (tool.exe)", "#02 in g() at b.cpp:0"}},
        {__LINE__,
         {{"/usr/bin/tool", "", "", "", 9}, f},
         {"#01 in ? (tool)", "#04 in ?", "#02 in f()"}},
        {__LINE__, {nameless, nameless, f}, {"#01 in ?", "#05 in ?", "#03 in f()"}},
        {__LINE__, {f, nameless, nameless, nameless}, {"#01 in f()", "#02 in ?", "#07 in ?"}},
        {__LINE__, {nameless}, {"#01 in ?", "#04 in ?"}},
    };
    for (const Row& row : rows) {
        std::vector<core::StackFrame> frames(3, row.frames.empty() ? f : nameless);
        frames.insert(frames.end(), row.frames.begin(), row.frames.end());
        EXPECT_THAT(core::detail::stackLines(frames), ElementsAreArray(row.lines))
            << "row at line " << row.line;
    }
    EXPECT_THAT(core::detail::stackLines({f}), ElementsAre("Stack with 0 frames (discarded 3)"));
    EXPECT_THAT(core::detail::stackLines(std::vector<core::StackFrame>(103, f)).back(),
                "#100 in f()");
}

} // namespace

namespace stacktest {

/// A stack whose functions and lines are known. What follows a call stands on its line.
struct Known {
    int textLine = 0;
    int callerLine = 0;
    int calls = 0;
    std::string text;
};

[[gnu::noinline]] std::string takeText(Known& known) {
    return known.textLine = __LINE__, core::StackTrace{}.getStackText();
}

[[gnu::noinline]] void callTakeText(Known& known) {
    known.callerLine = __LINE__, known.text = takeText(known), ++known.calls;
}

[[gnu::noinline]] void logOwnStack(Known& known, int32_t channel) {
    core::StackTrace{}.logStack(channel), ++known.calls;
}

[[gnu::noinline]] void callLogOwnStack(Known& known, int32_t channel) {
    logOwnStack(known, channel), ++known.calls;
}

} // namespace stacktest

namespace {

TEST(StackTrace, TextBeginsWithTheCallerAndKnowsLines) {
    stacktest::Known known;
    stacktest::callTakeText(known);
    const auto line = [](const char* start, int number) {
        return core::format("%s at core_stacktrace_test.cpp:%d (core_tests", start, number);
    };
    EXPECT_THAT(known.text, StartsWith(line("#01 in stacktest::takeText()", known.textLine)));
    EXPECT_THAT(known.text,
                HasSubstr(line("\n#02 in stacktest::callTakeText()", known.callerLine)));
}

TEST(StackTrace, LogsFromTheCallersCallerOnEnabledChannels) {
    test::LogRecorder log({core::kChannelWarn});
    stacktest::Known known;
    stacktest::callLogOwnStack(known, core::kChannelWarn);
    EXPECT_THAT(log.take().at(0), StartsWith("WARN #01 in stacktest::callLogOwnStack()"));
    stacktest::callLogOwnStack(known, core::kChannelNorm);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(StackTrace, AppendsUpToTheLimit) {
    core::StackTrace trace;
    std::vector<core::StackFrame> frames(2);
    EXPECT_TRUE(trace.getStack(frames, 4));
    ASSERT_EQ(frames.size(), 4U);
    EXPECT_EQ(frames[2].function, "core::StackTrace::getStack()");
    EXPECT_THAT(frames[2].imageName, HasSubstr("core_tests"));
    EXPECT_THAT(frames[2].symbolFileName, HasSubstr("core_tests"));
    EXPECT_TRUE(trace.getStack(frames, 1));
    EXPECT_EQ(frames.size(), 4U);
}

TEST(StackTrace, SaysWhenTheSymbolEngineDidNotStart) {
    test::LogRecorder log({core::kChannelWarn});
    core::StackTraceWithoutSymbols failed;
    std::vector<core::StackFrame> frames;
    EXPECT_FALSE(failed.trace.getStack(frames, 63));
    EXPECT_EQ(failed.trace.getStackText(), "Failed to get stack");
    EXPECT_THAT(frames, IsEmpty());
    const std::string line = "WARN Log at core_stacktrace_win32.cpp:186";
    EXPECT_THAT(log.take(), ElementsAre(line, line));
}

} // namespace
