#pragma once

#include "core_crashdump.h"

#include <cstdint>
#include <string_view>

/// The guarded start of a program: it runs around everything else and gives a crash its
/// exit status.
namespace core {

/// What a program does, with its arguments; the result is its status.
using StartFunction = int (*)(int argc, char** argv);

/// Runs `start` under the crash guard and returns its result.
///
/// A crash ends `start`, leaves what writeCrashDump writes and returns kCrashStatus. A
/// crash is an uncaught exception, std::terminate, abort, or a fault of the calling
/// thread, stack overflow included: on Windows any structured exception, on Linux a fault
/// signal. Exceptions do not leave this function and unwind nothing, so the dump has the
/// stack of the throw. What `start` owned or had locked stays so, and the process must
/// end: half a second later it ends by itself, with that status. It ends at once if its
/// stack is too damaged to return, or at another fault. All that a crash writes has a
/// time limit. Faults of other threads get the system's default handling, but wait while
/// a crash of this thread is recorded. During the run, on Windows, the runtime's
/// invalid-parameter reports go to `onInvalidParameter`.
///
/// With an argument "jitd" nothing is guarded, so that a debugger sees the fault itself.
/// One thread at a time; after a run without a crash the previous handlers are restored.
int runGuardedWith(StartFunction start, int argc, char** argv);

/// Ends the process at once: buffered output is written, but neither exit handlers nor
/// static destructors run. For process entries, on kCrashStatus: the program is as the
/// crash left it, and no more of its code may run.
[[noreturn]] void endProcess(int status);

/// Logs on CRIT which argument of which runtime function was invalid.
void onInvalidParameter(std::string_view expression, std::string_view function,
                        std::string_view file, uint32_t line);

namespace detail {
/// The platform's guard, whatever the arguments are.
int runUnderGuard(StartFunction start, int argc, char** argv);

} // namespace detail
} // namespace core
