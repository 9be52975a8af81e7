#include "core_guard.h"

#include "child_process.h"
#include "core_commandline.h"
#include "testing_logrecorder.h"

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

TEST(Guard, ReturnsWhatTheStartFunctionReturns) {
    core::Arguments arguments({"tool", "40", "2"});
    EXPECT_EQ(core::runGuardedWith(addArguments, arguments.count(), arguments.values()), 42);
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

} // namespace
