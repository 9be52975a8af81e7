#include "core_v2masterlogger.h"

#include "core_check.h"
#include "core_timespec.h"
#include "internal/core_historycopy.h"
#include "internal/core_replaceable.h"

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

namespace core {

// The predefined channels' bits, for initialisers that log before the logger exists.
constinit std::array<std::atomic<uint32_t>, kChannelCount / 32> detail::enabledChannels{
    {{1U << kChannelCrit | 1U << kChannelWarn | 1U << kChannelInfo}}};

namespace {

// Numbers that report faults of the log system itself, which cannot be logged.
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

using ChannelSet = std::bitset<kChannelCount>;
using History = std::deque<HistoryEntry>;

struct State {
    State();

    int32_t define(std::string_view name, std::string_view colour, uint8_t mask);
    void changeFlags(int32_t channel, uint8_t set, uint8_t clear);
    ChannelRecord& record(int32_t channel) { return channels[static_cast<size_t>(channel)]; }

    std::atomic<bool> alive{true};
    std::array<ChannelRecord, kChannelCount> channels{};
    std::atomic<int32_t> channelCount{0}; // 0 after shutdown
    ChannelSet lent;                      // channels whose mask is kMaskSwitchedOn only
    std::mutex channelMutex;              // changes of channel records; taken last

    // Recursive, since observers called under it may register, unregister, replace the
    // implementation, or crash into the crash filter's own log line.
    std::recursive_mutex implMutex;
    std::atomic<int32_t> settingImpl{0}; // implementations that are being destroyed
    std::shared_ptr<Lendable<LogImpl>> impl;
    std::shared_ptr<Lendable<LogRImpl>> rImpl;
    std::vector<GlobalLogObserver*> observers; // in order of registration
    GlobalLogObserver* called = nullptr;       // whose operation is running
    std::unique_ptr<History> history;
    size_t historyLimit = MasterLogger::kHistoryLimit;

    Logger defaultLogger;
};

// Built at first use and never destroyed: threads and static destructors may log to the
// very end.
State& state() {
    static State& theState = []() -> State& {
        State* const built = new State;
        std::atexit(&MasterLogger::shutdown);
        return *built;
    }();
    return theState;
}

// Before all other initialisers of the program: the exit handler that is registered first
// runs last.
[[gnu::constructor(101)]] void buildFirst() { state(); }

void print(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

std::string faultText(int32_t number) {
    return "\nERROR in core_v2masterlogger.cpp:" + std::to_string(number);
}

void fault(int32_t number) { print(stdout, faultText(number)); }

// Whether the logger has not ended. If it has, reports the call.
bool stillAlive() {
    if (state().alive)
        return true;
    fault(kFaultNotAlive);
    return false;
}

bool defined(int32_t channel) {
    return channel >= 0 && channel < state().channelCount.load(std::memory_order_acquire);
}

bool hasFlag(const ChannelRecord& record, uint8_t flag) {
    return (record.flags.load(std::memory_order_relaxed) & flag) != 0;
}

void storeEnabledBit(int32_t channel, bool enabled) {
    const auto place = static_cast<uint32_t>(channel);
    std::atomic<uint32_t>& word = detail::enabledChannels[place / 32];
    const uint32_t bit = 1U << (place % 32);
    if (enabled)
        word.fetch_or(bit, std::memory_order_relaxed);
    else
        word.fetch_and(~bit, std::memory_order_relaxed);
}

// Sets and clears flags of a channel and derives bits 0 and 1 anew. Under channelMutex.
void State::changeFlags(int32_t channel, uint8_t set, uint8_t clear) {
    ChannelRecord& record = this->record(channel);
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
    state().changeFlags(channel, on ? flag : 0, on ? 0 : flag);
}

void copyCut(char* to, size_t size, std::string_view from) { to[from.copy(to, size - 1)] = '\0'; }

// Under channelMutex.
int32_t State::define(std::string_view name, std::string_view colour, uint8_t mask) {
    const int32_t channel = channelCount.load(std::memory_order_relaxed);
    if (channel >= kChannelCount)
        return -1;
    ChannelRecord& record = this->record(channel);
    copyCut(record.name, sizeof record.name, name);
    copyCut(record.colour, sizeof record.colour, colour);
    if (mask != 0) { // one of its own, which is never taken back
        record.mask.store(mask, std::memory_order_relaxed);
        lent.reset(static_cast<size_t>(channel));
    }
    changeFlags(channel, 0, 0);
    channelCount.store(channel + 1, std::memory_order_release);
    return channel;
}

State::State()
    : impl(std::make_shared<Lendable<LogImpl>>(std::make_unique<DefaultLogImpl>())),
      rImpl(std::make_shared<Lendable<LogRImpl>>(std::make_unique<DefaultLogRImpl>())) {
    define("LOG2STRING", "", 0);
    changeFlags(define("CRIT", "1;31", kMaskCrit), ChannelRecord::kEcho, 0);
    define("WARN", "1;34", kMaskWarn);
    define("INFO", "1", kMaskInfo);
    define("NORM", "", 0);
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

template <typename T>
std::shared_ptr<T> lend(const std::shared_ptr<Lendable<T>>& place) {
    const std::lock_guard lock(state().implMutex);
    return place != nullptr ? place->lend() : nullptr;
}

// Destroys an implementation once no thread is inside it any more. Made before the next one
// is installed, so that nothing can fail after that.
template <typename T>
struct Replacement final : Visit::Work {
    void run() override {
        if constexpr (std::is_same_v<T, LogImpl>)
            ++state().settingImpl;
        object->destroy();
        if constexpr (std::is_same_v<T, LogImpl>)
            --state().settingImpl;
    }
    std::shared_ptr<Lendable<T>> object;
};

// What was there before goes, or `next` after shutdown.
template <typename T>
void replace(std::shared_ptr<Lendable<T>>& place, std::unique_ptr<T> next) {
    auto replacement = std::make_unique<Replacement<T>>();
    replacement->object = std::make_shared<Lendable<T>>(std::move(next));
    {
        const std::lock_guard lock(state().implMutex);
        if (stillAlive())
            place.swap(replacement->object);
    }
    Visit::runOutside(std::move(replacement));
}

// There is nobody to report to: a line whose receiver throws counts as delivered.
template <typename Call>
void withoutExceptions(Call&& call) {
    try {
        call();
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

// Under implMutex.
void dropOldest(History& history) {
    while (history.size() > state().historyLimit)
        history.pop_front();
}

void keepInHistory(const ChannelRecord& record, std::string_view text) {
    const std::lock_guard lock(state().implMutex);
    History* const history = state().history.get();
    if (history == nullptr)
        return;
    history->push_back({now(), record.name, std::string(text)});
    detail::copyToHistory(history->back().time, record.name, text);
    dropOldest(*history);
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

private:
    Visit d_visit; // ends last
};

} // namespace

LogImpl::~LogImpl() = default;
LogRImpl::~LogRImpl() = default;

void DefaultLogImpl::write(int32_t, uint32_t, const ChannelRecord&, const char*, size_t) {}

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
    const std::lock_guard lock(state().implMutex);
    return std::find(d_channels.begin(), d_channels.end(), channel) != d_channels.end();
}

void GlobalLogObserver::detach() {
    if (std::exchange(d_detached, true))
        return;
    const std::lock_guard lock(state().implMutex);
    if (state().called == this) {
        fault(kFaultDestroyedWhileBusy);
        state().called = nullptr;
    }
    MasterLogger::unregisterObserver(this);
}

// ---- Master logger

Logger& MasterLogger::defaultLogger() { return state().defaultLogger; }

int32_t MasterLogger::defineChannel(std::string_view name, std::string_view colour, uint8_t mask) {
    if (!stillAlive())
        return -1;
    const std::lock_guard lock(state().channelMutex);
    return state().define(name, colour, mask);
}

void MasterLogger::setChannelEnabled(int32_t channel, bool enabled) {
    if (!stillAlive())
        return;
    if (channel < 1 || channel >= kChannelCount) {
        fault(kFaultChannelRange);
        return;
    }
    const std::lock_guard lock(state().channelMutex);
    ChannelRecord& record = state().record(channel);
    auto lent = state().lent[static_cast<size_t>(channel)];
    if (enabled && record.mask == 0) {
        record.mask = kMaskSwitchedOn;
        lent = true;
    } else if (!enabled && lent) {
        record.mask = 0;
        lent = false;
    }
    state().changeFlags(channel, 0, 0);
    if (!enabled) {
        record.flags.fetch_and(static_cast<uint8_t>(~ChannelRecord::kEnabled),
                               std::memory_order_relaxed);
        storeEnabledBit(channel, false);
    }
}

void MasterLogger::setChannelEcho(int32_t channel, bool echoed) {
    if (stillAlive() && defined(channel))
        changeFlag(channel, ChannelRecord::kEcho, echoed);
}

bool MasterLogger::echoed(int32_t channel) {
    return defined(channel) && hasFlag(state().record(channel), ChannelRecord::kEcho);
}

// The old implementation goes outside the lock, since its destructor may wait for a
// thread that logs; what is logged before it is gone is refused.
void MasterLogger::setImplementation(std::unique_ptr<LogImpl> implementation) {
    if (implementation == nullptr)
        implementation = std::make_unique<DefaultLogImpl>();
    replace(state().impl, std::move(implementation));
}

void MasterLogger::setRepeatImplementation(std::unique_ptr<LogRImpl> implementation) {
    if (implementation == nullptr)
        implementation = std::make_unique<DefaultLogRImpl>();
    replace(state().rImpl, std::move(implementation));
}

void MasterLogger::logRepeated(std::string_view identity, int32_t channel, std::string_view key,
                               const TextProducer& produce) {
    const Visit visit; // before what it lends
    if (const std::shared_ptr<LogRImpl> implementation = lend(state().rImpl))
        withoutExceptions([&] { implementation->log(identity, channel, key, produce); });
}

void MasterLogger::registerObserver(GlobalLogObserver* observer) {
    if (observer == nullptr)
        return;
    const std::lock_guard lock(state().implMutex);
    if (state().alive && !registered(observer)) {
        state().observers.push_back(observer);
        observer->d_detached = false;
    }
    recomputeObserved();
}

void MasterLogger::unregisterObserver(GlobalLogObserver* observer) {
    const std::lock_guard lock(state().implMutex);
    if (std::erase(state().observers, observer) != 0)
        observer->d_busy = false;
    recomputeObserved();
}

// Under implMutex.
void MasterLogger::recomputeObserved() {
    if (!state().alive) {
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
        if (on != hasFlag(state().record(channel), ChannelRecord::kObserved))
            changeFlag(channel, ChannelRecord::kObserved, on);
    }
}

void MasterLogger::enableHistory(bool enabled) {
    const std::lock_guard lock(state().implMutex);
    if (stillAlive() && enabled != (state().history != nullptr))
        state().history.reset(enabled ? new History : nullptr);
}

void MasterLogger::setHistory(int32_t channel, bool kept) {
    if (stillAlive() && channel > kChannelString && defined(channel))
        changeFlag(channel, ChannelRecord::kHistory, kept);
}

void MasterLogger::setHistoryLimit(size_t lines) {
    const std::lock_guard lock(state().implMutex);
    if (!stillAlive())
        return;
    state().historyLimit = lines;
    if (state().history != nullptr)
        dropOldest(*state().history);
}

std::vector<HistoryEntry> MasterLogger::history() {
    const std::lock_guard lock(state().implMutex);
    if (state().history == nullptr)
        return {};
    return {state().history->begin(), state().history->end()};
}

void MasterLogger::shutdown() {
    if (!state().alive.exchange(false))
        return;
    for (std::atomic<uint32_t>& word : detail::enabledChannels)
        word.store(0, std::memory_order_relaxed);
    state().channelCount.store(0, std::memory_order_release);

    std::shared_ptr<Lendable<LogImpl>> impl;
    std::shared_ptr<Lendable<LogRImpl>> rImpl;
    std::unique_ptr<History> history;
    {
        const std::lock_guard lock(state().implMutex);
        state().observers.clear();
        history.swap(state().history);
        if (Visit::active()) // exit was called inside one of them, which never returns
            return;
        impl.swap(state().impl);
        rImpl.swap(state().rImpl);
    }
    rImpl->destroy();
    impl->destroy();
}

void MasterLogger::logText(Logger& logger, int32_t channel, std::string_view text) {
    withoutExceptions([&] {
        if (channel == kChannelString)
            logger.collect(text);
        else if (defined(channel))
            logDefined(logger, channel, text);
        else
            print(stdout, faultText(kFaultUnknownChannel)
                              .append("[")
                              .append(std::to_string(channel))
                              .append("??] ")
                              .append(text));
    });
}

// Shutdown clears `alive` before the count of channels, so whoever sees no channels sees
// that, too.
void MasterLogger::logEnabled(Logger& logger, int32_t channel, std::string_view text) {
    if (channel == kChannelString || defined(channel) || state().alive)
        logText(logger, channel, text);
}

void MasterLogger::logDefined(Logger& logger, int32_t channel, std::string_view text) {
    const ChannelRecord& record = state().record(channel);
    std::string buffer;
    const std::string_view line = prefixed(logger, channel, text, buffer);
    if (hasFlag(record, ChannelRecord::kEcho))
        echo(record, logger.id(), line);
    if (hasFlag(record, ChannelRecord::kProcessed))
        writeLine(channel, logger.id(), record, line);
}

void MasterLogger::deliver(Logger& logger, int32_t channel, std::string_view text) {
    if (!defined(channel) || !hasFlag(state().record(channel), ChannelRecord::kProcessed))
        return;
    withoutExceptions([&] {
        std::string buffer;
        writeLine(channel, logger.id(), state().record(channel),
                  prefixed(logger, channel, text, buffer));
    });
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
        if (const std::shared_ptr<LogImpl> impl = lend(state().impl))
            withoutExceptions([&] { impl->write(channel, id, record, text.data(), text.size()); });
    }
    if (hasFlag(record, ChannelRecord::kObserved))
        tellObservers(channel, id, record, text);
    if (hasFlag(record, ChannelRecord::kHistory))
        keepInHistory(record, text);
}

// Iterates over a copy, since a callback may register and unregister; observers that are
// gone by then are neither called nor touched.
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
        state().called = observer;
        withoutExceptions(
            [&] { observer->observe(channel, id, record, text.data(), text.size()); });
        if (std::exchange(state().called, nullptr) == observer) // otherwise it is destroyed
            observer->d_busy = false;
    }
}

} // namespace core
