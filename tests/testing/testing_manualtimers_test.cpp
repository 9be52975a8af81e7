#include "testing_manualtimers.h"

#include "core_varargs.h"
#include "kern_timerinterface.h"

#include <gmock/gmock.h>

#include <string>

namespace {

struct Clock final : kern::TimerInterface {
    explicit Clock(std::string& ticks) : d_ticks(ticks) {}
    void timerExpired(int64_t id) override {
        d_ticks += core::format("%d ", id);
        if (id == killed)
            killTimer(id);
    }
    int64_t killed = 0;

private:
    std::string& d_ticks;
};

TEST(ManualTimers, ExpireInTheOrderOfTheirTime) {
    test::ManualTimers timers;
    std::string ticks;
    EXPECT_FALSE(timers.expire());
    timers.advance(1000);
    Clock clock(ticks);
    clock.startTimer(30);
    {
        Clock other(ticks);
        other.startTimer(10);
        other.startTimer(30);
        timers.advance(9);
        EXPECT_EQ(ticks, "");
        timers.advance(21);
        EXPECT_EQ(ticks, "2 2 1 2 3 ");
        EXPECT_EQ(timers.runningTimers(&other), 2);
    }
    EXPECT_EQ(timers.running(), 1U);
    clock.killed = 4;
    EXPECT_EQ(clock.startTimer(0), 4);
    ticks.clear();
    timers.advance(29);
    EXPECT_TRUE(timers.expire());
    EXPECT_EQ(ticks, "4 1 ");
    EXPECT_EQ(timers.running(), 1U);
}

} // namespace
