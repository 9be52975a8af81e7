#include "core_wrapper.h"

#include "check_recorder.h"
#include "core_wrapper_calls.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* kNotUtf8 = "Z\xFCrich";

TEST(Wrapper, KnowsTheExecutableItRunsIn) {
    const std::string path = core::Wrapper::executablePath(4096);
    const std::string name = core::Wrapper::moduleBaseName();
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(name, std::filesystem::path(path).filename().string());
    EXPECT_EQ(core::Wrapper::executablePath(5), path.substr(0, 5));
}

TEST(Wrapper, OpensFilesWithUtf8NamesAndEitherSeparator) {
    const test::TempFolder folder;
    FILE* file = core::Wrapper::fopen(folder.path() + "\\Größe 設定", "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("a\n", file);
    std::fclose(file);
    EXPECT_EQ(test::readFile(folder / "Größe 設定"), "a\n");

    errno = 0;
    EXPECT_EQ(core::Wrapper::fopen(folder / "missing", "rb"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Wrapper, RefusesToOpenWhatIsNotUtf8) {
    test::CheckRecorder checks;
    test::LogRecorder log;
    EXPECT_EQ(core::Wrapper::fopen(kNotUtf8, "rb"), nullptr);
    EXPECT_EQ(core::Wrapper::fopen("a", kNotUtf8), nullptr);
    const test::FailedCheck refused{"CHECKF", "core_wrapper_win32.cpp", 89, 0, ""};
    EXPECT_THAT(checks.take(), ElementsAre(refused, refused));
    EXPECT_THAT(log.take(),
                ElementsAre("WARN fromUtf8 conversion failed", "WARN fromUtf8 conversion failed"));
}

TEST(Wrapper, ConversionsReportTheirFailuresOnly) {
    test::LogRecorder log;
    core::SystemText system;
    std::string text;
    EXPECT_TRUE(core::Wrapper::fromUtf8("ü", system));
    EXPECT_TRUE(core::Wrapper::toUtf8(system, text));
    EXPECT_TRUE(core::Wrapper::pathFromUtf8("ü", system));
    EXPECT_THAT(log.take(), IsEmpty());

    // Half a character: a continuation byte, or the first half of a surrogate pair.
    const core::SystemText half(1, static_cast<core::SystemText::value_type>(
                                       sizeof(core::SystemText::value_type) == 1 ? 0x80 : 0xD800));
    EXPECT_FALSE(core::Wrapper::toUtf8(half, text));
    EXPECT_THAT(log.take(), ElementsAre("WARN toUtf8 conversion failed"));
}

TEST(Unlink, DeletesFilesAlsoReadOnlyOnes) {
    const test::TempFolder folder;
    const std::string path = folder / "Größe";
    test::writeFile(path, "x");
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    EXPECT_EQ(core::Wrapper::unlink(folder.path() + "\\Größe"), 0);
    EXPECT_FALSE(std::filesystem::exists(path));

    EXPECT_EQ(core::Wrapper::unlink(path), -1);
    EXPECT_EQ(errno, ENOENT);
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
    EXPECT_THAT(log.take(), IsEmpty());
    std::thread([] { EXPECT_TRUE(core::Wrapper::wideFileNames()); }).join();
    core::Wrapper::setWideFileNames(true);
}

/// Calls that fail as scripted, 0 for success, and note their order.
class ScriptedCalls {
public:
    ScriptedCalls(std::vector<int> removeErrors, int chmodError)
        : d_removeErrors(std::move(removeErrors)), d_chmodError(chmodError) {}

    int unlink() {
        return core::detail::unlinkWith({[this](const std::string& path) {
                                             d_calls.push_back("remove " + path);
                                             const int error = d_removeErrors.at(0);
                                             d_removeErrors.erase(d_removeErrors.begin());
                                             return fail(error);
                                         },
                                         [this](const std::string& path) {
                                             d_calls.push_back("chmod " + path);
                                             return fail(d_chmodError);
                                         }},
                                        "f");
    }
    const std::vector<std::string>& calls() const { return d_calls; }

private:
    static int fail(int error) {
        if (error != 0)
            errno = error;
        return error == 0 ? 0 : -1;
    }

    std::vector<int> d_removeErrors;
    int d_chmodError;
    std::vector<std::string> d_calls;
};

TEST(Unlink, RetriesRefusedAccessOnceAndKeepsTheFirstError) {
    ScriptedCalls works({EACCES, 0}, 0);
    errno = 0;
    EXPECT_EQ(works.unlink(), 0);
    EXPECT_EQ(errno, EACCES);
    EXPECT_THAT(works.calls(), ElementsAre("remove f", "chmod f", "remove f"));

    ScriptedCalls failsAgain({EACCES, EBUSY}, 0);
    EXPECT_EQ(failsAgain.unlink(), -1);
    EXPECT_EQ(errno, EACCES);
}

TEST(Unlink, RetriesNothingButRefusedAccess) {
    for (const int error : {0, ENOENT, EPERM, EISDIR}) {
        ScriptedCalls calls({error}, 0);
        errno = 0;
        EXPECT_EQ(calls.unlink(), error == 0 ? 0 : -1);
        EXPECT_EQ(errno, error);
        EXPECT_THAT(calls.calls(), ElementsAre("remove f"));
    }
}

TEST(Unlink, LogsThatTheFileCannotBeMadeWritable) {
    test::LogRecorder log({core::kChannelNorm});
    ScriptedCalls calls({EACCES}, EROFS);
    EXPECT_EQ(calls.unlink(), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_THAT(calls.calls(), ElementsAre("remove f", "chmod f"));
    EXPECT_THAT(log.take(),
                ElementsAre("NORM core::Wrapper::unlink - failed to chmod f to unlink"));
}

} // namespace
