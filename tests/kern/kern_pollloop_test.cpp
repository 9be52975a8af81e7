#include "kern_pollloop.h"

#include "core_udp4socket.h"
#include "internal/kern_pollloop_system.h"
#include "kern_descriptorinterface.h"
#include "kern_timerinterface.h"
#include "testing_checkrecorder.h"

#include <functional>
#include <gmock/gmock.h>
#include <optional>
#include <thread>

namespace {

using testing::ElementsAre;

/// A clock that stands still but for the waiting of the loop, and descriptors that are
/// ready as the script says.
struct ScriptedPoll final : kern::PollLoop::System {
    int64_t now() const override { return time; }
    void poll(std::vector<kern::detail::PollEntry>& entries, int64_t timeout) const override {
        timeouts.push_back(timeout);
        time += timeout + delay;
        for (auto& entry : entries) {
            entry.canRead = entry.wantsRead && (entry.descriptor == 0 ? woken : ready);
            entry.canWrite = entry.wantsWrite && ready;
            entry.invalid = entry.descriptor == invalid;
        }
    }
    intptr_t makeWaker() const override { return 0; }
    void wake(intptr_t) const override { woken = true; }
    void settle(intptr_t) const override { woken = false; }
    void closeWaker(intptr_t) const override {}

    mutable int64_t time = 1000;
    mutable std::vector<int64_t> timeouts; // that were asked for
    mutable bool woken = false;
    int64_t delay = 0;
    bool ready = false;
    intptr_t invalid = -1;
};

struct Owner final : kern::TimerInterface, kern::DescriptorInterface {
    using Event = std::function<void(Owner&, int64_t)>;
    explicit Owner(Event event) : onEvent(std::move(event)) {}
    void timerExpired(int64_t id) override { onEvent(*this, id); }
    void readReady(intptr_t descriptor) override { onEvent(*this, descriptor); }
    void writeReady(intptr_t descriptor) override { onEvent(*this, -descriptor); }
    using DescriptorInterface::unwatchRead;
    using DescriptorInterface::watchRead;
    using DescriptorInterface::watchWrite;

    Event onEvent;
};

TEST(PollLoop, ExpiresTimersInTheirOrderAndOnceForWhatTheyMissed) {
    ScriptedPoll poll;
    kern::PollLoop loop(poll);
    std::vector<std::string> expired;
    Owner owner([&](Owner& self, int64_t id) {
        expired.push_back(std::to_string(id) + '@' + std::to_string(poll.time));
        poll.delay = expired.size() == 3 ? 100 : 0; // the machine slept
        if (expired.size() == 6)
            self.killTimer(1);
        if (expired.size() == 9)
            loop.stop();
    });
    EXPECT_EQ(owner.startTimer(30), 1);
    EXPECT_EQ(owner.startTimer(20), 2);
    loop.run();
    EXPECT_THAT(expired, ElementsAre("2@1020", "1@1030", "2@1040", "1@1160", "2@1160", "1@1160",
                                     "2@1160", "2@1180", "2@1200"));
    EXPECT_THAT(poll.timeouts, ElementsAre(20, 10, 10, 20, 0, 20, 20, 20));
    EXPECT_EQ(loop.runningTimers(&owner), 1);
}

TEST(PollLoop, CallbacksMayEndWhateverTheyLike) {
    ScriptedPoll poll;
    poll.ready = true;
    kern::PollLoop loop(poll);
    std::optional<Owner> victim(std::in_place, [](auto&&...) { ADD_FAILURE() << "after its end"; });
    std::vector<int64_t> events;
    std::optional<Owner> killer(std::in_place, [&](Owner& self, int64_t event) {
        events.push_back(event);
        victim.reset();
        if (event == 5)
            self.unwatchRead(5);
        if (event == -5)
            self.startTimer(0);
        if (event > 5) {
            loop.stop();
            killer.reset(); // with this function
        }
    });
    killer->watchRead(5);
    killer->watchWrite(5);
    for (int i = 0; i < 5; ++i)
        killer->killTimer(killer->startTimer(1));
    victim->watchRead(7);
    victim->startTimer(0);
    loop.run();
    EXPECT_THAT(events, ElementsAre(5, -5, 7));
    EXPECT_FALSE(loop.isWatched(5) || loop.isWatched(7));
}

TEST(PollLoop, ReportsMisuse) {
    test::CheckRecorder checks;
    ScriptedPoll poll;
    poll.invalid = 6;
    std::optional<kern::PollLoop> loop(std::in_place, poll);
    Owner owner([](auto&&...) {});
    Owner other([](auto&&...) {});
    EXPECT_TRUE(owner.watchRead(6));
    EXPECT_FALSE(other.watchRead(6));
    loop->stop();
    loop->run();
    EXPECT_TRUE(loop->isWatched(6)) << "a loop that was stopped calls nobody";
    Owner timer([&](auto&&...) { loop->stop(); });
    timer.startTimer(1);
    loop->run();
    EXPECT_FALSE(loop->isWatched(6));
    loop.reset();
    EXPECT_FALSE(owner.watchRead(6));
    EXPECT_THAT(checks.takeSites(),
                ElementsAre("CHECKF kern_descriptorinterface.cpp", "CHECKF kern_pollloop.cpp",
                            "CHECKF kern_descriptorinterface.cpp"));
}

TEST(PollLoop, WaitsForSocketsTimersAndOtherThreads) {
    kern::PollLoop loop;
    core::Udp4Socket receiver;
    ASSERT_TRUE(receiver.open(core::SmartSocket::kNonBlocking) && receiver.bind("127.0.0.1", 0));
    const core::Udp4Socket& sender = receiver;
    std::string received;
    std::thread stopper([] {});
    Owner owner([&](Owner& self, int64_t event) {
        if (event == 1) {
            self.killTimer(1);
            EXPECT_TRUE(
                sender.send("127.0.0.1", static_cast<uint32_t>(receiver.localPort()), "hello"));
        } else if (event == 2) {
            loop.stop(); // nothing has come for too long
        } else if (const auto datagram = receiver.receive()) {
            received = datagram->data;
            stopper.join();
            stopper = std::thread([&] { loop.stop(); });
        }
    });
    owner.startTimer(1);
    owner.startTimer(10'000);
    ASSERT_TRUE(owner.watchRead(receiver.descriptor()));
    loop.run();
    stopper.join();
    EXPECT_EQ(received, "hello");
}

} // namespace
