#include "collect_report.h"

#include "core_failurereport.h"

#include <gmock/gmock.h>

namespace {

using collect::Document;
using collect::Report;

TEST(Report, ReadsWhatStationsSend) {
    const core::FailureReport sent{.site = {core::FailureType::Alert, "<a>&.cpp", 55},
                                   .condition = "x < 'y'",
                                   .message = "ä\x01\xff\n]]>",
                                   .backtrace = "0x1 <main>",
                                   .level = 2,
                                   .count = 3,
                                   .total = 7};
    Report report;
    std::string error;
    ASSERT_EQ(
        collect::readDocument(core::assertDocument(sent, {.server = "192.0.2.7"}), report, error),
        Document::Failure)
        << error;
    EXPECT_EQ(report.type, "ALERT");
    EXPECT_EQ(report.file, sent.site.file);
    EXPECT_EQ(report.condition, sent.condition);
    EXPECT_EQ(report.message, "ä\uFFFD\uFFFD\n]]>");
    EXPECT_NE(report.backtrace.find("0x1 <main>"), std::string::npos);
    EXPECT_EQ(report.server, "192.0.2.7");
    EXPECT_EQ((std::vector{report.line, report.level, report.count, report.total}),
              (std::vector<int64_t>{55, 2, 3, 7}));
    EXPECT_EQ(
        collect::readDocument(core::sendLogsDocument({"a.cpp", 1}, "192.0.2.7"), report, error),
        Document::SendLogs);
}

TEST(Report, SaysWhatIsWrongWithADatagram) {
    const auto document = [](const std::string& count, const std::string& total) {
        return "<assert><type>ASSERT</type><file>a</file><line>1</line><count>" + count +
               "</count><total>" + total + "</total><later><on/></later></assert>";
    };
    struct {
        int line;
        std::string datagram;
        const char* error; // empty for none
    } const rows[] = {
        {__LINE__, document("1", "1"), ""},
        {__LINE__, document("0", "1"), "0 failures of 1"},
        {__LINE__, document("2", "1"), "2 failures of 1"},
        {__LINE__, document("1", "4294967296"), "1 failures of 4294967296"},
        {__LINE__, document("1", "99999999999999999999"),
         "'99999999999999999999' is not a number for 'total'"},
        {__LINE__, "<assert><type>OTHER</type></assert>", "'OTHER' is not a type of failure"},
        {__LINE__, "<assert><type>ALERT</type></assert>", "it names no file"},
        {__LINE__, "<html></html>", "the element 'html' is not known"},
        {__LINE__, "", "line 1, column 1: "},
        {__LINE__, std::string("\0\xff", 2), "line 1, column 1: "},
        {__LINE__, document("1", "1") + "<", "line 1, column "},
        {__LINE__, "<sendlogs>", "line 1, column "},
        {__LINE__, "<!DOCTYPE a [<!ENTITY b 'c'>]><assert>&b;</assert>", "line 1, column "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        Report report;
        std::string error;
        const Document result = collect::readDocument(row.datagram, report, error);
        EXPECT_EQ(result == Document::Malformed, *row.error != '\0');
        EXPECT_THAT(error, testing::StartsWith(row.error));
    }
}

} // namespace
