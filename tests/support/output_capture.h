#pragma once

#include <gtest/gtest.h>
#include <string>

namespace test {

/// What is written to standard output and standard error while `run` runs.
struct Output {
    std::string out;
    std::string err;
};

template <typename Run>
Output captureOutput(Run&& run) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run();
    return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

} // namespace test
