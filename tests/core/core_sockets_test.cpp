// Addresses, sockets and datagrams.

#include "core_inet.h"
#include "core_inet_types.h"
#include "core_udp4socket.h"
#include "core_varargs.h"
#include "internal/core_inet_system.h"
#include "internal/core_smartsocket_system.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"
#include "testing_matchers.h"

#include <cstring>
#include <functional>
#include <gmock/gmock.h>

namespace {

using core::SmartSocket;
using core::Udp4Socket;
using test::FailsCheck;
using testing::ElementsAre;
using testing::StartsWith;

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

constexpr uint32_t kBothFlags = SmartSocket::kNonBlocking + SmartSocket::kReuseAddr;

/// Notes the calls that it is given, and fails those that are named.
class NotedCalls final : public SmartSocket::System {
public:
    using Handle = core::SocketHandle;
    Handle open(int32_t family, int32_t type, int32_t protocol) const override {
        return noted("open") ? System::open(family, type, protocol) : core::kInvalidSocket;
    }
    int close(Handle socket) const override {
        noted("close");
        return System::close(socket);
    }
    bool setReuseAddr(Handle) const override {
        afterReuse();
        return noted("reuse");
    }
    void setNonBlocking(Handle) const override { noted("nonblocking"); }
    bool join(Handle, const core::detail::Membership&) const override { return noted("join"); }
    bool leave(Handle, const core::detail::Membership&) const override { return noted("leave"); }

    std::string take() { return std::exchange(d_calls, {}); }

    std::string failing;
    std::function<void()> afterReuse = [] {};

private:
    bool noted(const std::string& name) const {
        d_calls += name + ';';
        return name != failing;
    }
    mutable std::string d_calls;
};

TEST(SmartSocket, SetsReuseBeforeNonBlockingAndLeavesNothingOpenOnFailure) {
    NotedCalls calls;
    test::LogRecorder log;
    SmartSocket socket(calls);
    const auto create = [&socket](uint32_t flags) {
        return socket.create(AF_INET, SOCK_DGRAM, 0, flags);
    };
    EXPECT_TRUE(create(0) && create(kBothFlags));
    EXPECT_EQ(calls.take(), "open;close;open;reuse;nonblocking;");

    calls.failing = "reuse";
    EXPECT_FALSE(create(kBothFlags));
    EXPECT_EQ(calls.take(), "close;open;reuse;close;");
    EXPECT_THAT(log.take(),
                ElementsAre("WARN core::SmartSocket::setReuseAddr - failed to set REUSEADDR",
                            "WARN Log at core_smartsocket.cpp:72"));

    calls.failing.clear();
    calls.afterReuse = [&socket] { socket.close(); };
    EXPECT_THAT([&] { EXPECT_FALSE(create(kBothFlags)); },
                FailsCheck({"core_smartsocket.cpp", 440}, ""));
    EXPECT_THAT(log.take(), testing::Contains("WARN Log at core_smartsocket.cpp:79"));
    EXPECT_THAT([&] { EXPECT_FALSE(socket.setReuseAddr()); }, FailsCheck(""));
}

TEST(Udp4Socket, OpensOnceAndRefusesToWorkClosed) {
    NotedCalls calls;
    test::LogRecorder log;
    Udp4Socket socket(calls);
    calls.failing = "open";
    EXPECT_FALSE(socket.open());
    EXPECT_THAT(log.take(),
                ElementsAre("WARN core::SmartSocket::create(2,2,0) - failed to open socket",
                            "WARN Log at core_socket.cpp:54"));
    calls.failing.clear();
    EXPECT_TRUE(socket.open());
    EXPECT_THAT([&] { EXPECT_FALSE(socket.open()); }, FailsCheck({"core_socket.cpp", 47}, ""));
    EXPECT_EQ(socket.close(), 0);
    EXPECT_EQ(socket.close(), -1);
    EXPECT_THAT([&] { EXPECT_FALSE(socket.send("127.0.0.1", 9, "x")); },
                FailsCheck({"core_udp4socket.cpp", 88}, ""));
    EXPECT_THAT([&] { EXPECT_FALSE(socket.leaveMulticastGroup("0.0.0.0")); },
                FailsCheck({"core_udp4socket.cpp", 534}, ""));
    test::CheckRecorder checks;
    EXPECT_FALSE(socket.bind("127.0.0.1", 0) || socket.receive() ||
                 socket.joinMulticastGroup("239.0.0.1", "127.0.0.1"));
    EXPECT_EQ(checks.take().size(), 3);
    const auto below = core::detail::receiveTimeout(-1), none = core::detail::receiveTimeout(0);
    EXPECT_EQ(std::memcmp(&below, &none, sizeof below), 0) << "both wait for ever";
}

TEST(Udp4Socket, CarriesDatagramsUpToTheLimit) {
    test::LogRecorder log;
    Udp4Socket receiver;
    ASSERT_TRUE(receiver.open(0, 10'000) && receiver.bind("127.0.0.1", 0));
    EXPECT_TRUE(receiver.joinMulticastGroup("239.0.0.1", "127.0.0.1"));
    EXPECT_GE(receiver.setReceiveBuffer(65536), 65536);
    Udp4Socket sender;
    ASSERT_TRUE(sender.open(kBothFlags) && sender.bind("127.0.0.1", 0));
    EXPECT_FALSE(sender.receive()); // nothing there, and no waiting

    const auto port = static_cast<uint32_t>(receiver.localPort());
    const std::string most(Udp4Socket::kMaxLength, 'x');
    for (const std::string& data : {std::string(), most}) {
        EXPECT_TRUE(sender.send("127.0.0.1", port, data));
        const auto datagram = receiver.receive();
        ASSERT_TRUE(datagram && datagram->data == data);
        EXPECT_TRUE(datagram->ip == "127.0.0.1" && datagram->port == sender.localPort());
    }
    EXPECT_EQ(receiver.close(), 0);

    // As a length of 32 bits this would be 5.
    const uint64_t tooLong = sizeof(size_t) > 4 ? (uint64_t{1} << 32U) + 5 : most.size() + 1;
    const std::string_view beyond(most.data(), static_cast<size_t>(tooLong));
    EXPECT_FALSE(sender.send("127.0.0.1", port, beyond));
    EXPECT_FALSE(sender.send("127.0.0.1", 65536 + port, "four"));
    EXPECT_FALSE(sender.send("127.0.0", port, "four"));
    EXPECT_FALSE(sender.send("255.255.255.255", port, "four")) << "needs permission";
    const auto failed = [](uint64_t length, uint32_t to, const char* ip, const std::string& what) {
        return StartsWith(core::format("WARN core::Udp4Socket::send(%u,%u,%s) - failed %s", length,
                                       to, ip, what));
    };
    const std::string tooLongError = core::format("in sendto (%u: ", core::detail::kMessageTooLong);
    EXPECT_THAT(log.take(), ElementsAre(failed(tooLong, port, "127.0.0.1", tooLongError),
                                        failed(4, 65536 + port, "127.0.0.1", "to set sockaddr"),
                                        "WARN core::SetSockAddr - invalid ip '127.0.0'",
                                        failed(4, port, "127.0.0", "to set sockaddr"),
                                        failed(4, port, "255.255.255.255", "in sendto (")));
}

TEST(Udp4Socket, LeavesTheGroupsOfAnInterfaceAndAtLastAll) {
    NotedCalls calls;
    test::LogRecorder log;
    Udp4Socket socket(calls);
    ASSERT_TRUE(socket.open());
    for (const char* interfaceIp : {"127.0.0.1", "192.0.2.7", "0.0.0.0"})
        EXPECT_TRUE(socket.joinMulticastGroup("239.0.0.1", interfaceIp));
    calls.take();
    EXPECT_TRUE(socket.leaveMulticastGroup("192.0.2.7"));
    EXPECT_EQ(calls.take(), "leave;");
    calls.failing = "join";
    EXPECT_FALSE(socket.joinMulticastGroup("239.0.0.1", "127.0.0.1"));
    calls.failing = "leave";
    EXPECT_FALSE(socket.joinMulticastGroup("239.0.0.1", "lo"));
    EXPECT_EQ(socket.close(), 0);
    EXPECT_EQ(calls.take(), "join;leave;leave;close;");
    const std::string function = "WARN core::Udp4Socket::";
    const std::string left = function + "leaveMulticastGroup(239.0.0.1) - failed dropping "
                                        "membership for interface ";
    EXPECT_THAT(log.take(),
                ElementsAre(StartsWith(function + "joinMulticastGroup(239.0.0.1) - failed adding "
                                                  "membership for interface 127.0.0.1 ("),
                            "WARN core::SetSockAddr - invalid ip 'lo'",
                            function + "joinMulticastGroup(239.0.0.1) - invalid inteface ip 'lo'",
                            left + "127.0.0.1", left + "0.0.0.0"));
}

} // namespace
