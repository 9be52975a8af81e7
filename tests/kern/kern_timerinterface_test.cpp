#include "kern_timerinterface.h"

#include "core_varargs.h"
#include "kern_pollloop.h"
#include "kern_servermanagers.h"
#include "testing_checkrecorder.h"

#include <functional>
#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using test::FailedCheck;
using testing::ElementsAre;

/// A timer manager that notes what it is asked and answers what the test says.
struct ScriptedTimers : kern::TimerManager {
    int64_t startTimer(uint32_t interval, kern::TimerInterface*) override {
        calls.push_back(core::format("start %u", interval));
        return nextId;
    }
    int32_t removeTimers(kern::TimerInterface*) override { return removed; }
    void killTimer(int64_t id, kern::TimerInterface*) override {
        calls.push_back(core::format("kill %d", id));
    }

    std::vector<std::string> calls;
    int64_t nextId = 1;
    int32_t removed = -1;
};

struct Clock final : kern::TimerInterface {
    void timerExpired(int64_t) override {}
};

FailedCheck failed(int32_t line, const std::string& message = "") {
    return {"CHECKF", "kern_timerinterface.cpp", line, 0, message};
}

/// What fails while the body runs on a thread of its own, whose kernel state is new.
std::vector<FailedCheck> failuresOf(const std::function<void()>& body) {
    test::CheckRecorder checks;
    std::thread(body).join();
    return checks.take();
}

TEST(TimerInterface, CountsWhatManagersGrantAndHandlesHoldOne) {
    const auto failures = failuresOf([] {
        ScriptedTimers manager;
        Clock clock;
        kern::TimerHandle handle;
        clock.killTimer(handle);
        for (const int64_t refused : {0, -3}) {
            manager.nextId = refused;
            EXPECT_EQ(clock.startTimer(3000000), 0);
        }
        manager.nextId = int64_t{1} << 40;
        EXPECT_EQ(clock.restartTimer(handle, 0x7fffffff), manager.nextId);
        manager.nextId = 1;
        EXPECT_EQ(clock.restartTimer(handle, 30), 1);
        EXPECT_EQ(clock.activeTimers(), 1);
        EXPECT_EQ(kern::threadState().timersStarted, 2U);
        EXPECT_EQ(clock.restartTimer(handle, 0x80000000), 0);
        EXPECT_EQ(handle.interval, 0x80000000);
        clock.restartTimer(handle, 40);
        clock.killTimer(handle);
        EXPECT_TRUE(handle.id == 0 && handle.interval == 0);
        clock.killTimer(0);
        EXPECT_EQ(clock.activeTimers(), 0);
        EXPECT_THAT(manager.calls,
                    ElementsAre("start 3000000", "start 3000000", "start 2147483647",
                                "kill 1099511627776", "start 30", "kill 1", "start 40", "kill 1"));
    });
    EXPECT_THAT(failures, ElementsAre(failed(181, "3000000"), failed(181, "3000000"), failed(164),
                                      failed(200)));
}

TEST(TimerInterface, ReportsCallsOutsideItsManagersTime) {
    const auto failures = failuresOf([] {
        Clock clock, orphan;
        EXPECT_EQ(clock.startTimer(1), 0);
        {
            ScriptedTimers manager;
            clock.startTimer(1);
            orphan.startTimer(1);
        }
        clock.killTimer(1);
        EXPECT_EQ(clock.activeTimers(), 0);
    });
    const std::string name = "(anonymous namespace)::Clock";
    EXPECT_THAT(failures, ElementsAre(failed(173, "called without manager in " + name +
                                                      " (too early or late)"),
                                      failed(209, "killTimer called too late in " + name)));
}

TEST(TimerInterface, IsDestroyedWithItsTimers) {
    const FailedCheck mismatch{"num_removed == -1 || num_removed == d_num_active_timers",
                               "kern_timerinterface.cpp", 33, 1, "7 removed, expected 1"};
    struct {
        uint32_t timers;
        int32_t level, removed;
        size_t reports;
    } const rows[] = {{1, 1, 1, 0}, {1, 1, -1, 0}, {1, 1, 7, 1}, {1, 0, 7, 0}, {0, 1, 7, 0}};
    for (const auto& row : rows) {
        const test::ScopedAssertionLevel level(row.level);
        const auto failures = failuresOf([&] {
            ScriptedTimers manager;
            manager.removed = row.removed;
            if (Clock clock; row.timers != 0)
                clock.startTimer(1);
            EXPECT_EQ(kern::threadState().interfacesDestroyed, 1U);
            EXPECT_EQ(kern::threadState().interfacesDestroyedWithTimers, row.timers);
        });
        EXPECT_EQ(failures, std::vector(row.reports, mismatch)) << "row " << &row - rows;
    }
}

TEST(ServerManagers, TheLastOneIsTheThreadsOwn) {
    const auto failures = failuresOf([] {
        const kern::ThreadState& thread = kern::threadState();
        std::optional<kern::PollLoop> first(std::in_place), second(std::in_place);
        first.reset();
        EXPECT_EQ(thread.timerManager, &*second);
        EXPECT_EQ(thread.descriptorManager, &*second);
        second.reset();
        EXPECT_EQ(thread.timerManager, nullptr);
        EXPECT_EQ(thread.descriptorManager, nullptr);
    });
    EXPECT_THAT(failures, ElementsAre(FailedCheck{"CHECKF", "kern_servermanagers.cpp", 91, 0, ""},
                                      FailedCheck{"CHECKF", "kern_servermanagers.cpp", 38, 0, ""}));
}

} // namespace
