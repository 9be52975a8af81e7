#include "core_rcsname.h"
#include "core_wrapper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include <string>

// What the system and its users see of the program's file, which lies beside the tests'.

namespace {

using testing::HasSubstr;
using testing::Not;

class ProgramFile : public testing::Test {
protected:
    ProgramFile() {
        const std::string self = core::Wrapper::executablePath(MAX_PATH);
        d_path = self.substr(0, self.find_last_of('\\') + 1) + "configure.exe";
        d_module = LoadLibraryExA(d_path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    }
    ~ProgramFile() override { FreeLibrary(d_module); }

    void SetUp() override { ASSERT_NE(d_module, nullptr) << d_path; }

    std::string versionText(const char* name) const {
        DWORD ignored = 0;
        std::string block(GetFileVersionInfoSizeA(d_path.c_str(), &ignored), '\0');
        const std::string key = std::string("\\StringFileInfo\\040904b0\\") + name;
        void* text = nullptr;
        UINT length = 0;
        const bool found = GetFileVersionInfoA(d_path.c_str(), 0, static_cast<DWORD>(block.size()),
                                               block.data()) != 0 &&
                           VerQueryValueA(block.data(), key.c_str(), &text, &length) != 0;
        return found ? static_cast<const char*>(text) : "";
    }

    std::string d_path;
    HMODULE d_module = nullptr;
};

TEST_F(ProgramFile, SaysWhatBuildItIs) {
    const std::string version(core::version());
    const std::string stamp(core::buildStamp());
    EXPECT_EQ(versionText("ProductName"), "Orvistrand Configure");
    EXPECT_EQ(versionText("CompanyName"), "Quorvane");
    EXPECT_EQ(versionText("ProductVersion"), version);
    EXPECT_EQ(versionText("FileVersion"), version + " " + stamp);
}

TEST_F(ProgramFile, AsksForNoRightsAndKnowsEveryResolution) {
    HRSRC resource =
        FindResourceA(d_module, MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(24)); // the manifest
    ASSERT_NE(resource, nullptr);
    const std::string manifest(
        static_cast<const char*>(LockResource(LoadResource(d_module, resource))),
        SizeofResource(d_module, resource));
    EXPECT_THAT(manifest, HasSubstr(R"(level="asInvoker")"));
    EXPECT_THAT(manifest, HasSubstr(">PerMonitorV2, PerMonitor<"));
    EXPECT_THAT(manifest, HasSubstr("Microsoft.Windows.Common-Controls"));
    EXPECT_THAT(manifest, Not(HasSubstr("activeCodePage")));
    EXPECT_THAT(manifest, Not(HasSubstr("@"))) << "a text of the build is missing";
}

TEST_F(ProgramFile, HasAnIconForItsWindows) {
    EXPECT_NE(FindResourceA(d_module, "IDI_ICON1", MAKEINTRESOURCEA(14)), nullptr);
}

} // namespace
