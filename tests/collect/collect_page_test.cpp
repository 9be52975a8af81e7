#include "collect_page.h"

#include "collect_export.h"
#include "collect_options.h"

#include <gmock/gmock.h>

namespace {

using collect::Options;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr int64_t kTime = int64_t{1648549818} * 1'000'000'000; // 2022-03-29 10:30:18

collect::Table tableOf(const std::string& text) {
    collect::Table table;
    collect::Arrival arrival{.time = kTime, .sender = "10.0.0.1:1", .report = {}};
    collect::Report& report = arrival.report;
    report.type = "ASSERT";
    for (std::string* field : {&report.file, &report.message, &report.backtrace, &report.product,
                               &report.swver, &report.hostname})
        *field = text;
    report.count = 2;
    report.total = 5;
    table.add(arrival);
    return table;
}

TEST(Page, KeepsTextsTexts) {
    const std::string page =
        collect::makePage(tableOf("<script>alert(1)</script>\" onload='x'\xff"), {}, kTime);
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
    EXPECT_THAT(page, HasSubstr("&lt;script&gt;alert(1)"));
    EXPECT_THAT(page, HasSubstr("2 (3 more not received)"));
    EXPECT_THAT(page, HasSubstr("2022-03-29 10:30:18 UTC"));
    EXPECT_THAT(page, EndsWith("</script></main></body></html>")) << "each close has its open";
}

TEST(Export, MeansTheSameToEveryReader) {
    const collect::Table table = tableOf("=1+\"2\",\n3");
    const std::string cell = "\"'=1+\"\"2\"\",\n3\"";
    EXPECT_EQ(collect::exportTable(table, Options::Format::Csv),
              "file,line,type,hostname,product,swver,os,first,last,failures,total,missing,level,"
              "condition,message,backtrace\r\n" +
                  cell + ",0,ASSERT," + cell + ',' + cell + ',' + cell +
                  ",\"\",2022-03-29T10:30:18.000Z,2022-03-29T10:30:18.000Z,2,5,3,0,\"\"," + cell +
                  ',' + cell + "\r\n");
    EXPECT_THAT(collect::exportTable(table, Options::Format::Json),
                HasSubstr(R"("failures":2,"total":5,"missing":3,)"));
}

TEST(Options, AreReadOrRefused) {
    using Words = std::vector<std::string>;
    const Options options = collect::readOptions(
        {"--listen", "0.0.0.0", "--port", "0", "jitd", "--folder", "x y", "--once"});
    EXPECT_EQ(options.task, Options::Task::Receive);
    EXPECT_EQ(options.address + ' ' + options.folder, "0.0.0.0 x y");
    EXPECT_TRUE(options.port == 0 && options.once);
    EXPECT_EQ(collect::readOptions({"--export", "json"}).format, Options::Format::Json);
    const std::pair<Words, const char*> refused[] = {
        {{"--port"}, "--port needs a value"},
        {{"--port", "65536"}, "'65536' is not a port"},
        {{"--port", "1x"}, "'1x' is not a port"},
        {{"--port", ""}, "'' is not a port"},
        {{"--export", "xml"}, "'xml' is neither csv nor json"},
        {{"--help", "page"}, "unknown argument 'page'"},
    };
    for (const auto& [words, complaint] : refused) {
        EXPECT_EQ(collect::readOptions(words).complaint, complaint);
        EXPECT_EQ(collect::readOptions(words).task, Options::Task::Refuse);
    }
}

} // namespace
