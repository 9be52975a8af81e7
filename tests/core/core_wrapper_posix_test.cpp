#include "core_wrapper.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <fcntl.h>

namespace {

TEST(Wrapper, OpensNothingForChildProcesses) {
    const test::TempFolder folder;
    for (const char* mode : {"w", "rb", "a+"}) {
        FILE* file = core::Wrapper::fopen(folder / "file", mode);
        ASSERT_NE(file, nullptr) << mode;
        EXPECT_NE(fcntl(fileno(file), F_GETFD) & FD_CLOEXEC, 0) << mode;
        std::fclose(file);
    }
}

} // namespace
