#include "qt_timermanager.h"

#include "kern_timerinterface.h"

#include <QObject>
#include <QTimerEvent>

#include <atomic>
#include <unordered_map>
#include <utility>

namespace NS_QT {
namespace {

// Qt uses its ids again as soon as they are free.
constinit std::atomic<int64_t> lastId{0};

} // namespace

class QtTimerManager::Timers : public QObject {
public:
    int64_t start(uint32_t interval, kern::TimerInterface* owner);
    void kill(int64_t id, const kern::TimerInterface* owner);
    int32_t killAll(const kern::TimerInterface* owner);
    int32_t count(const kern::TimerInterface* owner) const;

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Expiry {
        int64_t id;
        kern::TimerInterface* owner;
    };
    using QtIds = std::unordered_map<int64_t, int>; // by ours

    void end(int qtId);

    std::unordered_map<int, Expiry> d_expiries; // by Qt's ids
    std::unordered_map<const kern::TimerInterface*, QtIds> d_owners;
};

int64_t QtTimerManager::Timers::start(uint32_t interval, kern::TimerInterface* owner) {
    const int qtId = startTimer(static_cast<int>(interval), Qt::PreciseTimer);
    if (qtId == 0)
        return 0;
    const int64_t id = lastId.fetch_add(1, std::memory_order_relaxed) + 1;
    d_expiries[qtId] = {id, owner};
    d_owners[owner][id] = qtId;
    return id;
}

void QtTimerManager::Timers::end(int qtId) {
    killTimer(qtId);
    d_expiries.erase(qtId);
}

void QtTimerManager::Timers::kill(int64_t id, const kern::TimerInterface* owner) {
    const auto owned = d_owners.find(owner);
    if (owned == d_owners.end())
        return;
    const auto timer = owned->second.find(id);
    if (timer == owned->second.end())
        return;
    end(timer->second);
    owned->second.erase(timer);
    if (owned->second.empty())
        d_owners.erase(owned);
}

int32_t QtTimerManager::Timers::killAll(const kern::TimerInterface* owner) {
    const QtIds timers = std::move(d_owners[owner]);
    d_owners.erase(owner);
    for (const auto& [id, qtId] : timers)
        end(qtId);
    return static_cast<int32_t>(timers.size());
}

int32_t QtTimerManager::Timers::count(const kern::TimerInterface* owner) const {
    const auto owned = d_owners.find(owner);
    return owned == d_owners.end() ? 0 : static_cast<int32_t>(owned->second.size());
}

void QtTimerManager::Timers::timerEvent(QTimerEvent* event) {
    const auto found = d_expiries.find(event->timerId());
    if (found == d_expiries.end())
        return;
    // The callback may end this timer, its owner or the manager.
    const Expiry expiry = found->second;
    expiry.owner->timerExpired(expiry.id);
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
    d_timers->kill(id, owner);
}

int32_t QtTimerManager::runningTimers(const kern::TimerInterface* owner) const {
    return d_timers->count(owner);
}

} // namespace NS_QT
