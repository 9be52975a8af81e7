#pragma once

#include "core_logger.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The one path by which every part of the program reports what it does: numbered
/// channels with an enable bit each, an exchangeable implementation, observers and
/// an optional history. Ready before any other initialiser, and safe to call until the
/// process is gone. Logging never throws. What sets the log up throws std::bad_alloc, and
/// has then changed nothing.
namespace core {

/// Predefined channels; further ones are defined by name. Only kChannelCrit is
/// echoed to standard output, and kChannelNorm is off at start.
inline constexpr int32_t kChannelString = 0; ///< the string collectors of a logger
inline constexpr int32_t kChannelCrit = 1;
inline constexpr int32_t kChannelWarn = 2;
inline constexpr int32_t kChannelInfo = 3;
inline constexpr int32_t kChannelNorm = 4;
inline constexpr int32_t kChannelCount = 1024;

namespace detail {
extern constinit std::array<std::atomic<uint32_t>, kChannelCount / 32> enabledChannels;
} // namespace detail

/// Whether a formatted message on the channel would be logged: always on channel 0,
/// never outside 0..1023. Lock-free; a momentarily stale answer is possible.
inline bool channelEnabled(int32_t channel) {
    if (static_cast<uint32_t>(channel) >= static_cast<uint32_t>(kChannelCount))
        return false;
    const uint32_t bit = 1U << (channel % 32);
    return channel == 0 || (detail::enabledChannels[static_cast<size_t>(channel) / 32].load(
                                std::memory_order_relaxed) &
                            bit) != 0;
}

/// One channel as implementations and observers see it.
struct ChannelRecord {
    static constexpr uint8_t kEnabled = 1;   ///< derived; mirrored in the enable bits
    static constexpr uint8_t kProcessed = 2; ///< derived; lines go to the write path
    static constexpr uint8_t kEcho = 4;      ///< lines go to standard output at once
    static constexpr uint8_t kObserved = 8;  ///< an observer watches the channel
    static constexpr uint8_t kHistory = 16;  ///< lines are kept in the history

    char name[16];              ///< NUL-terminated, at most 15 characters
    char colour[6];             ///< ANSI SGR parameters for colour terminals, may be empty
    std::atomic<uint8_t> flags; ///< a sum of the constants above
    std::atomic<uint8_t> mask;  ///< non-zero: lines go to the implementation
};

/// Writes the lines of a program. Called without any lock held, from any thread,
/// several at once; logging from inside is refused with a text on standard error.
///
/// Destroyed when it is replaced and no thread is inside of it any more, see
/// MasterLogger::setImplementation; its destructor may log, join threads that do, and
/// replace implementations. Its own threads may log at any time.
class LogImpl {
public:
    virtual ~LogImpl();
    /// `text` has `length` bytes and is valid during the call only: what was logged, behind
    /// the labels of its logger's open scopes (core::Logger::pushLabel), once for the whole
    /// text. There is no NUL and no line end behind it; line ends within it are the
    /// caller's. Must not throw: the line would count as written.
    virtual void write(int32_t channel, uint32_t loggerId, const ChannelRecord& record,
                       const char* text, size_t length) = 0;

protected:
    LogImpl() = default;
    LogImpl(const LogImpl&) = delete;
    LogImpl& operator=(const LogImpl&) = delete;
};

/// Writes nothing: a program without an implementation shows echoed channels only.
class DefaultLogImpl : public LogImpl {
public:
    void write(int32_t channel, uint32_t loggerId, const ChannelRecord& record, const char* text,
               size_t length) override;
};

class RepeatLimits; // what DefaultLogRImpl counts; core_repeatlimits.cpp has both

/// Makes the text of a repeated message, only when it is to be reported.
using TextProducer = std::function<std::string()>;

/// Logs messages subject to repetition limits.
class LogRImpl {
public:
    virtual ~LogRImpl();
    /// `identity` names the rule, (`channel`, `key`) the message that is counted. Must not
    /// throw: the message would count as logged.
    virtual void log(std::string_view identity, int32_t channel, std::string_view key,
                     const TextProducer& produce) = 0;

protected:
    LogRImpl() = default;
    LogRImpl(const LogRImpl&) = delete;
    LogRImpl& operator=(const LogRImpl&) = delete;
};

/// Counts per (channel, key) and reports the first occurrence, then every
/// `everyCount`-th one, or, with `everyCount` below 1, the next one that comes
/// `everySeconds` or more after the last report. Any thread.
///
/// What it counts it keeps until it is destroyed: about 100 bytes and the key for each
/// message, so keys come from a limited set. Counts have 64 bits.
class DefaultLogRImpl : public LogRImpl {
public:
    using Clock = int64_t (*)(); ///< seconds, any epoch

    DefaultLogRImpl();
    /// By the clock of the system, or by another.
    explicit DefaultLogRImpl(Clock clock);
    ~DefaultLogRImpl() override;

    /// Without a rule nothing is suppressed. A threshold below 1 is not used.
    void setRule(std::string_view identity, int32_t everyCount, int32_t everySeconds);

    void log(std::string_view identity, int32_t channel, std::string_view key,
             const TextProducer& produce) override;

private:
    std::unique_ptr<RepeatLimits> d_limits;
    Clock d_clock;
};

/// Receives every line of the channels it watches, after the implementation.
///
/// Called on the logging thread under the master logger's recursive lock: it may
/// register and unregister observers and replace the implementation, and must not
/// wait for another thread that logs. Its own logging is refused.
///
/// It may also unregister itself, or destroy itself after a text on standard output.
class GlobalLogObserver {
public:
    /// Unregisters. A derived class calls `detach()` first in its own destructor,
    /// since another thread may be about to call it.
    virtual ~GlobalLogObserver();

    /// Must not throw: the line would count as delivered.
    virtual void observe(int32_t channel, uint32_t loggerId, const ChannelRecord& record,
                         const char* text, size_t length) = 0;

    /// Which channels to watch; takes effect at once when registered.
    void watch(int32_t channel);
    void unwatch(int32_t channel);
    bool watches(int32_t channel) const;

protected:
    GlobalLogObserver() = default;
    GlobalLogObserver(const GlobalLogObserver&) = delete;
    GlobalLogObserver& operator=(const GlobalLogObserver&) = delete;

    /// Unregisters and waits for a call in progress on another thread; idempotent.
    void detach();

    bool d_busy = false; ///< its operation is running

private:
    friend class MasterLogger;
    std::vector<int32_t> d_channels;
    bool d_detached = true; // not registered since the last detach
};

/// A line of the history.
struct HistoryEntry {
    int64_t time;        ///< nanoseconds since the epoch, core::now()
    std::string channel; ///< its name
    std::string text;    ///< as LogImpl::write gets it
};

/// The process-wide logger. Every operation may be called on any thread and before
/// and after main; after shutdown they do nothing but to write a text to standard output
/// ("\nERROR in core_v2masterlogger.cpp:" and a number). Only formatted lines, which then
/// find their channel disabled, are dropped in silence.
class MasterLogger {
public:
    static constexpr size_t kHistoryLimit = 400; ///< at start

    /// The handle of callers that have none of their own; id 0.
    static Logger& defaultLogger();

    /// Defines the next channel; names are cut at 15 characters, colours at 5. The
    /// channel starts switched off unless `mask` is non-zero. Its number, or -1 when
    /// all 1024 are defined.
    static int32_t defineChannel(std::string_view name, std::string_view colour = {},
                                 uint8_t mask = 0);

    /// Channels 1..1023. A channel without a mask is lent bit 8 for as long as it is
    /// switched on, so that its lines reach the implementation, whatever else watches it.
    ///
    /// Switching off holds until something else that enables the channel changes: its
    /// echo, its history or who observes it. CRIT, WARN and INFO, which have a mask of
    /// their own, are then on again. Finished texts (logText) pass all the same.
    static void setChannelEnabled(int32_t channel, bool enabled);
    /// Lines of an echoed channel go to standard output at once; CRIT is one.
    static void setChannelEcho(int32_t channel, bool echo);
    static bool echoed(int32_t channel); ///< lock-free

    /// Null installs the default one. The call returns when no thread is
    /// inside the old implementation any more and it has been destroyed, on this thread
    /// and without any lock; what other threads log until then is dropped with a text on
    /// standard output. So do not call it with a lock that the old one takes, nor on a
    /// thread that its destructor joins.
    ///
    /// Called from inside an implementation or observer on this thread it returns at once,
    /// and the old one is destroyed in this way when the line that led there is done.
    static void setImplementation(std::unique_ptr<LogImpl> implementation);
    /// The same for messages that repeat, whose lines go on meanwhile.
    static void setRepeatImplementation(std::unique_ptr<LogRImpl> implementation);

    /// A null pointer is ignored.
    static void registerObserver(GlobalLogObserver* observer);
    static void unregisterObserver(GlobalLogObserver* observer);

    /// The history holds the last lines of its channels; there is none at start.
    static void enableHistory(bool enabled);
    /// Whether lines of the channel are kept.
    static void setHistory(int32_t channel, bool kept);
    /// How many lines; 400 at start. What is too much goes at once, the oldest first.
    static void setHistoryLimit(size_t lines);
    /// The lines that are kept, the oldest first.
    static std::vector<HistoryEntry> history();

    /// Runs at process exit, after every static destructor, and destroys what is installed
    /// as replacing it would; idempotent. Called from inside an implementation, as by
    /// std::exit there, it destroys none.
    static void shutdown();

    /// Logs a finished text without looking at the channel's enable bit.
    static void logText(Logger& logger, int32_t channel, std::string_view text);
    /// For texts made after the channel was found enabled: after shutdown, which may have
    /// come meanwhile, they are dropped in silence.
    static void logEnabled(Logger& logger, int32_t channel, std::string_view text);
    /// Through the installed LogRImpl.
    static void logRepeated(std::string_view identity, int32_t channel, std::string_view key,
                            const TextProducer& produce);

    /// The same for a line that has been shown already: not on standard output.
    static void deliver(Logger& logger, int32_t channel, std::string_view text);

private:
    friend class GlobalLogObserver;
    static void recomputeObserved();
    static void logDefined(Logger& logger, int32_t channel, std::string_view text);
    static void writeLine(int32_t channel, uint32_t id, const ChannelRecord& record,
                          std::string_view text);
    static void tellObservers(int32_t channel, uint32_t id, const ChannelRecord& record,
                              std::string_view text);
};

} // namespace core
