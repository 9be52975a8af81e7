// What a program learns of itself and asks of its system.

#include "child_process.h"
#include "core_commandline.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "core_utf.h"
#include "core_wrapper.h"
#include "internal/core_wrapper_system.h"
#include "temp_folder.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"
#include "testing_matchers.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <utility>

using namespace std::string_literals;

namespace {

using core::Paths;
using testing::ElementsAre;

TEST(Utf8, SurvivesTheWayToTheSystemAndBack) {
    for (const std::string& text :
         {""s, "a\0b"s, "\x7F"s, "\xC2\x80 \xDF\xBF"s, "\xE0\xA0\x80 \xEF\xBF\xBF"s,
          "\xED\x9F\xBF \xEE\x80\x80"s, // around the surrogates
          "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"s, "Zürich Ωμέγα 設定 🙂"s}) {
        EXPECT_TRUE(core::isValidUtf8(text));
        core::SystemText system;
        std::string back = "old";
        EXPECT_TRUE(core::fromUtf8(text, system));
        EXPECT_TRUE(core::toUtf8(system, back));
        EXPECT_EQ(back, text);
    }
}

TEST(Utf8, MalformedTextIsRefusedAndChangesNothing) {
    // Continuation bytes alone, overlong forms, surrogates, above the last code point, and
    // sequences with a byte missing or wrong.
    const char* const malformed[] = {
        "\x80",         "\xC0\x80",     "\xC1\xBF",         "\xE0\x9F\xBF",     "\xF0\x8F\xBF\xBF",
        "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF",
        "\xC3",         "\xE2\x82",     "\xF0\x9F\x99",     "\xE2\x82\x41",     "\xF0\x9F\x99\xC2"};
    for (const std::string bad : malformed) {
        const std::string text = "abc" + bad + "def";
        EXPECT_FALSE(core::isValidUtf8(text)) << testing::PrintToString(text);
        core::SystemText system(1, 'x');
        EXPECT_FALSE(core::fromUtf8(bad, system) || core::fromUtf8(text, system));
        EXPECT_FALSE(core::pathFromUtf8(text, system));
        EXPECT_EQ(system, core::SystemText(1, 'x'));
    }
    core::SystemText system;
    EXPECT_FALSE(core::pathFromUtf8("settings\0.bak"s, system)) << "the system would cut it";
}

constexpr const char* kNotUtf8 = "Z\xFCrich";

TEST(Wrapper, KnowsTheExecutableItRunsIn) {
    const std::string path = core::Wrapper::executablePath(4096);
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(core::Wrapper::moduleBaseName(), std::filesystem::path(path).filename().string());
    EXPECT_EQ(core::Wrapper::executablePath(5), path.substr(0, 5));
}

TEST(Wrapper, OpensAndDeletesFilesWithUtf8NamesAndEitherSeparator) {
    const test::TempFolder folder;
    const std::string path = folder.path() + "\\Größe 設定";
    FILE* file = core::Wrapper::fopen(path, "wb");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_THAT(folder.names(), ElementsAre("Größe 設定"));
    std::filesystem::permissions(test::systemPath(folder / "Größe 設定"),
                                 std::filesystem::perms::owner_read);
    EXPECT_EQ(core::Wrapper::unlink(path), 0);
}

TEST(Wrapper, ReportsWhatCannotBeConverted) {
    test::LogRecorder log;
    EXPECT_THAT([] { EXPECT_EQ(core::Wrapper::fopen("a", kNotUtf8), nullptr); },
                test::FailsCheck({"core_wrapper_win32.cpp", 89}, ""));
    EXPECT_THAT(log.take(), ElementsAre("WARN fromUtf8 conversion failed"));

    // Half a character: a continuation byte, or the first half of a surrogate pair.
    const core::SystemText half(1, static_cast<core::SystemText::value_type>(
                                       sizeof(core::SystemText::value_type) == 1 ? 0x80 : 0xD800));
    std::string text;
    EXPECT_FALSE(core::Wrapper::toUtf8(half, text));
    EXPECT_THAT(log.take(), ElementsAre("WARN toUtf8 conversion failed"));
}

TEST(Unlink, ConvertsItsPathInWideModeOnly) {
    test::LogRecorder log;
    errno = 0;
    EXPECT_EQ(core::Wrapper::unlink(kNotUtf8), -1);
    EXPECT_EQ(errno, EILSEQ);
    EXPECT_THAT(log.take(), ElementsAre("WARN fromUtf8 conversion failed"));

    core::Wrapper::setWideFileNames(false);
    EXPECT_EQ(core::Wrapper::unlink(kNotUtf8), -1);
    EXPECT_EQ(errno, ENOENT);
    std::thread([] { EXPECT_TRUE(core::Wrapper::wideFileNames()); }).join();
    core::Wrapper::setWideFileNames(true);
}

/// Notes the calls and fails them with these errors in turn; 0 is success.
struct ScriptedFiles final : core::Wrapper::System {
    explicit ScriptedFiles(const std::vector<int>& errors) : d_error(errors.begin()) {}
    int remove(const std::string& path) const override { return noted("remove " + path); }
    int makeWritable(const std::string& path) const override { return noted("chmod " + path); }

    int noted(const std::string& call) const {
        calls += call + ';';
        errno = *d_error == 0 ? errno : *d_error;
        return *d_error++ == 0 ? 0 : -1;
    }
    mutable std::string calls;
    mutable std::vector<int>::const_iterator d_error;
};

TEST(Unlink, RetriesRefusedAccessOnceAndKeepsTheFirstError) {
    const std::pair<std::vector<int>, std::string> rows[] = {
        {{EPERM}, "remove f;"},
        {{EACCES, 0, 0}, "remove f;chmod f;remove f;"},
        {{EACCES, 0, EBUSY}, "remove f;chmod f;remove f;"},
        {{EACCES, EROFS}, "remove f;chmod f;"},
    };
    test::LogRecorder log({core::kChannelNorm});
    for (const auto& [errors, expected] : rows) {
        const ScriptedFiles files(errors);
        errno = 0;
        EXPECT_EQ(core::Wrapper::unlink("f", files), errors.back() == 0 ? 0 : -1);
        EXPECT_EQ(errno, errors.front());
        EXPECT_EQ(files.calls, expected);
    }
    EXPECT_THAT(log.take(),
                ElementsAre("NORM core::Wrapper::unlink - failed to chmod f to unlink"));
}

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
    EXPECT_THAT([&] { EXPECT_STREQ(Paths::pathName(kUnknown), "?"); },
                test::FailsCheck({"core_paths.cpp", 121}, ""));
    EXPECT_THROW(Paths::setPath(kUnknown, "x"), std::out_of_range);
    EXPECT_THROW(Paths::path(kUnknown), std::out_of_range);
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

TEST(SplitCommandLine, FollowsTheExecutableByWords) {
    core::Arguments made =
        core::splitCommandLine("  \"C:\\Program Files\\a b\" jitd \"\" x=\"c d\"  e\tf \"open end");
    core::Arguments arguments(std::move(made)); // which keep their texts
    char** const values = arguments.values();
    EXPECT_THAT(std::vector<std::string>(values, values + arguments.count()),
                ElementsAre(core::Wrapper::executablePath(260), "C:\\Program Files\\a b", "jitd",
                            "", "x=\"c", "d\"", "e\tf", "open end"));
    EXPECT_EQ(values[arguments.count()], nullptr);
}

// In two pieces, or tools that expand keywords would alter this file.
const std::string kStart = std::string("$") + "Name: ";

TEST(RcsName, HoldsTheVersionOrIsReported) {
    const std::pair<std::string, std::string> rows[] = {
        {kStart + "tag_a_2_1 $", "tag_a_2_1"},
        {kStart + "release_2_1 $", "2_1"},
        {kStart + "release_ $", ""},
        {std::string(core::rcsName()), std::string(core::version())},
    };
    for (const auto& [text, version] : rows)
        EXPECT_EQ(core::versionFromRcsName(text), version);
    for (const std::string& text :
         {kStart + "$", kStart + "tag$", " " + kStart + "tag $", kStart + "release_2_1 $ "})
        EXPECT_THAT([&] { EXPECT_EQ(core::versionFromRcsName(text), text); },
                    test::FailsCheck({"core_rcsname.cpp", 28}, ""));
    const bool windows = std::filesystem::path::preferred_separator == '\\';
    EXPECT_THAT(std::string(core::platformName()),
                testing::MatchesRegex(windows ? "win_i686" : "linux_.+"));
}

} // namespace
