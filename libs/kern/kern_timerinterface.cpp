#include "kern_timerinterface.h"

#include "core_check.h"
#include "core_log.h"
#include "core_varargs.h"
#include "kern_servermanagers.h"

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <new>
#include <typeinfo>

namespace kern {
namespace {

constexpr core::CheckSite kNotAllRemoved{"kern_timerinterface.cpp", 33};
constexpr core::CheckSite kNegativeInterval{"kern_timerinterface.cpp", 164};
constexpr core::CheckSite kStartWithoutManager{"kern_timerinterface.cpp", 173};
constexpr core::CheckSite kNotStarted{"kern_timerinterface.cpp", 181};
constexpr core::CheckSite kNoTimer{"kern_timerinterface.cpp", 200};
constexpr core::CheckSite kKillWithoutManager{"kern_timerinterface.cpp", 209};

// Managers count in signed numbers.
constexpr uint32_t kIntervalEnd = uint32_t{1} << 31;

} // namespace

TimerInterface::~TimerInterface() {
    ThreadState& thread = threadState();
    if (thread.timerManager != nullptr && d_num_active_timers > 0) {
        const int32_t num_removed = thread.timerManager->removeTimers(this);
        GASSERT_AT(kNotAllRemoved, num_removed == -1 || num_removed == d_num_active_timers,
                   core::format("%d removed, expected %d", num_removed, d_num_active_timers));
        ++thread.interfacesDestroyedWithTimers;
    }
    ++thread.interfacesDestroyed;
}

std::string TimerInterface::name() const {
    const char* const mangled = typeid(*this).name();
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
    return readable != nullptr ? readable.get() : mangled;
}

int64_t TimerInterface::startTimer(uint32_t interval) try {
    if (!CHECKF_AT(kNegativeInterval, interval < kIntervalEnd))
        return 0;
    ThreadState& thread = threadState();
    if (!CHECKF_AT(kStartWithoutManager, thread.timerManager != nullptr,
                   core::format("called without manager in %s (too early or late)", name())))
        return 0;
    const int64_t id = thread.timerManager->startTimer(interval, this);
    if (!CHECKF_AT(kNotStarted, id > 0, core::format("%u", interval)))
        return 0;
    ++d_num_active_timers;
    ++thread.timersStarted;
    return id;
} catch (const std::bad_alloc&) {
    core::logNoMemory("kern::TimerInterface::startTimer");
    return 0;
}

void TimerInterface::killTimer(int64_t id) {
    if (CHECKF_AT(kNoTimer, id > 0))
        killActive(id);
}

void TimerInterface::killTimer(TimerHandle& handle) {
    if (handle.id <= 0)
        return;
    killActive(handle.id);
    handle = {};
}

void TimerInterface::killActive(int64_t id) {
    // Before looking for the manager: the timer counts as killed even when there is nobody
    // left to tell.
    --d_num_active_timers;
    TimerManager* const manager = threadState().timerManager;
    if (!CHECKF_AT(kKillWithoutManager, manager != nullptr,
                   core::format("killTimer called too late in %s", name())))
        return;
    manager->killTimer(id, this);
    // Killing a wrong id must not hide a timer that still runs from the destructor.
    if (const int32_t running = manager->runningTimers(this); running >= 0)
        d_num_active_timers = std::max(d_num_active_timers, running);
}

int64_t TimerInterface::restartTimer(TimerHandle& handle, uint32_t interval) {
    killTimer(handle);
    handle.interval = interval;
    handle.id = startTimer(interval);
    return handle.id;
}

} // namespace kern
