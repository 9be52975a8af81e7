#include "core_inet.h"

#include "core_inet_types.h"
#include "internal/core_inet_system.h"
#include "log_recorder.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

TEST(SetSockAddr, TakesDottedQuadsOnly) {
    test::LogRecorder log;
    sockaddr_in address{};
    EXPECT_TRUE(core::SetSockAddr(address, "255.0.10.255"));
    EXPECT_EQ(ntohl(address.sin_addr.s_addr), 0xFF000AFF);
    for (const std::string ip :
         {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.-4", "01.2.3.4", "1.2..4", " 1.2.3.4",
          "1.2.3.4294967300", "0x1.2.3.4", "localhost", "50%s.1"}) {
        EXPECT_FALSE(core::SetSockAddr(address, ip)) << ip;
        EXPECT_THAT(log.take(), ElementsAre("WARN core::SetSockAddr - invalid ip '" + ip + "'"));
    }
    EXPECT_EQ(core::addressText(address), "255.0.10.255");
}

struct ScriptedNetwork final : core::WinsockInit::System {
    Start start() const override { return answer; }
    void stop() const override { ++stops; }

    Start answer{};
    mutable int stops = 0;
};

TEST(Winsock, IsReadyBeforeMainByVersion2Dot2Alone) {
    EXPECT_TRUE(core::winsockReady());
    test::LogRecorder log({core::kChannelCrit});
    ScriptedNetwork network;
    const auto start = [&network](const ScriptedNetwork::Start& answer) {
        network.answer = answer;
        const core::WinsockInit started(network);
        return core::winsockReady();
    };
    core::WinsockInit::stop(network);
    core::WinsockInit::stop(network); // does nothing any more
    EXPECT_FALSE(start({10091, 2, 2}) || start({0, 1, 1}) || start({0, 2, 0}));
    EXPECT_THAT(log.take(), ElementsAre("CRIT WinsockInit - WSAStartup failed, err=10091",
                                        "CRIT WinsockInit - no suitable WinSock DLL (1.1)",
                                        "CRIT WinsockInit - no suitable WinSock DLL (2.0)"));
    EXPECT_TRUE(start({0, 2, 2}));
    EXPECT_EQ(network.stops, 3);
}

} // namespace
