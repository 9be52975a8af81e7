#include "qt_timermanager.h"

#include "kern_timerinterface.h"
#include "testing_matchers.h"

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
    const NS_QT::QtTimerManager manager;
    std::multiset<int64_t> expired;
    std::set<int64_t> started;
    Owner owner([&](Owner& self, int64_t id) {
        expired.insert(id);
        self.killTimer(id);
    });
    for (uint32_t i = 0; i < 100000; ++i)
        started.insert(owner.startTimer(i % 3));
    EXPECT_EQ(started.size(), 100000U);
    EXPECT_TRUE(QTest::qWaitFor([&] { return expired.size() == started.size(); }));
    EXPECT_EQ(std::set(expired.begin(), expired.end()), started);
}

TEST(QtTimerManager, ReportsATimerThatIsKilledTwice) {
    const NS_QT::QtTimerManager manager;
    auto owner = std::make_unique<Owner>([](auto&&...) { ADD_FAILURE() << "called when deleted"; });
    const int64_t first = owner->startTimer(0);
    owner->startTimer(0);
    owner->killTimer(first);
    EXPECT_THAT([&] { owner->killTimer(first); },
                test::FailsCheck(testing::HasSubstr(" has no timer ")));
    EXPECT_EQ(manager.runningTimers(owner.get()), 1);
    owner.reset();
    QTest::qWait(1);
}

TEST(QtTimerManager, CallbacksMayEndWhateverTheyLikeAndRunEventLoops) {
    auto manager = std::make_unique<NS_QT::QtTimerManager>();
    std::unique_ptr<Owner> victim, killer;
    victim = std::make_unique<Owner>([](auto&&...) { ADD_FAILURE() << "expired after its end"; });
    killer = std::make_unique<Owner>([&](Owner& self, int64_t) {
        victim.reset();
        self.startTimer(0);
        self.onExpired = [&](auto&&...) { killer.reset(); };
    });
    killer->startTimer(0);
    victim->startTimer(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return killer == nullptr; }));

    int others = 0, calls = 0;
    Owner other([&](auto&&...) { ++others; });
    Owner last([&](auto&&...) {
        ++calls;
        EXPECT_TRUE(QTest::qWaitFor([&] { return others >= 3; }));
        EXPECT_EQ(calls, 1) << "its own timer waits meanwhile";
        manager.reset();
    });
    last.startTimer(1);
    other.startTimer(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return manager == nullptr; }));
}

} // namespace
