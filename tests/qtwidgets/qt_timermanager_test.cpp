#include "qt_timermanager.h"

#include "kern_timerinterface.h"
#include "testing_checkrecorder.h"

#include <QTest>

#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <set>

namespace {

struct Owner final : kern::TimerInterface {
    explicit Owner(std::function<void(Owner&, int64_t)> expired) : onExpired(std::move(expired)) {}
    void timerExpired(int64_t id) override { onExpired(*this, id); }

    std::function<void(Owner&, int64_t)> onExpired;
};

TEST(QtTimerManager, RunsThousandsOfTimersWithIdsOfTheirOwn) {
    NS_QT::QtTimerManager manager;
    std::multiset<int64_t> expired;
    std::set<int64_t> started;
    std::vector<std::unique_ptr<Owner>> owners;
    for (int i = 0; i < 50; ++i) { // a hundred thousand in all
        owners.push_back(std::make_unique<Owner>([&](Owner& owner, int64_t id) {
            expired.insert(id);
            owner.killTimer(id);
        }));
        for (uint32_t j = 0; j < 2000; ++j)
            started.insert(owners.back()->startTimer(j % 3));
    }
    EXPECT_EQ(started.size(), 100000U);
    EXPECT_GT(*started.begin(), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return expired.size() == started.size(); }));
    EXPECT_EQ(std::set(expired.begin(), expired.end()), started);
    EXPECT_GT(owners[0]->startTimer(100000), *started.rbegin());
}

TEST(QtTimerManager, ReportsATimerThatIsKilledTwice) {
    NS_QT::QtTimerManager manager;
    test::CheckRecorder checks;
    auto owner = std::make_unique<Owner>([](auto&&...) { ADD_FAILURE() << "called when deleted"; });
    const int64_t first = owner->startTimer(0);
    owner->startTimer(0);
    for (int i = 0; i < 3; ++i)
        owner->killTimer(first);
    EXPECT_THAT(checks.takeSites(),
                testing::ElementsAre("CHECKF qt_timermanager.cpp", "CHECKF qt_timermanager.cpp"));
    EXPECT_EQ(owner->activeTimers(), 1);
    EXPECT_EQ(manager.runningTimers(owner.get()), 1);
    owner.reset();
    bool idle = false;
    Owner other([&](auto&&...) { idle = true; });
    other.startTimer(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return idle; }));
}

// An event loop inside a callback serves the other timers, as Qt does.
TEST(QtTimerManager, GoesOnInsideACallback) {
    NS_QT::QtTimerManager manager;
    int others = 0;
    int calls = 0;
    Owner other([&](auto&&...) { ++others; });
    Owner waiting([&](Owner& self, int64_t id) {
        ++calls;
        EXPECT_TRUE(QTest::qWaitFor([&] { return others >= 3; }));
        EXPECT_EQ(calls, 1) << "its own timer waits meanwhile";
        self.killTimer(id);
    });
    waiting.startTimer(1);
    other.startTimer(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls == 1 && others >= 3; }));
}

TEST(QtTimerManager, CallbacksMayEndWhateverTheyLike) {
    auto manager = std::make_unique<NS_QT::QtTimerManager>();
    std::unique_ptr<Owner> victim, killer;
    victim = std::make_unique<Owner>([](auto&&...) { ADD_FAILURE() << "expired after its end"; });
    killer = std::make_unique<Owner>([&](Owner& self, int64_t id) {
        victim.reset();
        EXPECT_GT(self.startTimer(0), id);
        self.onExpired = [&](auto&&...) { killer.reset(); };
    });
    killer->startTimer(0);
    victim->startTimer(1);
    victim->startTimer(0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return killer == nullptr; }));

    Owner last([&](auto&&...) { manager.reset(); });
    last.startTimer(0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return manager == nullptr; }));
}

} // namespace
