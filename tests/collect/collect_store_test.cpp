#include "collect_store.h"

#include "collect_export.h"
#include "collect_lines.h"
#include "collect_lock.h"
#include "core_timespec.h"
#include "temp_folder.h"
#include "testing_logrecorder.h"

#include <gmock/gmock.h>

namespace {

using collect::Arrival;
using collect::Entry;
using collect::Store;
using collect::Table;
using testing::ElementsAre;

/// A report from a site, the `total`th of its sender, which arrives a second after the previous
/// one.
Arrival arrival(const std::string& file, int64_t total, const std::string& sender = "10.0.0.1:1",
                int64_t count = 1) {
    static int64_t time = core::now() / 1'000'000'000 * 1'000'000'000;
    Arrival result{.time = time += 1'000'000'000, .sender = sender, .report = {}};
    result.report.type = "ASSERT";
    result.report.file = file;
    result.report.message = "message " + std::to_string(total);
    result.report.count = count;
    result.report.total = total;
    return result;
}

/// "FILE failures/total", the latest first.
std::vector<std::string> shown(const Table& table) {
    std::vector<std::string> lines;
    for (const Entry& entry : table.entries())
        lines.push_back(entry.report.file + ' ' + std::to_string(entry.arrived) + '/' +
                        std::to_string(entry.total));
    return lines;
}

std::vector<std::string> shown(const std::string& folder) {
    Table table;
    EXPECT_TRUE(Store(folder).replay(table));
    return shown(table);
}

TEST(Table, CountsWhatArrivedAndWhatDidNot) {
    Table table;
    table.add(arrival("a", 1));
    table.add(arrival("b", 5, "10.0.0.1:1", 2)); // 3 before the collector ran
    table.add(arrival("a", 4, "10.0.0.1:1", 1)); // 2 lost
    table.add(arrival("a", 2, "10.0.0.1:1", 1)); // overtaken on the way
    table.add(arrival("a", 1, "10.0.0.1:2"));    // another run
    table.add(arrival("a", 5, "10.0.0.1:1"));
    table.add(arrival("a", 1, "10.0.0.1:1")); // its port was given to another run
    EXPECT_THAT(shown(table), ElementsAre("a 6/7", "b 2/5"));
    EXPECT_EQ(table.entries().front().missing(), 1);
    EXPECT_EQ(table.entries().front().report.message, "message 1");
}

TEST(Table, HasALimit) {
    Table table;
    for (size_t i = 0; i < Table::kMaxEntries + 10; ++i) {
        table.add(arrival("file " + std::to_string(i), 1));
        table.add(arrival("file 0", static_cast<int64_t>(i + 1)));
    }
    EXPECT_EQ(table.entries().size(), Table::kMaxEntries);
    EXPECT_EQ(table.givenUp(), 10U);
    EXPECT_EQ(table.entries().front().report.file, "file 0") << "it happened most recently";
    Arrival large = arrival("large", 1);
    large.report.message = std::string(Table::kMaxText - 4, 'x') + "\xC3\xA4\xC3\xA4\xC3\xA4";
    table.add(large);
    EXPECT_EQ(table.entries().front().report.message,
              std::string(Table::kMaxText - 4, 'x') + "...");
}

/// A day of many stations: a million reports from few sites.
TEST(Table, GrowsWithSitesNotWithReports) {
    Table table;
    for (int64_t i = 0; i < 1'000'000; ++i)
        table.add(arrival("file " + std::to_string(i % 50), i / 50 + 1,
                          "10.0.0." + std::to_string(i % 7)));
    EXPECT_EQ(table.entries().size(), 50U);
    for (const Entry& entry : table.entries())
        EXPECT_LE(entry.runs.size(), Table::kMaxRuns);
}

TEST(FolderLock, IsForOne) {
    using Lock = collect::FolderLock;
    const test::TempFolder folder;
    const test::LogRecorder lines;
    {
        const Lock first(folder.path());
        EXPECT_EQ(first.state(), Lock::State::Held);
        EXPECT_EQ(Lock(folder.path()).state(), Lock::State::HeldByAnother);
    }
    EXPECT_EQ(Lock(folder.path()).state(), Lock::State::Held);
    EXPECT_EQ(Lock(folder / "none").state(), Lock::State::Failed);
}

TEST(Store, MakesTheTableWholeAgain) {
    const test::TempFolder temp;
    const std::string folder = temp / "new" + "/folder";
    std::string before;
    {
        Table table;
        Store store(folder);
        ASSERT_TRUE(store.replay(table) && store.open(table));
        for (Arrival next : {arrival("a", 3), arrival("b\n\"\\\x01\xff", 1), arrival("a", 4)}) {
            next.report.message = "\u2028</script>\n\"";
            table.add(next);
            EXPECT_TRUE(store.append(next, table));
        }
        before = collect::exportTable(table, collect::Options::Format::Json);
    }
    const std::string path = folder + "/failures.jsonl";
    test::writeFile(path, test::readFile(path) + "{\"arrived\":\"20"); // as a power cut leaves it
    test::LogRecorder lines;
    Table table;
    Store store(folder);
    ASSERT_TRUE(store.replay(table) && store.open(table));
    EXPECT_EQ(collect::exportTable(table, collect::Options::Format::Json), before);
    EXPECT_THAT(lines.take(), ElementsAre(testing::HasSubstr("skipped 1 lines")));
    const Arrival next = arrival("a", 5);
    table.add(next);
    EXPECT_TRUE(store.append(next, table));
    EXPECT_THAT(shown(folder), ElementsAre("a 3/5", testing::_));
}

TEST(Store, BeginsEachFileWithAllThatIsKnown) {
    const test::TempFolder folder;
    Table table;
    Store store(folder.path(), {.maxSize = 4000, .maxFiles = 3});
    ASSERT_TRUE(store.replay(table) && store.open(table));
    for (int64_t i = 1; i <= 60; ++i) {
        const Arrival next =
            arrival(i % 2 == 0 ? "a" : "b", i, "10.0.0.1:" + std::to_string(i % 3));
        table.add(next);
        EXPECT_TRUE(store.append(next, table));
    }
    ASSERT_THAT(folder.names(),
                ElementsAre("failures.jsonl", "failures.jsonl.1", "failures.jsonl.2"));
    EXPECT_EQ(shown(folder.path()), shown(table));
    const Arrival next = arrival("a", 62, "10.0.0.1:0");
    table.add(next);
    EXPECT_TRUE(store.append(next, table));
    EXPECT_EQ(shown(folder.path()), shown(table)) << "runs are known, too";

    // The program ended after the renaming, before there was a new file.
    std::filesystem::remove(test::systemPath(folder / "failures.jsonl.2"));
    std::filesystem::copy(test::systemPath(folder / "failures.jsonl"),
                          test::systemPath(folder / "kept"));
    std::filesystem::remove(test::systemPath(folder / "failures.jsonl.1"));
    std::filesystem::rename(test::systemPath(folder / "kept"),
                            test::systemPath(folder / "failures.jsonl.1"));
    EXPECT_EQ(shown(folder.path()), shown(table));
}

TEST(Lines, SkipWhatIsNone) {
    const std::string good = collect::lineOf(arrival("a", 1));
    Table table;
    ASSERT_TRUE(collect::replayLine(std::string_view(good).substr(0, good.size() - 1), table));
    for (const char* line : {"", "{}", "[]", "7", "{\"arrived\":\"2022-03-29T10:30:18.250Z\"}",
                             "{\"arrived\":{}}", "{\"arrived\":\"yesterday\"}", "{\"a\":1.5}"})
        EXPECT_FALSE(collect::replayLine(line, table)) << line;
    EXPECT_EQ(table.entries().size(), 1U);
}

} // namespace
