#include "kern_pollloop.h"

#include "core_check.h"
#include "core_log.h"
#include "internal/kern_pollloop_system.h"
#include "kern_descriptorinterface.h"
#include "kern_timerinterface.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <thread>
#include <utility>

namespace kern {
namespace {

constexpr std::chrono::milliseconds kPause{10}; // before it asks for memory again

struct TheSystem final : PollLoop::System {};
constinit const TheSystem theSystem;

} // namespace

int64_t PollLoop::System::now() const {
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

PollLoop::PollLoop() : PollLoop(theSystem) {}

PollLoop::PollLoop(const System& system) : d_system(system), d_waker(system.makeWaker()) {
    if (!isReady())
        core::logFrom(core::kChannelWarn, "kern::PollLoop", "no way to be woken");
}

PollLoop::~PollLoop() {
    if (isReady())
        d_system.closeWaker(d_waker);
}

bool PollLoop::isReady() const { return d_waker != -1; }

void PollLoop::stop() {
    if (isReady())
        d_system.wake(d_waker);
}

/// False without memory for the entries.
bool PollLoop::wait(std::vector<detail::PollEntry>& entries) const try {
    entries.assign(1, {.descriptor = d_waker, .wantsRead = true});
    for (const auto& [descriptor, watch] : d_watches)
        entries.push_back({.descriptor = descriptor,
                           .wantsRead = watch.reader != nullptr,
                           .wantsWrite = watch.writer != nullptr});
    d_system.poll(entries, timeout());
    return true;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("kern::PollLoop::run");
}

void PollLoop::run() {
    std::vector<detail::PollEntry> entries;
    while (isReady()) {
        if (!wait(entries)) {
            std::this_thread::sleep_for(kPause);
            continue;
        }
        if (entries.front().canRead) {
            d_system.settle(d_waker);
            return;
        }
        entries.erase(entries.begin());
        tellOwners(entries);
        expireTimers();
    }
}

int64_t PollLoop::timeout() const {
    return d_order.empty() ? -1 : std::max<int64_t>(0, d_order.begin()->first - d_system.now());
}

/// Finds nothing for what a callback of this turn has ended.
void PollLoop::tellOwners(const std::vector<detail::PollEntry>& entries) {
    for (const detail::PollEntry& entry : entries) {
        if (!CHECKF(!entry.invalid, core::format("%d was closed while it was watched",
                                                 static_cast<int64_t>(entry.descriptor)))) {
            d_watches.erase(entry.descriptor);
            continue;
        }
        auto watch = d_watches.find(entry.descriptor);
        if (entry.canRead && watch != d_watches.end() && watch->second.reader != nullptr)
            watch->second.reader->readReady(entry.descriptor);
        watch = d_watches.find(entry.descriptor);
        if (entry.canWrite && watch != d_watches.end() && watch->second.writer != nullptr)
            watch->second.writer->writeReady(entry.descriptor);
    }
}

/// Without memory for all of them the others wait for the next turn.
std::vector<int64_t> PollLoop::dueTimers(int64_t now) const {
    std::vector<int64_t> due;
    try {
        for (auto next = d_order.begin(); next != d_order.end() && next->first <= now; ++next)
            due.push_back(next->second);
    } catch (const std::bad_alloc&) {
        core::logNoMemory("kern::PollLoop::run");
    }
    return due;
}

void PollLoop::expireTimers() {
    if (d_order.empty())
        return;
    const int64_t now = d_system.now();
    for (const int64_t id : dueTimers(now)) {
        const auto found = d_timers.find(id);
        if (found == d_timers.end())
            continue;
        Timer& timer = found->second;
        auto place = d_order.extract({timer.due, id}); // moved: a new one would need memory
        timer.due = std::max(timer.due + timer.interval, now);
        place.value().first = timer.due;
        d_order.insert(std::move(place));
        timer.owner->timerExpired(id); // which may end the timer
    }
}

int64_t PollLoop::startTimer(uint32_t interval, TimerInterface* owner) try {
    const int64_t id = ++d_lastId;
    const int64_t due = d_system.now() + interval;
    Timers started{{id, {due, interval, owner}}};
    d_order.emplace(due, id);
    d_timers.merge(started); // which needs no memory
    return id;
} catch (const std::bad_alloc&) {
    core::logNoMemory("kern::PollLoop::startTimer");
    return 0;
}

void PollLoop::erase(Timers::iterator timer) {
    d_order.erase({timer->second.due, timer->first});
    d_timers.erase(timer);
}

void PollLoop::killTimer(int64_t id, TimerInterface* owner) {
    const auto timer = d_timers.find(id);
    if (timer != d_timers.end() && timer->second.owner == owner)
        erase(timer);
}

int32_t PollLoop::removeTimers(TimerInterface* owner) {
    int32_t removed = 0;
    for (auto timer = d_timers.begin(); timer != d_timers.end();) {
        const auto current = timer++;
        if (current->second.owner == owner) {
            erase(current);
            ++removed;
        }
    }
    return removed;
}

int32_t PollLoop::runningTimers(const TimerInterface* owner) const {
    return static_cast<int32_t>(
        std::count_if(d_timers.begin(), d_timers.end(),
                      [owner](const auto& timer) { return timer.second.owner == owner; }));
}

bool PollLoop::watch(intptr_t descriptor, DescriptorInterface* Watch::*side,
                     DescriptorInterface* owner) try {
    DescriptorInterface*& current = d_watches[descriptor].*side;
    const bool isFree = current == nullptr;
    if (isFree)
        current = owner;
    return isFree;
} catch (const std::bad_alloc&) {
    return core::logNoMemory("kern::PollLoop::watch");
}

bool PollLoop::watchRead(intptr_t descriptor, DescriptorInterface* owner) {
    return watch(descriptor, &Watch::reader, owner);
}

bool PollLoop::watchWrite(intptr_t descriptor, DescriptorInterface* owner) {
    return watch(descriptor, &Watch::writer, owner);
}

void PollLoop::unwatch(intptr_t descriptor, DescriptorInterface* Watch::*side) {
    const auto found = d_watches.find(descriptor);
    if (found == d_watches.end())
        return;
    found->second.*side = nullptr;
    if (found->second.reader == nullptr && found->second.writer == nullptr)
        d_watches.erase(found);
}

void PollLoop::unwatchRead(intptr_t descriptor) { unwatch(descriptor, &Watch::reader); }

void PollLoop::unwatchWrite(intptr_t descriptor) { unwatch(descriptor, &Watch::writer); }

int32_t PollLoop::removeDescriptors(DescriptorInterface* owner) {
    int32_t removed = 0;
    for (auto found = d_watches.begin(); found != d_watches.end();) {
        const auto [descriptor, watch] = *found++; // copied: it may be erased
        if (watch.reader == owner) {
            unwatchRead(descriptor);
            ++removed;
        }
        if (watch.writer == owner) {
            unwatchWrite(descriptor);
            ++removed;
        }
    }
    return removed;
}

bool PollLoop::isWatched(intptr_t descriptor) const { return d_watches.contains(descriptor); }

} // namespace kern
