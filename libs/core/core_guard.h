#pragma once

#include "core_crashdump.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The guarded start of a program: what runs around everything else and gives a
/// crash its exit status.
namespace core {

using StartFunction = int (*)(int argc, char** argv);

/// The status of a crashed run; where a status has eight bits it is seen as 129.
inline constexpr int kCrashStatus = -127;

/// Runs `start` under the crash guard and returns its result.
///
/// A crash ends `start`, leaves what writeCrashDump writes and yields kCrashStatus: an
/// exception that escapes, and a fault of the calling thread, stack overflow included. On
/// Windows the latter is any structured exception, on Linux a fault signal or an abort.
/// What `start` held or had locked stays as it was, so the process should then end; on
/// Linux it does so, with that status, a few seconds after a fault at the latest, and so
/// does one that meets another fault while the first is written down. The faults of other
/// threads get the system's default. On Windows the runtime's invalid-parameter reports go
/// to `onInvalidParameter` meanwhile.
///
/// An argument "jitd" behind the program's name leaves all of this out, so that a
/// debugger sees the fault itself. One thread at a time; when it returns, the handlers
/// that were in force before are in force again.
int runGuardedWith(StartFunction start, int argc, char** argv);

/// Leaves the evidence of a crash: the dump at dumpFilePath, in the folder Paths::Dumps,
/// which is made if only its last level is missing; a line on CRIT that says so, or why
/// not; and a line in the file dumps.log of the folder Paths::Logs, if that exists. The
/// dump of an earlier crash of the same build is replaced.
///
/// `fault` is the EXCEPTION_POINTERS of a structured exception, or null for the current
/// exception of C++, the only kind on Linux. Returns 1, by which an exception filter asks
/// for its handler. For the guard; the folders must have been set.
int32_t writeCrashDump(void* fault);

/// Ends the process at once: buffered output is written, but neither exit handlers nor
/// static destructors run. For process entries, on kCrashStatus: the program is still
/// as the crash left it, and nothing of it may run again.
[[noreturn]] void endProcess(int status);

/// Logs on CRIT which argument of which runtime function was invalid.
void onInvalidParameter(std::string_view expression, std::string_view function,
                        std::string_view file, uint32_t line);

/// An argument vector in the form that `main` takes, NULL-terminated. It owns its
/// texts, which stay where they are when it is moved.
class Arguments {
public:
    explicit Arguments(std::vector<std::string> texts);
    Arguments(Arguments&&) = default;
    Arguments& operator=(Arguments&&) = default;

    int count() const { return static_cast<int>(d_texts.size()); }
    /// Valid as long as the object that holds the texts.
    char** values() { return d_values.data(); }

private:
    std::vector<std::string> d_texts;
    std::vector<char*> d_values;
};

/// The arguments of a program that was started by a single text: the executable's
/// path, then the words of the text, which blanks separate and double quotes group.
Arguments splitCommandLine(std::string_view commandLine);

namespace detail {
struct DumpResult;

/// The platform's guard without the switch that leaves it out.
int runUnderGuard(StartFunction start, int argc, char** argv);

/// The lines about a dump that has been written, or not: the rest of writeCrashDump.
void recordDump(const DumpResult& result);

/// `start`, with kCrashStatus for an exception.
int runCatching(StartFunction start, int argc, char** argv) noexcept;

} // namespace detail
} // namespace core
