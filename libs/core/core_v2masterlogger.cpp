#include "core_v2masterlogger.h"

#include "core_check.h"
#include "core_historycopy_calls.h"
#include "core_repeatlimits.h"
#include "core_timespec.h"
#include "core_varargs.h"

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <new>
#include <utility>

namespace core {

constinit std::array<std::atomic<uint32_t>, kChannelCount / 32> detail::enabledChannels{};

namespace {

// What a fault of the log system itself is reported by; there is no log to ask.
constexpr int32_t kFaultUnknownChannel = 387;
constexpr int32_t kFaultNotAlive = 632;
constexpr int32_t kFaultChannelRange = 638;
constexpr int32_t kFaultRecomputeNotAlive = 687;
constexpr int32_t kFaultDestroyedWhileBusy = 785;
constexpr int32_t kFaultReentered = 802;

// Mask bits of the predefined channels, and the one lent to a channel that is
// switched on without anything else to send its lines to the implementation.
constexpr uint8_t kMaskCrit = 1;
constexpr uint8_t kMaskWarn = 2;
constexpr uint8_t kMaskInfo = 4;
constexpr uint8_t kMaskSwitchedOn = 8;

constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

using ChannelSet = std::bitset<kChannelCount>;
using History = std::deque<HistoryEntry>;

struct State {
    std::array<ChannelRecord, kChannelCount> channels{};
    std::atomic<int32_t> channelCount{0}; // 0 = no table, before start and after shutdown
    std::mutex channelMutex;              // changes of channel records; taken last

    // Recursive, since observers called under it may register, unregister, replace the
    // implementation, or crash into the crash filter's own log line.
    std::recursive_mutex implMutex;
    std::atomic<int32_t> settingImpl{0}; // replacements in progress
    std::shared_ptr<LogImpl> impl;
    std::shared_ptr<LogRImpl> rImpl;
    std::vector<GlobalLogObserver*> observers; // in order of registration
    std::unique_ptr<History> history;

    Logger defaultLogger;
};

// Never destroyed: threads and static destructors may log to the very end.
alignas(State) constinit unsigned char storage[sizeof(State)]{};
constinit bool built = false;
constinit std::atomic<bool> alive{false};

State& state() { return *std::launder(reinterpret_cast<State*>(storage)); }

void print(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

std::string faultText(int32_t number) {
    return "\nERROR in core_v2masterlogger.cpp:" + std::to_string(number);
}

void fault(int32_t number) { print(stdout, faultText(number)); }

bool defined(int32_t channel) {
    return channel >= 0 && channel < state().channelCount.load(std::memory_order_acquire);
}

ChannelRecord& recordOf(int32_t channel) { return state().channels[static_cast<size_t>(channel)]; }

bool hasFlag(const ChannelRecord& record, uint8_t flag) {
    return (record.flags.load(std::memory_order_relaxed) & flag) != 0;
}

void storeEnabledBit(int32_t channel, bool enabled) {
    std::atomic<uint32_t>& word = detail::enabledChannels[static_cast<size_t>(channel) / 32];
    const uint32_t bit = 1U << (channel % 32);
    if (enabled)
        word.fetch_or(bit, std::memory_order_relaxed);
    else
        word.fetch_and(~bit, std::memory_order_relaxed);
}

// Sets and clears flags of a channel and derives bits 0 and 1 anew. Under channelMutex.
void changeFlags(int32_t channel, uint8_t set, uint8_t clear) {
    ChannelRecord& record = recordOf(channel);
    constexpr uint8_t derived = ChannelRecord::kEnabled | ChannelRecord::kProcessed;
    auto flags = static_cast<uint8_t>((record.flags.load(std::memory_order_relaxed) | set) &
                                      ~(clear | derived));
    if (record.mask.load(std::memory_order_relaxed) != 0 ||
        (flags & (ChannelRecord::kObserved | ChannelRecord::kHistory)) != 0)
        flags |= ChannelRecord::kProcessed;
    if ((flags & (ChannelRecord::kProcessed | ChannelRecord::kEcho)) != 0)
        flags |= ChannelRecord::kEnabled;
    record.flags.store(flags, std::memory_order_relaxed);
    if (channel != kChannelString)
        storeEnabledBit(channel, (flags & ChannelRecord::kEnabled) != 0);
}

void changeFlag(int32_t channel, uint8_t flag, bool on) {
    const std::lock_guard lock(state().channelMutex);
    changeFlags(channel, on ? flag : 0, on ? 0 : flag);
}

void copyCut(char* to, size_t size, std::string_view from) { to[from.copy(to, size - 1)] = '\0'; }

// Under channelMutex.
int32_t defineNext(std::string_view name, std::string_view colour, uint8_t mask, uint8_t flags) {
    const int32_t channel = state().channelCount.load(std::memory_order_relaxed);
    if (channel >= kChannelCount)
        return -1;
    ChannelRecord& record = recordOf(channel);
    copyCut(record.name, sizeof record.name, name);
    copyCut(record.colour, sizeof record.colour, colour);
    record.mask.fetch_or(mask, std::memory_order_relaxed);
    changeFlags(channel, flags, 0);
    state().channelCount.store(channel + 1, std::memory_order_release);
    return channel;
}

void definePredefinedChannels() {
    const std::lock_guard lock(state().channelMutex);
    defineNext("LOG2STRING", "", 0, 0);
    defineNext("CRIT", "1;31", kMaskCrit, ChannelRecord::kEcho);
    defineNext("WARN", "1;34", kMaskWarn, 0);
    defineNext("INFO", "1", kMaskInfo, 0);
    defineNext("NORM", "", 0, 0);
}

// "[NAME] {ID} TEXT", the id left out where asked and there is none.
std::string channelLine(const ChannelRecord& record, uint32_t id, bool showNoId,
                        std::string_view text) {
    std::string line = "[";
    line.append(record.name).append("] ");
    if (id != 0 || showNoId)
        line.append("{").append(std::to_string(id)).append("} ");
    return line.append(text);
}

void echo(const ChannelRecord& record, uint32_t id, std::string_view text) {
    print(stdout, channelLine(record, id, false, text) + '\n');
}

/// `text` behind the logger's scope labels for the channel, in `buffer` if there are any.
std::string_view prefixed(Logger& logger, int32_t channel, std::string_view text,
                          std::string& buffer) {
    const std::string_view prefix = logger.prefix(channel);
    return prefix.empty() ? text : buffer.append(prefix).append(text);
}

void refuseLine(std::FILE* stream, const char* why, const ChannelRecord& record, uint32_t id,
                std::string_view text) {
    print(stream, std::string("MasterLogger:implLog - ") + why + "\n  <" +
                      channelLine(record, id, true, text) + ">\n");
}

std::shared_ptr<LogImpl> currentImplementation() {
    const std::lock_guard lock(state().implMutex);
    return state().impl;
}

void keepInHistory(const ChannelRecord& record, std::string_view text) {
    const std::lock_guard lock(state().implMutex);
    History* const history = state().history.get();
    if (history == nullptr)
        return;
    history->push_back({now(), record.name, std::string(text)});
    detail::copyToHistory(history->back().time, record.name, text);
    while (history->size() > MasterLogger::kHistoryLimit)
        history->pop_front();
}

bool registered(const GlobalLogObserver* observer) {
    const auto& observers = state().observers;
    return std::find(observers.begin(), observers.end(), observer) != observers.end();
}

// This thread is inside the write path.
class WriteScope {
public:
    WriteScope() { threadFlags().inWrite = true; }
    ~WriteScope() { threadFlags().inWrite = false; }
    WriteScope(const WriteScope&) = delete;
    WriteScope& operator=(const WriteScope&) = delete;
};

int64_t secondsNow() { return now() / kNanosecondsPerSecond; }

} // namespace

LogImpl::~LogImpl() = default;
LogRImpl::~LogRImpl() = default;

void DefaultLogImpl::write(int32_t, uint32_t, const ChannelRecord&, const char*, size_t) {}

// ---- Repeat-limited messages

DefaultLogRImpl::DefaultLogRImpl() : DefaultLogRImpl(&secondsNow) {}

DefaultLogRImpl::DefaultLogRImpl(Clock clock)
    : d_limits(std::make_unique<RepeatLimits>()), d_clock(clock) {}

DefaultLogRImpl::~DefaultLogRImpl() = default;

void DefaultLogRImpl::setRule(std::string_view identity, int32_t everyCount, int32_t everySeconds) {
    d_limits->setRule(identity, {everyCount, everySeconds});
}

// The producer runs outside the lock, and also when the channel turns out disabled:
// its call is what a report is.
void DefaultLogRImpl::log(std::string_view identity, int32_t channel, std::string_view key,
                          const TextProducer& produce) {
    const auto report = d_limits->count(identity, channel, key, d_clock());
    if (!report)
        return;
    const std::string text = produce();
    if (channelEnabled(channel)) {
        MasterLogger::logText(
            MasterLogger::defaultLogger(), channel,
            core::format("%s [%d times in %ld seconds]", text, report->times, report->seconds));
    }
}

// ---- Observers

GlobalLogObserver::~GlobalLogObserver() { detach(); }

void GlobalLogObserver::watch(int32_t channel) {
    const std::lock_guard lock(state().implMutex);
    if (watches(channel))
        return;
    d_channels.push_back(channel);
    if (registered(this))
        MasterLogger::recomputeObserved();
}

void GlobalLogObserver::unwatch(int32_t channel) {
    const std::lock_guard lock(state().implMutex);
    std::erase(d_channels, channel);
    if (registered(this))
        MasterLogger::recomputeObserved();
}

bool GlobalLogObserver::watches(int32_t channel) const {
    return std::find(d_channels.begin(), d_channels.end(), channel) != d_channels.end();
}

void GlobalLogObserver::detach() {
    if (std::exchange(d_detached, true))
        return;
    const std::lock_guard lock(state().implMutex);
    if (d_busy)
        fault(kFaultDestroyedWhileBusy);
    MasterLogger::unregisterObserver(this);
}

// ---- Master logger

Logger& MasterLogger::defaultLogger() { return state().defaultLogger; }

int32_t MasterLogger::defineChannel(std::string_view name, std::string_view colour, uint8_t mask) {
    if (!alive) {
        fault(kFaultNotAlive);
        return -1;
    }
    const std::lock_guard lock(state().channelMutex);
    return defineNext(name, colour, mask, 0);
}

void MasterLogger::setChannelEnabled(int32_t channel, bool enabled) {
    if (!alive) {
        fault(kFaultNotAlive);
        return;
    }
    if (channel < 1 || channel >= kChannelCount) {
        fault(kFaultChannelRange);
        return;
    }
    const std::lock_guard lock(state().channelMutex);
    ChannelRecord& record = recordOf(channel);
    if (!enabled)
        record.mask.fetch_and(static_cast<uint8_t>(~kMaskSwitchedOn), std::memory_order_relaxed);
    changeFlags(channel, 0, 0);
    if (enabled && !hasFlag(record, ChannelRecord::kEnabled)) {
        record.mask.fetch_or(kMaskSwitchedOn, std::memory_order_relaxed);
        changeFlags(channel, 0, 0);
    } else if (!enabled) {
        record.flags.fetch_and(static_cast<uint8_t>(~ChannelRecord::kEnabled),
                               std::memory_order_relaxed);
        storeEnabledBit(channel, false);
    }
}

void MasterLogger::setChannelEcho(int32_t channel, bool echoed) {
    if (alive && defined(channel))
        changeFlag(channel, ChannelRecord::kEcho, echoed);
}

bool MasterLogger::echoed(int32_t channel) {
    return defined(channel) && hasFlag(recordOf(channel), ChannelRecord::kEcho);
}

// The old implementation goes outside the lock, since its destructor may wait for a
// thread that logs; what is logged before it is gone is refused.
void MasterLogger::setImplementation(LogImpl* implementation) {
    std::shared_ptr<LogImpl> next(implementation);
    if (!alive)
        return;
    if (next == nullptr)
        next = std::make_shared<DefaultLogImpl>();
    {
        const std::lock_guard lock(state().implMutex);
        ++state().settingImpl;
        state().impl.swap(next);
    }
    next.reset();
    --state().settingImpl;
}

void MasterLogger::setRepeatImplementation(LogRImpl* implementation) {
    std::shared_ptr<LogRImpl> next(implementation);
    if (!alive)
        return;
    if (next == nullptr)
        next = std::make_shared<DefaultLogRImpl>();
    const std::lock_guard lock(state().implMutex);
    state().rImpl.swap(next);
}

std::shared_ptr<LogRImpl> MasterLogger::repeatImplementation() {
    const std::lock_guard lock(state().implMutex);
    return state().rImpl;
}

void MasterLogger::registerObserver(GlobalLogObserver* observer) {
    const std::lock_guard lock(state().implMutex);
    if (alive && !registered(observer)) {
        state().observers.push_back(observer);
        observer->d_detached = false;
    }
    recomputeObserved();
}

void MasterLogger::unregisterObserver(GlobalLogObserver* observer) {
    const std::lock_guard lock(state().implMutex);
    std::erase(state().observers, observer);
    recomputeObserved();
}

// Under implMutex.
void MasterLogger::recomputeObserved() {
    if (!alive) {
        fault(kFaultRecomputeNotAlive);
        return;
    }
    ChannelSet watched;
    for (const GlobalLogObserver* observer : state().observers) {
        for (const int32_t channel : observer->d_channels) {
            if (channel > kChannelString && channel < kChannelCount)
                watched.set(static_cast<size_t>(channel));
        }
    }
    for (int32_t channel = 1; channel < kChannelCount; ++channel) {
        const bool on = watched.test(static_cast<size_t>(channel));
        if (on != hasFlag(recordOf(channel), ChannelRecord::kObserved))
            changeFlag(channel, ChannelRecord::kObserved, on);
    }
}

void MasterLogger::enableHistory(bool enabled) {
    const std::lock_guard lock(state().implMutex);
    if (!alive || enabled == (state().history != nullptr))
        return;
    state().history.reset(enabled ? new History : nullptr);
}

void MasterLogger::setHistory(int32_t channel, bool kept) {
    if (alive && channel > kChannelString && defined(channel))
        changeFlag(channel, ChannelRecord::kHistory, kept);
}

std::vector<HistoryEntry> MasterLogger::history() {
    const std::lock_guard lock(state().implMutex);
    if (state().history == nullptr)
        return {};
    return {state().history->begin(), state().history->end()};
}

void MasterLogger::shutdown() {
    if (!alive.exchange(false))
        return;
    for (std::atomic<uint32_t>& word : detail::enabledChannels)
        word.store(0, std::memory_order_relaxed);
    state().channelCount.store(0, std::memory_order_release);

    std::shared_ptr<LogImpl> impl;
    std::shared_ptr<LogRImpl> rImpl;
    std::unique_ptr<History> history;
    std::vector<GlobalLogObserver*> observers;
    const std::lock_guard lock(state().implMutex);
    impl.swap(state().impl);
    rImpl.swap(state().rImpl);
    history.swap(state().history);
    observers.swap(state().observers);
}

void MasterLogger::logText(Logger& logger, int32_t channel, std::string_view text) {
    if (channel == kChannelString) {
        logger.collect(text);
        return;
    }
    if (!defined(channel)) {
        print(stdout, faultText(kFaultUnknownChannel)
                          .append("[")
                          .append(std::to_string(channel))
                          .append("??] ")
                          .append(text));
        return;
    }
    const ChannelRecord& record = recordOf(channel);
    std::string buffer;
    const std::string_view line = prefixed(logger, channel, text, buffer);
    if (hasFlag(record, ChannelRecord::kEcho))
        echo(record, logger.id(), line);
    if (hasFlag(record, ChannelRecord::kProcessed))
        writeLine(channel, logger.id(), record, line);
}

void MasterLogger::deliver(Logger& logger, int32_t channel, std::string_view text) {
    if (!defined(channel) || !hasFlag(recordOf(channel), ChannelRecord::kProcessed))
        return;
    std::string buffer;
    writeLine(channel, logger.id(), recordOf(channel), prefixed(logger, channel, text, buffer));
}

void MasterLogger::writeLine(int32_t channel, uint32_t id, const ChannelRecord& record,
                             std::string_view text) {
    if (threadFlags().inWrite) {
        refuseLine(stderr, "called recursively!", record, id, text);
        return;
    }
    const WriteScope scope;
    if (state().settingImpl.load(std::memory_order_acquire) != 0) {
        refuseLine(stdout, "log while setting impl", record, id, text);
        return;
    }
    if (record.mask.load(std::memory_order_relaxed) != 0) {
        if (const std::shared_ptr<LogImpl> impl = currentImplementation())
            impl->write(channel, id, record, text.data(), text.size());
    }
    if (hasFlag(record, ChannelRecord::kObserved))
        tellObservers(channel, id, record, text);
    if (hasFlag(record, ChannelRecord::kHistory))
        keepInHistory(record, text);
}

// Over a copy, since a callback may register and unregister; an observer that went
// meanwhile is neither called nor touched.
void MasterLogger::tellObservers(int32_t channel, uint32_t id, const ChannelRecord& record,
                                 std::string_view text) {
    const std::lock_guard lock(state().implMutex);
    const std::vector<GlobalLogObserver*> observers = state().observers;
    for (GlobalLogObserver* observer : observers) {
        if (!registered(observer) || !observer->watches(channel))
            continue;
        if (observer->d_busy) {
            fault(kFaultReentered);
            continue;
        }
        observer->d_busy = true;
        observer->observe(channel, id, record, text.data(), text.size());
        if (registered(observer))
            observer->d_busy = false;
    }
}

MasterLoggerInit::MasterLoggerInit() {
    if (std::exchange(built, true))
        return;
    State* const state = ::new (storage) State;
    state->impl = std::make_shared<DefaultLogImpl>();
    state->rImpl = std::make_shared<DefaultLogRImpl>();
    definePredefinedChannels();
    alive = true;
    // At once, so that it runs after everything that is registered later.
    std::atexit(&MasterLogger::shutdown);
}

} // namespace core
