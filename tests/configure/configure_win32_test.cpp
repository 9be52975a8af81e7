#include "core_rcsname.h"
#include "core_wrapper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

// What the system and users see of the program file, which is in the tests' folder.

namespace {

using testing::HasSubstr;
using testing::Not;

class ProgramFile : public testing::Test {
protected:
    ProgramFile() {
        const std::string self = core::Wrapper::executablePath(MAX_PATH);
        d_folder = self.substr(0, self.find_last_of('\\') + 1);
        d_path = d_folder + "configure.exe";
        d_module = LoadLibraryExA(d_path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    }
    ~ProgramFile() override { FreeLibrary(d_module); }

    void SetUp() override { ASSERT_NE(d_module, nullptr) << d_path; }

    /// A text from the version resource, which is null-terminated.
    static std::string versionText(const std::string& path, const std::string& name) {
        DWORD ignored = 0;
        std::string block(GetFileVersionInfoSizeA(path.c_str(), &ignored), '\0');
        GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data());
        void* text = nullptr;
        UINT length = 0;
        VerQueryValueA(block.data(), ("\\StringFileInfo\\040904b0\\" + name).c_str(), &text,
                       &length);
        return text != nullptr ? static_cast<const char*>(text) : "";
    }

    std::string d_folder;
    std::string d_path;
    HMODULE d_module = nullptr;
};

TEST_F(ProgramFile, SaysWhatBuildItIs) {
    const std::string version(core::version());
    for (const std::string program : {"configure.exe", "orvistrand-collect.exe"}) {
        const std::string path = d_folder + program;
        EXPECT_EQ(versionText(path, "OriginalFilename"), program);
        EXPECT_EQ(versionText(path, "ProductName"), "Orvistrand Configure");
        EXPECT_EQ(versionText(path, "CompanyName"), "Quorvane");
        EXPECT_EQ(versionText(path, "ProductVersion"), version);
        EXPECT_EQ(versionText(path, "FileVersion"),
                  version + " " + std::string(core::buildStamp()));
    }
}

TEST_F(ProgramFile, AsksForNoRightsKnowsEveryResolutionAndHasAnIcon) {
    HRSRC resource =
        FindResourceA(d_module, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24)); // the manifest
    ASSERT_NE(resource, nullptr);
    const std::string manifest(
        static_cast<const char*>(LockResource(LoadResource(d_module, resource))),
        SizeofResource(d_module, resource));
    EXPECT_NE(FindResourceA(d_module, "IDI_ICON1", MAKEINTRESOURCEA(14)), nullptr);
    EXPECT_THAT(manifest, HasSubstr(R"(level="asInvoker")"));
    EXPECT_THAT(manifest, HasSubstr(">PerMonitorV2, PerMonitor<"));
    EXPECT_THAT(manifest, HasSubstr("Microsoft.Windows.Common-Controls"));
    EXPECT_THAT(manifest, Not(HasSubstr("activeCodePage")));
    EXPECT_THAT(manifest, Not(HasSubstr("@"))) << "a text of the build is missing";
}

} // namespace
