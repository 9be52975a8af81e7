#include "qt_timermanager.h"

#include "core_check.h"
#include "core_log.h"
#include "core_varargs.h"
#include "kern_timerinterface.h"

#include <QBasicTimer>
#include <QObject>
#include <QPointer>
#include <QTimerEvent>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>
#include <map>
#include <new>
#include <unordered_map>
#include <utility>

namespace NS_QT {
namespace {

using Clock = std::chrono::steady_clock;

constinit std::atomic<int64_t> lastId{0};

} // namespace

// One timer of Qt's, set for the first of the deadlines.
class QtTimerManager::Timers : public QObject {
public:
    int64_t start(uint32_t interval, kern::TimerInterface* owner);
    bool kill(int64_t id, const kern::TimerInterface* owner);
    int32_t killAll(const kern::TimerInterface* owner);
    int32_t count(const kern::TimerInterface* owner) const;

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Timer {
        std::chrono::milliseconds interval;
        Clock::time_point deadline;
    };
    // Not Abseil's, which do not survive a failed allocation.
    using ById = std::unordered_map<int64_t, Timer>;
    using Due = std::pair<Clock::time_point, int64_t>; // of two at once the one started first

    Timer* find(int64_t id, const kern::TimerInterface* owner);
    void forget(int64_t id, const kern::TimerInterface* owner);
    void expire(int64_t id, kern::TimerInterface* owner, Clock::time_point now);
    void wake();

    std::unordered_map<const kern::TimerInterface*, ById> d_owners;
    // Without those whose callbacks run.
    std::map<Due, kern::TimerInterface*> d_deadlines;
    QBasicTimer d_timer;
    Clock::time_point d_wakeUp; // while it runs
};

int64_t QtTimerManager::Timers::start(uint32_t interval, kern::TimerInterface* owner) {
    const std::chrono::milliseconds period(interval);
    const int64_t id = lastId.fetch_add(1, std::memory_order_relaxed) + 1;
    const auto deadline = Clock::now() + period;
    try {
        d_owners[owner].emplace(id, Timer{period, deadline});
        d_deadlines.emplace(Due(deadline, id), owner);
        wake();
        if (d_timer.isActive()) // else the thread has no event dispatcher
            return id;
    } catch (const std::bad_alloc&) {
        core::logNoMemory("QT::QtTimerManager::startTimer");
    }
    forget(id, owner);
    return 0;
}

QtTimerManager::Timers::Timer* QtTimerManager::Timers::find(int64_t id,
                                                            const kern::TimerInterface* owner) {
    const auto owned = d_owners.find(owner);
    if (owned == d_owners.end())
        return nullptr;
    const auto timer = owned->second.find(id);
    return timer == owned->second.end() ? nullptr : &timer->second;
}

bool QtTimerManager::Timers::kill(int64_t id, const kern::TimerInterface* owner) {
    const bool found = find(id, owner) != nullptr;
    if (found)
        forget(id, owner);
    return found;
}

void QtTimerManager::Timers::forget(int64_t id, const kern::TimerInterface* owner) {
    if (const Timer* const timer = find(id, owner); timer != nullptr)
        d_deadlines.erase(Due(timer->deadline, id));
    const auto owned = d_owners.find(owner);
    if (owned == d_owners.end())
        return;
    owned->second.erase(id);
    if (owned->second.empty())
        d_owners.erase(owned);
}

int32_t QtTimerManager::Timers::killAll(const kern::TimerInterface* owner) {
    const auto owned = d_owners.extract(owner);
    if (owned.empty())
        return 0;
    for (const auto& [id, timer] : owned.mapped())
        d_deadlines.erase(Due(timer.deadline, id));
    return static_cast<int32_t>(owned.mapped().size());
}

int32_t QtTimerManager::Timers::count(const kern::TimerInterface* owner) const {
    const auto owned = d_owners.find(owner);
    return owned == d_owners.end() ? 0 : static_cast<int32_t>(owned->second.size());
}

// Qt's timer never wakes later than the first deadline; earlier does no harm.
void QtTimerManager::Timers::wake() {
    if (d_deadlines.empty()) {
        d_timer.stop();
        return;
    }
    const Clock::time_point first = d_deadlines.begin()->first.first;
    if (d_timer.isActive() && d_wakeUp <= first)
        return;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(first - Clock::now()).count();
    constexpr int64_t kLongest = std::numeric_limits<int>::max();
    d_wakeUp = first;
    d_timer.start(static_cast<int>(std::clamp<int64_t>(wait, 0, kLongest)), Qt::PreciseTimer, this);
}

void QtTimerManager::Timers::timerEvent(QTimerEvent* event) {
    if (event->timerId() != d_timer.timerId())
        return;
    const QPointer<Timers> self(this);
    const Clock::time_point now = Clock::now();
    d_timer.stop(); // Qt's timer would be silent in an event loop that a callback runs
    while (self != nullptr && !d_deadlines.empty() && d_deadlines.begin()->first.first <= now) {
        const auto [due, owner] = *d_deadlines.begin();
        expire(due.second, owner, now);
    }
    if (self != nullptr)
        wake();
}

// The callback may end this timer, its owner or the manager. It does not expire again
// until the callback has returned.
void QtTimerManager::Timers::expire(int64_t id, kern::TimerInterface* owner,
                                    Clock::time_point now) {
    const QPointer<Timers> self(this);
    auto place = d_deadlines.extract(d_deadlines.begin()); // a new one would need memory
    wake();
    owner->timerExpired(id);
    Timer* const timer = self != nullptr ? find(id, owner) : nullptr;
    if (timer == nullptr)
        return;
    // What was missed is not made up for; and each round of timers ends.
    timer->deadline = std::max(timer->deadline + timer->interval, now + Clock::duration(1));
    place.key() = Due(timer->deadline, id);
    d_deadlines.insert(std::move(place));
}

QtTimerManager::QtTimerManager() : d_timers(std::make_unique<Timers>()) {}

QtTimerManager::~QtTimerManager() = default;

int64_t QtTimerManager::startTimer(uint32_t interval, kern::TimerInterface* owner) {
    return d_timers->start(interval, owner);
}

int32_t QtTimerManager::removeTimers(kern::TimerInterface* owner) {
    return d_timers->killAll(owner);
}

void QtTimerManager::killTimer(int64_t id, kern::TimerInterface* owner) {
    CHECKF(d_timers->kill(id, owner), core::format("%s has no timer %d", owner->name(), id));
}

int32_t QtTimerManager::runningTimers(const kern::TimerInterface* owner) const {
    return d_timers->count(owner);
}

} // namespace NS_QT
