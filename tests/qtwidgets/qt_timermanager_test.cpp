#include "qt_timermanager.h"

#include "kern_timerinterface.h"

#include <QTest>

#include <functional>
#include <gtest/gtest.h>
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
    for (int i = 0; i < 50; ++i) {
        owners.push_back(std::make_unique<Owner>([&](Owner& owner, int64_t id) {
            expired.insert(id);
            owner.killTimer(id);
        }));
        for (uint32_t j = 0; j < 60; ++j)
            started.insert(owners.back()->startTimer(j % 3));
    }
    EXPECT_EQ(started.size(), 3000U);
    EXPECT_GT(*started.begin(), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return expired.size() == started.size(); }));
    EXPECT_EQ(std::set(expired.begin(), expired.end()), started);
    const int64_t next = owners[0]->startTimer(100000);
    EXPECT_GT(next, *started.rbegin());
    manager.killTimer(next, owners[1].get()); // not its own
    EXPECT_EQ(manager.runningTimers(owners[0].get()), 1);
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
