#include "core_wrapper.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

TEST(Wrapper, OpensNothingForChildProcesses) {
    const test::TempFolder folder;
    FILE* file = core::Wrapper::fopen(folder / "file", "w");
    ASSERT_NE(file, nullptr);
    EXPECT_NE(fcntl(fileno(file), F_GETFD) & FD_CLOEXEC, 0);
    std::fclose(file);
}

TEST(Wrapper, WaitsForNobodyAtAPipe) {
    const test::TempFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(core::Wrapper::fopen(folder / "pipe", "r"), nullptr);
}

} // namespace
