#include "core_guard.h"

#include "child_process.h"
#include "testing_matchers.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace {

TEST(DumpFilePath, JoinsFolderModuleAndTag) {
    const std::array<const char*, 3> rows[] = {
        {R"(C:\Data\Dumps)", "configure", R"(C:\Data\Dumps\configure-tag.dmp)"},
        {"./a/dumps", "configure.exe", R"(.\a\dumps\configure-tag.dmp)"},
        {"d", "tool.EXE", R"(d\tool.EXE-tag.dmp)"},
        {"d", "", R"(d\unknown-tag.dmp)"},
        {"d", ".exe", R"(d\-tag.dmp)"},
    };
    for (const auto& [folder, executable, path] : rows)
        EXPECT_EQ(core::dumpFilePath(folder, executable, "tag"), path);
}

CHILD_CASE(endsAtOnce) {
    std::atexit([] { std::fputs("exit handler", stdout); });
    std::fputs("written before", stdout);
    core::endProcess(core::kCrashStatus);
}

TEST(EndProcess, EndsAtOnceWithItsOutputWritten) {
    const test::ChildResult child = test::runChild("endsAtOnce");
    EXPECT_EQ(child.status, 129); // what a parent sees of kCrashStatus
    EXPECT_THAT(child.out, testing::EndsWith("written before"));
}

TEST(Guard, LogsInvalidParameters) {
    EXPECT_THAT([] { core::onInvalidParameter("a != 0", "strcpy_s", "strcpy.c", 57); },
                test::Logs("CRIT Invalid parameter detected (exp=a != 0) (func=strcpy_s) "
                           "(file=strcpy.c:57)"));
}

} // namespace
