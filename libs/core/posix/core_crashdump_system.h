#pragma once

#include "internal/core_crashdump_lines.h"

#include <signal.h>
#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The pieces of a crash report on Linux; for sources only. All of it runs in a signal
/// handler, on a stack of its own: it uses static storage, and neither allocates nor
/// takes locks of the program.
namespace core::detail {

inline constexpr std::array kFaultSignals{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT};

// ---- The crash of this process

/// The thread that crashed first; 0: none. Kept when the guard has returned, so that a
/// later fault ends the process.
extern constinit std::atomic<pid_t> crashing;

/// What has happened.
struct CrashCause {
    const void* info; ///< siginfo_t; null: no signal
    void* context;    ///< ucontext_t; null: a call without a fault
    bool terminated;  ///< by std::terminate
};

/// Unblocks the signals that end an attempt, ignores those that would end the process
/// before all is written, and lifts its memory limit.
void prepareProcess();

/// Dump, line on CRIT, line in dumps.log; none is lost if another fails.
void leaveEvidence(const CrashCause& cause);

/// Limits the time of what follows, too; after that, exit handlers do not run.
void limitTheEnd();

// ---- Steps that may fail

/// All of what follows a crash ends within this time of its beginning.
void startCrashClock(int milliseconds);

/// Runs `step`, which must own nothing. False if a fault of this thread or the end of its
/// time cut it off, see cutAttempt. One attempt at a time.
bool runAttempt(int milliseconds, void (*step)(void*), void* argument);
template <typename Step>
bool attempt(int milliseconds, Step step) {
    return runAttempt(
        milliseconds, [](void* argument) { (*static_cast<Step*>(argument))(); }, &step);
}

/// For signal handlers, on the attempting thread: ends the current attempt; returns if
/// there is none.
void cutAttempt();

// ---- Memory and modules

/// Copies memory that may be unmapped.
bool readMemory(uintptr_t from, void* to, size_t size);

/// Whether an address lies in a loaded module.
bool isCode(uintptr_t address);

// ---- Stacks

/// The addresses of the calls on a thread's stack, the innermost first.
struct CrashStack {
    static constexpr size_t kMaxFrames = 100;

    pid_t thread = 0;
    uintptr_t top = 0; ///< where its memory begins; 0: not known
    size_t count = 0;
    std::array<uintptr_t, kMaxFrames> frames{};
    enum class Answer : int { None, Asked, Begun, Done };
    std::atomic<Answer> answer{Answer::None};

    void add(uintptr_t address) {
        if (count < kMaxFrames)
            frames[count++] = address;
    }
};

/// Walks the stack of this thread, in a signal's handler: from the place of the signal on,
/// whose ucontext_t is altered where that lets the stack be walked.
void walkInterrupted(CrashStack& stack, void* context);

/// Walks the stack of this thread, from the call on that returns to `first`.
void walkFrom(CrashStack& stack, const void* first);

/// The stacks of the other threads, each of which is asked by a signal. Those that have not
/// answered within the time have none.
struct OtherStacks {
    static constexpr size_t kMaxThreads = 64;

    size_t count = 0;
    std::array<CrashStack, kMaxThreads> stacks;
};
const OtherStacks& askOtherThreads(int milliseconds);

// ---- Exceptions of C++

/// Where the guarded thread has thrown an exception, whose object this is; null when that is
/// not known any more.
const CrashStack* stackOfThrow(const void* exception);

/// Whether this thread's throws are recorded.
void noteThrows(bool noted);

// ---- The report

/// Writes the report beside its place and moves it there if all could be written. Its
/// pieces are attempts, so that each may fail without the others.
void writeReport(const CrashCause& cause, DumpResult& result);

/// Descriptors and addresses that are kept free for a report, and released when it is
/// written.
void reserveForReport();
void releaseReserve();

// ---- The report's file

using ReportLine = FixedText<5120>;

/// A report under way. There is one.
class ReportFile {
public:
    void open();
    /// Moves the report to its place, or removes what there is of it.
    void finish(DumpResult& result);

    void write(std::string_view text);
    void write(const ReportLine& line) { write(line.view()); }

private:
    PathText d_path;
    PathText d_temporary; // beside it
    int d_file = -1;
    int d_error = 0; // the first
};

void writeModules(ReportFile& file);
/// Addresses with module and offset, and a window of the stack's memory.
void writeAddresses(ReportFile& file, const CrashStack& stack);
/// The same with names.
void writeNames(ReportFile& file, const CrashStack& stack);

} // namespace core::detail
