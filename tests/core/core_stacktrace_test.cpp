#include "core_stacktrace.h"

#include "core_varargs.h"
#include "internal/core_stacktrace_lines.h"
#include "testing_logrecorder.h"

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
using testing::HasSubstr;
using testing::StartsWith;

TEST(StackLines, NumberNamesSourcesAndImages) {
    const core::StackFrame nameless;
    const core::StackFrame f{"", "", "f()", "", 0};
    // The frames behind the three that are discarded, and the lines.
    const std::pair<std::vector<core::StackFrame>, std::vector<std::string>> rows[] = {
        {{}, {"Stack with 0 frames (discarded 3)"}},
        {{{"C:\\App\\tool.exe", "", "run()", "C:\\src\\a.cpp", 57}, {"", "", "g()", "b.cpp", 0}},
         {"#01 in run() at a.cpp:57 (tool.exe)", "#02 in g() at b.cpp:0"}},
        {{{"/usr/bin/tool", "", "", "", 9}, f}, {"#01 in ? (tool)", "#04 in ?", "#02 in f()"}},
        {{nameless, nameless, f}, {"#01 in ?", "#05 in ?", "#03 in f()"}},
        {{f, nameless, nameless, nameless}, {"#01 in f()", "#02 in ?", "#07 in ?"}},
    };
    for (const auto& [behind, lines] : rows) {
        std::vector<core::StackFrame> frames(3, behind.empty() ? f : nameless);
        frames.insert(frames.end(), behind.begin(), behind.end());
        EXPECT_EQ(core::detail::stackLines(frames), lines);
    }
    EXPECT_THAT(core::detail::stackLines({f}), ElementsAre("Stack with 0 frames (discarded 3)"));
    EXPECT_EQ(core::detail::stackLines(std::vector(103, f)).back(), "#100 in f()");
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

[[gnu::noinline]] void trace(Known& known) {
    core::StackTrace{}.logStack(core::kChannelWarn);
    known.textLine = __LINE__, known.text = core::StackTrace{}.getStackText();
}

[[gnu::noinline]] void callTrace(Known& known) {
    known.callerLine = __LINE__, trace(known), ++known.calls;
}

} // namespace stacktest

namespace {

TEST(StackTrace, TextBeginsWithTheCallerAndLogWithItsCaller) {
    test::LogRecorder log;
    stacktest::Known known;
    stacktest::callTrace(known);
    const auto line = [](const char* start, int number) {
        return core::format("%s at core_stacktrace_test.cpp:%d (core_tests", start, number);
    };
    EXPECT_THAT(known.text, StartsWith(line("#01 in stacktest::trace()", known.textLine)));
    EXPECT_THAT(known.text, HasSubstr(line("\n#02 in stacktest::callTrace()", known.callerLine)));
    EXPECT_THAT(log.take().at(0),
                StartsWith(line("WARN #01 in stacktest::callTrace()", known.callerLine)));
}

TEST(StackTrace, AppendsUpToTheLimit) {
    core::StackTrace trace;
    std::vector<core::StackFrame> frames(2);
    EXPECT_TRUE(trace.getStack(frames, 4));
    ASSERT_EQ(frames.size(), 4U);
    EXPECT_EQ(frames[2].function, "core::StackTrace::getStack()");
    EXPECT_THAT(frames[2].symbolFileName, HasSubstr("core_tests"));
}

TEST(StackTrace, SaysWhenTheSymbolEngineDidNotStart) {
    test::LogRecorder log;
    core::StackTraceWithoutSymbols failed;
    failed.trace.loadModules();
    EXPECT_EQ(failed.trace.getStackText(), "Failed to get stack");
    EXPECT_THAT(log.take(), ElementsAre("WARN Log at core_stacktrace_win32.cpp:186"));
}

TEST(StackTrace, SaysWhatItCouldNotFind) {
    test::LogRecorder log({core::kChannelNorm});
    EXPECT_FALSE(core::StackTrace().loadModule(nullptr, "no such file", "x", 0x1000, 16));
    core::detail::logNoSymbol(16, 487);
    core::detail::logNoModuleInfo();
    EXPECT_THAT(
        log.take(),
        ElementsAre(StartsWith("NORM core::StackTrace::loadModule - failed to load image=no such "),
                    "NORM core::StackTrace::getStack - failed to get symbol from addr 16 : 487",
                    "NORM core::StackTrace::getStack - failed to get module info"));
}

} // namespace
