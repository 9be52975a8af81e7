// What a collecting server gets: a child process reports to a receiver of its own, and
// leaves the datagrams in files.

#include "child_process.h"
#include "core_check.h"
#include "core_rcsname.h"
#include "core_testinterface.h"
#include "core_udp4socket.h"
#include "core_varargs.h"
#include "temp_folder.h"
#include "xml_document.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr core::CheckSite kSite{"some_module.cpp", 7};
constexpr core::CheckSite kOther{"some_module.cpp", 8};

CHILD_CASE(failsOften) {
    core::Udp4Socket server;
    if (!server.open() || !server.bind("127.0.0.1", 0))
        std::exit(1);
    const auto port = static_cast<uint32_t>(server.localPort());
    std::filesystem::current_path(test::systemPath(argument));
    const bool standard = std::filesystem::exists("settings/testing.ini");
    const char* settings = standard ? "settings/testing.ini" : "settings/testing.alt.ini";
    const char* general = "[general]\nsend_address 127.0.0.1\nsend_port %u\n";
    test::writeFile(settings, test::readFile(settings) + core::format(general, port));

    CHECKF_AT(kSite, false, "first");
    CHECKF_AT(kSite, false, "second");
    GALERT_AT(kSite, 1 > 2);
    GASSERT_AT(kOther, 2 > 3);
    core::TestInterface::instance().sendAsserts(); // nothing is left to send
    core::TestInterface::instance().requestSendLogs(kOther);
    server.send("127.0.0.1", port, "end");
    int count = 0;
    for (std::string data; (data = server.receive()->data) != "end";)
        test::writeFile(std::to_string(++count), data);
}

/// The documents that the child sends by these settings, behind them what it wrote to
/// standard error.
std::vector<std::string> documents(const char* file, const std::string& settings) {
    const test::TempFolder folder;
    std::filesystem::create_directory(test::systemPath(folder / "settings"));
    test::writeFile(folder / "settings/" + file, settings);
    const test::ChildResult child = test::runChild("failsOften", folder.path());
    EXPECT_EQ(child.status, 0);
    std::vector<std::string> all;
    for (int i = 1; std::filesystem::exists(folder / std::to_string(i)); ++i)
        all.push_back(test::readFile(folder / std::to_string(i)));
    all.push_back(child.err);
    return all;
}

TEST(Reports, GoOutOnlyWhenAskedFor) {
    EXPECT_THAT(documents("testing.ini", ""),
                ElementsAre("TestInterface:requestSendLogs - d_socket is null\n"));

    const auto sent = documents("testing.alt.ini", "[assert]\nsend true\nbacktrace true\n");
    std::vector<std::string> got;
    for (const std::string& text : sent) {
        const test::XmlDocument document = test::parseXml(text);
        got.push_back(document.root);
        for (const char* name : {"line", "message", "condition", "count", "total"})
            got.back() += ' ' + document[name];
    }
    EXPECT_THAT(got, ElementsAre("assert 7 first CHECKF 1 1", "assert 7 second CHECKF 1 2",
                                 "assert 8  2 > 3 1 1", "sendlogs 8    ", "     "));
    const std::string dashes(44, '-'), backtrace = test::parseXml(sent[0])["backtrace"];
    EXPECT_THAT(backtrace, StartsWith("Backtrace START " + dashes + "\n\n#01 in "));
    EXPECT_THAT(backtrace, EndsWith("\nBacktrace END --" + dashes));
}

TEST(Reports, HoldTheirElementsInOrder) {
    const auto sent = documents("testing.ini", "[alert]\nsend true\n");
    ASSERT_EQ(sent.size(), 3);
    const std::string utc = test::parseXml(sent[0])["utc"];
    EXPECT_THAT(utc, MatchesRegex("....-..-.. ..:..:.."));
    EXPECT_EQ(sent[0],
              core::format("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<assert>\n"
                           "<type>ALERT</type>\n<file>some_module.cpp</file>\n<line>7</line>\n"
                           "<condition>1 &gt; 2</condition>\n<message></message>\n"
                           "<backtrace></backtrace>\n<level>0</level>\n<count>1</count>\n"
                           "<total>1</total>\n<utc>%s</utc>\n<server>127.0.0.1</server>\n"
                           "<product>orvistrand</product>\n<swver>%s</swver>\n"
                           "<hostname>%s</hostname>\n<os>%s</os>\n<build_id>%s</build_id>\n"
                           "<build_time>%s</build_time>\n<action>continue</action>\n"
                           "<log_url></log_url>\n</assert>\n",
                           utc, core::version(), core::hostName(), core::platformName(),
                           core::rcsName(), core::buildStamp()));
    EXPECT_FALSE(core::hostName().empty());
    EXPECT_EQ(sent[1], "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<sendlogs>\n"
                       "<file>some_module.cpp</file>\n<line>8</line>\n"
                       "<server>127.0.0.1</server>\n</sendlogs>\n");
}

} // namespace
