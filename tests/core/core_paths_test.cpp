#include "core_paths.h"

#include "check_recorder.h"
#include "child_process.h"

#include <cstdio>
#include <gmock/gmock.h>
#include <stdexcept>

namespace {

using core::Paths;
using testing::ElementsAre;

TEST(Paths, NamesAndDefaultsDiffer) {
    Paths::setDefaultPaths();
    std::string folders;
    for (uint32_t i = 0; i < 6; ++i) {
        const auto folder = static_cast<Paths::PathIndex>(i);
        folders += Paths::pathName(folder) + (':' + Paths::fullPath(folder)) + ' ';
    }
    EXPECT_EQ(folders, "Assets:./assets Settings:./settings Work:./work Temp:./tmp "
                       "Logs:./files Dumps:./dumps ");
}

TEST(Paths, UnknownIndexIsRefused) {
    constexpr auto kUnknown = static_cast<Paths::PathIndex>(6);
    const test::FailedCheck refused{"CHECKF", "core_paths.cpp", 121, 0, ""};
    test::CheckRecorder checks;
    EXPECT_STREQ(Paths::pathName(kUnknown), "?");
    EXPECT_THROW(Paths::setPath(kUnknown, "x"), std::out_of_range);
    EXPECT_THROW(Paths::path(kUnknown), std::out_of_range);
    EXPECT_THAT(checks.take(), ElementsAre(refused));
}

// The table cannot be reset, so what it is before its first use shows in a process of its own.
CHILD_CASE(readsUnsetPath) {
    test::CheckRecorder checks;
    for (const int32_t level : {0, 1}) {
        core::setAssertionLevel(level);
        const std::string path = Paths::path(Paths::Assets);
        std::printf("'%s'%s", path.c_str(), testing::PrintToString(checks.take()).c_str());
    }
}

TEST(Paths, UnsetPathIsEmptyAndReported) {
    EXPECT_THAT(test::runChild("readsUnsetPath").out,
                testing::EndsWith("''{}''{ pi.is_set at core_paths.cpp:104 level 1 (Assets) }"));
}

} // namespace
