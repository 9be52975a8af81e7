#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

/// Tests of what ends a process: the test program starts itself as a child, which
/// runs one named case instead of the tests and is judged by how it ends.
///
///     CHILD_CASE(exitsWithSeven) { std::exit(7); }
///     TEST(Child, Exits) { EXPECT_EQ(test::runChild("exitsWithSeven").status, 7); }
namespace test {

struct ChildResult {
    int status = -1; ///< of exit, as the system shows it; -1 when a signal killed it
    int signal = 0;  ///< that killed it
    std::string out; ///< standard output
    std::string err; ///< standard error
};

/// Runs a case of this program in a child process and waits for its end. The case
/// is given `argument`; a case that returns ends the child with status 0.
ChildResult runChild(const std::string& name, const std::string& argument = {});

namespace detail {

constexpr const char* kChildCase = "ORVISTRAND_TEST_CHILD";
constexpr const char* kChildArgument = "ORVISTRAND_TEST_ARGUMENT";

using ChildCase = void (*)(const std::string& argument);

inline std::map<std::string, ChildCase>& childCases() {
    static std::map<std::string, ChildCase> cases;
    return cases;
}

/// In a child, runs the case before the first test and ends the process.
class ChildEnvironment : public testing::Environment {
public:
    void SetUp() override {
        const char* name = std::getenv(kChildCase);
        if (name == nullptr)
            return;
        const char* argument = std::getenv(kChildArgument);
        childCases().at(name)(argument != nullptr ? argument : "");
        std::exit(0);
    }
};

inline testing::Environment* const childEnvironment =
    testing::AddGlobalTestEnvironment(new ChildEnvironment);

struct ChildRegistration {
    ChildRegistration(const char* name, ChildCase run) { childCases().emplace(name, run); }
};

} // namespace detail
} // namespace test

#define CHILD_CASE(name)                                                                           \
    static void childCase_##name(const std::string& argument);                                     \
    static const test::detail::ChildRegistration childRegistration_##name(#name,                   \
                                                                          childCase_##name);       \
    static void childCase_##name([[maybe_unused]] const std::string& argument)
