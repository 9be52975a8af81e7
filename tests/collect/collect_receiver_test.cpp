#include "collect_receiver.h"

#include "child_process.h"
#include "core_assert.h"
#include "core_failurereport.h"
#include "core_log.h"
#include "temp_folder.h"
#include "testing_logrecorder.h"

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>

namespace {

using collect::Options;
using collect::Receiver;

std::string documentOf(const std::string& message) {
    const core::FailureReport report{.site = {core::FailureType::Assertion, "a.cpp", 1},
                                     .condition = {},
                                     .message = message,
                                     .backtrace = {}};
    return core::assertDocument(report, {});
}

/// A receiver on a free port, with its own folder.
struct Collector {
    Collector() {
        options.folder = folder.path();
        options.port = 0;
        EXPECT_TRUE(store.replay(table) && store.open(table));
    }
    /// Runs the loop until the condition is true.
    void runUntil(std::function<bool()> condition) {
        struct Watcher final : kern::TimerInterface {
            void timerExpired(int64_t) override {
                if (isSo())
                    loop->stop();
            }
            std::function<bool()> isSo;
            kern::PollLoop* loop = nullptr;
        } watcher;
        watcher.isSo = std::move(condition);
        watcher.loop = &loop;
        watcher.startTimer(1);
        loop.run();
    }
    std::string page() const { return test::readFile(receiver.pagePath()); }

    const test::TempFolder folder;
    kern::PollLoop loop;
    collect::Table table;
    Options options;
    collect::Store store{folder.path()};
    Receiver receiver{loop, table, store, options};
};

TEST(Receiver, ShowsWhatArrivesAndSurvivesTheRest) {
    Collector collector;
    Receiver& receiver = collector.receiver;
    ASSERT_TRUE(receiver.start());
    collector.runUntil([&] { return !collector.page().empty(); });
    EXPECT_THAT(collector.page(), testing::HasSubstr("Nothing has failed so far."));
    test::LogRecorder lines;
    core::Udp4Socket sender;
    ASSERT_TRUE(sender.open());
    const auto port = static_cast<uint32_t>(receiver.port());
    for (const std::string& datagram :
         {documentOf("<b>one</b>"), std::string(65507, 'x'), std::string(), documentOf("two"),
          core::sendLogsDocument({"a.cpp", 1}, "127.0.0.1")})
        EXPECT_TRUE(sender.send("127.0.0.1", port, datagram));
    collector.runUntil([&] { return collector.page().find("two") != std::string::npos; });
    EXPECT_EQ(receiver.counts().reports, 2U);
    EXPECT_EQ(receiver.counts().malformed, 2U);
    EXPECT_THAT(lines.take(), testing::ElementsAre(testing::HasSubstr("no report: line 1"),
                                                   testing::HasSubstr("should be fetched")));
    EXPECT_THAT(collector.folder.names(), testing::ElementsAre("failures.jsonl", "index.html"));
}

/// Fails a check in the program that receives on `address` and reports to 127.0.0.1.
void failWhileReceiving(const std::string& address, bool reportsToItself) {
    const test::WorkingFolder folder;
    Collector collector;
    collector.options.address = address;
    core::Udp4Socket other;
    ASSERT_TRUE(other.open(core::SmartSocket::kNonBlocking) && other.bind("127.0.0.1", 0));
    if (reportsToItself) { // the port must be known before it starts
        collector.options.port = static_cast<uint16_t>(other.localPort());
        other.close();
    }
    std::filesystem::create_directory("settings");
    test::writeFile("settings/testing.ini",
                    core::format("[general]\nsend_address 127.0.0.1\nsend_port %d\n"
                                 "[assert]\nsend true\n",
                                 reportsToItself ? static_cast<int32_t>(collector.options.port)
                                                 : other.localPort()));
    ASSERT_TRUE(collector.receiver.start());
    CHECKF(false, "a fault of the collector's own");
    core::Udp4Socket sender;
    ASSERT_TRUE(sender.open());
    EXPECT_TRUE(sender.send("127.0.0.1", static_cast<uint32_t>(collector.receiver.port()),
                            documentOf("of another")));
    collector.runUntil([&] { return collector.receiver.counts().reports > 0; });
    EXPECT_EQ(collector.receiver.counts().reports, 1U);
    EXPECT_EQ(collector.table.entries().front().report.message, "of another");
    EXPECT_EQ(!reportsToItself && other.receive().has_value(), !reportsToItself);
}

CHILD_CASE(failsWhileReceiving) {
    failWhileReceiving(argument.substr(1), argument.starts_with('!'));
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

TEST(Receiver, NeverReportsToItself) {
    for (const char* argument : {"?127.0.0.1", "!127.0.0.1", "!0.0.0.0"}) {
        const test::ChildResult result = test::runChild("failsWhileReceiving", argument);
        EXPECT_EQ(result.status, 0) << argument << '\n' << result.out << result.err;
    }
}

} // namespace
