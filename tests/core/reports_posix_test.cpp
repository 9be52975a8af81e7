#include "child_process.h"
#include "core_check.h"
#include "core_reportsettings.h"
#include "core_testinterface.h"
#include "core_udp4socket.h"
#include "element_text.h"
#include "testing_logrecorder.h"

#include <sys/resource.h>

#include <gmock/gmock.h>

namespace {

constexpr core::CheckSite kSite{"some_module.cpp", 7};

/// Whether the process may have more files and sockets than it has.
void allowFiles(bool allow) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = allow ? limit.rlim_max : 0;
    setrlimit(RLIMIT_NOFILE, &limit);
}

CHILD_CASE(failsWithoutASocket) {
    core::Udp4Socket server;
    if (!server.open(0, 10'000) || !server.bind("127.0.0.1", 0))
        std::exit(1);
    core::ReportSettings settings;
    settings.sendAddress = "127.0.0.1";
    settings.sendPort = server.localPort();
    settings.flags = core::ReportSettings::kSend;
    core::TestInterface::instance().setSettings(settings);
    test::LogRecorder log;
    allowFiles(false);
    CHECKF_AT(kSite, false);
    allowFiles(true);
    CHECKF_AT(kSite, false);
    for (const std::string& line : log.take())
        std::puts(line.c_str());
    const std::string report = server.receive().value_or(core::Udp4Socket::Datagram{}).data;
    std::printf("%s of %s\n", test::elementText(report, "count").c_str(),
                test::elementText(report, "total").c_str());
}

TEST(Reports, ThatCannotBeSentAreKeptForTheNextTime) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizers that come with this one open files of their own";
#endif
    EXPECT_THAT(test::runChild("failsWithoutASocket").out,
                testing::EndsWith("WARN core::SmartSocket::create(2,2,0) - failed to open socket\n"
                                  "WARN Log at core_socket.cpp:54\n"
                                  "WARN TestInterface:sendAsserts - failed creating socket\n"
                                  "2 of 2\n"));
}

} // namespace
