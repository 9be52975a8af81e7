#include "core_wrapper.h"

#include "check_recorder.h"
#include "internal/core_wrapper_system.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <thread>

namespace {

using testing::ElementsAre;

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
    std::fputs("a\n", file);
    std::fclose(file);
    EXPECT_EQ(test::readFile(folder / "Größe 設定"), "a\n");
    std::filesystem::permissions(test::systemPath(folder / "Größe 設定"),
                                 std::filesystem::perms::owner_read);
    EXPECT_EQ(core::Wrapper::unlink(path), 0);
    EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(Wrapper, ReportsWhatCannotBeConverted) {
    test::CheckRecorder checks;
    test::LogRecorder log;
    EXPECT_EQ(core::Wrapper::fopen("a", kNotUtf8), nullptr);
    EXPECT_THAT(checks.take(),
                ElementsAre(test::FailedCheck{"CHECKF", "core_wrapper_win32.cpp", 89, 0, ""}));
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

} // namespace
