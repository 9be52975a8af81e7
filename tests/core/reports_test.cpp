// What a collecting server gets: a child process reports to a receiver of its own, and
// leaves the datagrams in files.

#include "child_process.h"
#include "core_check.h"
#include "core_rcsname.h"
#include "core_testinterface.h"
#include "core_udp4socket.h"
#include "core_varargs.h"
#include "element_text.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr core::CheckSite kSite{"some_module.cpp", 7};
constexpr core::CheckSite kOther{"some_module.cpp", 8};

/// Stands for a collecting server, in a child whose working folder is the argument.
class Server {
public:
    /// Appends to the settings that this process is to report here.
    explicit Server(const std::string& folder, const std::string& settings) {
        if (!d_socket.open(0, 10'000) || !d_socket.bind("127.0.0.1", 0))
            std::exit(1);
        std::filesystem::current_path(test::systemPath(folder));
        test::writeFile(settings,
                        test::readFile("asked") + core::format("[general]\nsend_address 127.0.0.1\n"
                                                               "send_port %d\n",
                                                               d_socket.localPort()));
    }
    /// Files what has come since the last time; a datagram of its own marks the end.
    void file() {
        EXPECT_TRUE(d_socket.send("127.0.0.1", static_cast<uint32_t>(d_socket.localPort()), "end"));
        for (auto next = d_socket.receive(); next && next->data != "end"; next = d_socket.receive())
            test::writeFile(std::to_string(++d_count), next->data);
    }

private:
    core::Udp4Socket d_socket;
    int d_count = 0;
};

/// The documents that the case leaves when it is run with these settings, behind them
/// what it wrote to standard error.
std::vector<std::string> documentsOf(const char* childCase, const std::string& asked) {
    const test::TempFolder folder;
    std::filesystem::create_directory(test::systemPath(folder / "settings"));
    test::writeFile(folder / "asked", asked);
    const test::ChildResult child = test::runChild(childCase, folder.path());
    EXPECT_EQ(child.status, 0);
    std::vector<std::string> documents;
    for (int i = 1; std::filesystem::exists(folder / std::to_string(i)); ++i)
        documents.push_back(test::readFile(folder / std::to_string(i)));
    documents.push_back(child.err);
    return documents;
}

CHILD_CASE(failsOften) {
    core::setBuildIdentity({.tag = "release_1_4", .stamp = "240531-120000", .product = "Viewer"});
    Server server(argument, "settings/testing.alt.ini");
    CHECKF_AT(kSite, false, "first");
    CHECKF_AT(kSite, false, "second");
    GALERT_AT(kSite, 1 > 2);
    GASSERT_AT(kOther, 2 > 3);
    core::TestInterface::instance().sendAsserts(); // nothing is left to send
    core::TestInterface::instance().requestSendLogs(kOther);
    server.file();
}

TEST(Reports, GoOutOnlyWhenAskedFor) {
    EXPECT_THAT(documentsOf("failsOften", ""),
                ElementsAre("TestInterface:requestSendLogs - d_socket is null\n"));

    const auto documents = documentsOf("failsOften", "[assert]\nsend true\nbacktrace true\n");
    std::vector<std::string> got;
    for (const std::string& document : documents) {
        got.emplace_back();
        for (const char* name : {"type", "line", "message", "condition", "count", "total"})
            got.back() += test::elementText(document, name) + ' ';
    }
    EXPECT_THAT(got, ElementsAre("ASSERT 7 first CHECKF 1 1 ", "ASSERT 7 second CHECKF 1 2 ",
                                 "ASSERT 8  2 &gt; 3 1 1 ", " 8     ", "      "));
    const std::string line(44, '-');
    EXPECT_THAT(test::elementText(documents[0], "backtrace"),
                AllOf(StartsWith("Backtrace START " + line + "\n\n#01 in "),
                      EndsWith("\nBacktrace END --" + line)));
}

TEST(Reports, HoldTheirElementsInOrder) {
    const auto documents = documentsOf("failsOften", "[alert]\nsend true\n");
    ASSERT_EQ(documents.size(), 3);
    const std::string utc = test::elementText(documents[0], "utc");
    EXPECT_THAT(utc, MatchesRegex("....-..-.. ..:..:.."));
    EXPECT_EQ(documents[0],
              core::format("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<assert>\n"
                           "<type>ALERT</type>\n<file>some_module.cpp</file>\n<line>7</line>\n"
                           "<condition>1 &gt; 2</condition>\n<message></message>\n"
                           "<backtrace></backtrace>\n<level>0</level>\n<count>1</count>\n"
                           "<total>1</total>\n<utc>%s</utc>\n<server>127.0.0.1</server>\n"
                           "<product>Viewer</product>\n<swver>1_4</swver>\n"
                           "<hostname>%s</hostname>\n<os>%s</os>\n"
                           "<build_id>%s</build_id>\n"
                           "<build_time>240531-120000</build_time>\n<action>continue</action>\n"
                           "<log_url></log_url>\n</assert>\n",
                           utc, core::hostName(), core::platformName(),
                           "$"
                           "Name: release_1_4 $"));
    EXPECT_FALSE(core::hostName().empty());
    EXPECT_EQ(documents[1], "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<sendlogs>\n"
                            "<file>some_module.cpp</file>\n<line>8</line>\n"
                            "<server>127.0.0.1</server>\n</sendlogs>\n");
}

} // namespace
