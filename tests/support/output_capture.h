#pragma once

#include <gtest/gtest.h>
#include <string>

namespace test {

/// What is written to standard output while `run` runs; also inside a death test,
/// which captures standard error itself.
template <typename Run>
std::string captureStdout(Run&& run) {
    testing::internal::CaptureStdout();
    run();
    return testing::internal::GetCapturedStdout();
}

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
