#pragma once

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
/// An exception that escapes `start` yields kCrashStatus. So does a fault of the
/// calling thread, stack overflow included: on Windows every structured exception
/// ends `start` and kCrashStatus is returned; on Linux a fault signal or an abort
/// ends the process at once with that status, since nothing that `start` held
/// locked would ever be released. The faults of other threads get the system's default.
/// On Windows the runtime's invalid-parameter reports go to `onInvalidParameter`
/// meanwhile.
///
/// An argument "jitd" behind the program's name leaves all of this out, so that a
/// debugger sees the fault itself. One thread at a time; when it returns, the handlers
/// that were in force before are in force again.
int runGuardedWith(StartFunction start, int argc, char** argv);

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

/// The platform's guard without the switch that leaves it out.
int runUnderGuard(StartFunction start, int argc, char** argv);

/// `start`, with kCrashStatus for an exception.
int runCatching(StartFunction start, int argc, char** argv) noexcept;

} // namespace detail
} // namespace core
