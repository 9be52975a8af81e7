#pragma once

#include "core_varargs.h"
#include "kern_servermanagers.h"
#include "kern_timerinterface.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace test {

/// A timer manager that notes what it is asked, answers what the test says, and lets its
/// last timer expire when the test says so.
struct ScriptedTimers : kern::TimerManager {
    int64_t startTimer(uint32_t interval, kern::TimerInterface* owner) override {
        calls.push_back(core::format("start %u", interval));
        lastOwner = owner;
        return nextId;
    }
    int32_t removeTimers(kern::TimerInterface*) override { return removed; }
    void killTimer(int64_t id, kern::TimerInterface*) override {
        calls.push_back(core::format("kill %d", id));
    }
    void expire() {
        ASSERT_NE(lastOwner, nullptr);
        lastOwner->timerExpired(nextId);
    }

    std::vector<std::string> calls;
    kern::TimerInterface* lastOwner = nullptr;
    int64_t nextId = 1;
    int32_t removed = -1;
};

} // namespace test
