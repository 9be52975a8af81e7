#pragma once

#include "internal/core_crashdump_lines.h"

#include <windows.h>

#include <atomic>

/// The pieces of a dump on Windows; for sources only.
namespace core::detail {

// ---- The crash of this process

/// The thread that crashed first; 0: none.
extern constinit std::atomic<DWORD> crashing;

/// Starts the thread that writes dumps, with a stack of its own: after a crash a new one
/// would need locks that the crashed thread may hold.
void startDumpHelper();

/// What has happened to the crashed thread.
struct CrashCause {
    EXCEPTION_POINTERS* pointers; ///< null: no exception
    void (*describe)();           ///< adds to what the dump holds; may hang; null: nothing
    bool endsProcess;             ///< the helper ends it, if nobody else does
};

/// The helper writes the dump and the line on standard output, while this thread waits.
/// Ends the process if the helper cannot. `deliverEvidence` does the rest.
void showEvidence(const CrashCause& cause);

/// Sends the line to the log's receivers, then writes the line in dumps.log. On the
/// crashed thread, which may hold the log's locks and has some stack again.
void deliverEvidence();

/// For a crashed thread that cannot go on: lets the helper finish.
[[noreturn]] void endAfterEvidence();

[[noreturn]] void endNow(int status);

/// Writes the dump of a fault of `thread`, or of none, over the file. For a healthy
/// thread: it needs much stack, and the heap.
DumpResult writeMinidump(EXCEPTION_POINTERS* pointers, DWORD thread);

// ---- Exceptions of C++

/// Records the throws of this thread; 0: of none.
void noteThrows(DWORD thread);

/// Describes the current exception, and where it was thrown, in `uncaughtException` and
/// `uncaughtThrow`.
void describeException();

/// The address of the text.
ULONG_PTR uncaughtText();

} // namespace core::detail
