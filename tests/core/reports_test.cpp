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

/// Stands for a collecting server, in a child whose working folder is the argument.
class Server {
public:
    /// Appends to the settings that this process is to report here.
    explicit Server(const std::string& folder, const std::string& settings) {
        if (!d_socket.open() || !d_socket.bind("127.0.0.1", 0))
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
        for (std::string data; (data = d_socket.receive()->data) != "end";)
            test::writeFile(std::to_string(++d_count), data);
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

    std::vector<std::string> got;
    for (const std::string& text : documentsOf("failsOften", "[assert]\nsend true\n")) {
        const test::XmlDocument document = test::parseXml(text);
        got.push_back(document.root);
        for (const char* name : {"line", "message", "condition", "count", "total"})
            got.back() += ' ' + document[name];
    }
    EXPECT_THAT(got, ElementsAre("assert 7 first CHECKF 1 1", "assert 7 second CHECKF 1 2",
                                 "assert 8  2 > 3 1 1", "sendlogs 8    ", "     "));
}

TEST(Reports, HoldTheirElementsInOrder) {
    const auto documents = documentsOf("failsOften", "[alert]\nsend true\n");
    ASSERT_EQ(documents.size(), 3);
    const std::string utc = test::parseXml(documents[0])["utc"];
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

CHILD_CASE(failsWithHostileTexts) {
    Server server(argument, "settings/testing.ini");
    for (const char* piece : {"</message>", "]]>&", "\x01\x1B", "\xC3\x28\xED\xA0\x80", "é'\""}) {
        std::string text;
        while (text.size() < 100'000)
            text += piece;
        core::alertDefault(text.c_str(), "<&>.cpp", 1, 0, text);
        server.file();
    }
    core::failDefault("</", "a.cpp", 1, 0, std::string(100'000, '&'));
    server.file();
}

TEST(Reports, AreWellFormedAndFitWhateverTheTextsHold) {
    auto documents = documentsOf("failsWithHostileTexts",
                                 "[assert]\nsend true\nbacktrace true\n[alert]\nsend true\n");
    ASSERT_EQ(documents.size(), 7);
    documents.pop_back();
    for (const std::string& text : documents) {
        EXPECT_LE(text.size(), core::Udp4Socket::kMaxLength);
        const test::XmlDocument document = test::parseXml(text);
        EXPECT_EQ(document.error, "");
        EXPECT_EQ(document.elements.size(), 19);
        EXPECT_THAT(document["message"], EndsWith("..."));
    }
    const test::XmlDocument alert = test::parseXml(documents[0]);
    EXPECT_EQ(alert["file"], "<&>.cpp");
    EXPECT_THAT(alert["condition"], StartsWith("</message></message>"));

    const std::string backtrace = test::parseXml(documents[5])["backtrace"];
    EXPECT_THAT(backtrace, StartsWith("Backtrace START ----------------------------------------"
                                      "----\n\n#01 in "));
    EXPECT_THAT(backtrace, EndsWith("\nBacktrace END -------------------------------------------"
                                    "---"));
}

} // namespace
