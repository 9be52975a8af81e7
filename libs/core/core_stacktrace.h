#pragma once

#include "core_v2masterlogger.h"

#include <cstdint>
#include <string>
#include <vector>

namespace core {

/// One call on a stack. What is not known is empty, or 0.
struct StackFrame {
    std::string imageName;      ///< path of the program or library that the address lies in
    std::string symbolFileName; ///< path of the file that its names come from
    std::string function;       ///< undecorated, followed by "()"
    std::string sourceFile;     ///< path, as the compiler was given it
    uint32_t line = 0;          ///< in the source file
};

/// Walks the calling thread's stack and prints it as numbered lines:
///
///     #01 in run() at a.cpp:57 (tool.exe)
///
/// Source and image are left out where they are not known. A function without a name is
/// "?"; of several in a row only the first is printed, and a line "#05 in ?" behind it
/// says where the row ends, counting the frames that are not printed, too.
///
/// One object per use. On Windows the symbol engine serves one thread at a time; on Linux
/// what it learnt is kept for later objects, which any threads may use at once. Failures
/// to find a name, a line or a module are logged on NORM, and the walk goes on.
class StackTrace {
public:
    static constexpr unsigned kMaxFrames = 63; ///< of a text
    static constexpr unsigned kDiscarded = 3;  ///< of a text: the tracing code and its caller

    /// Starts the symbol engine. On Windows it looks for symbols in the current folder,
    /// in the executable's folder, in "symbols" below that, and in the system's folders.
    StackTrace();
    ~StackTrace(); // NOLINT(performance-trivially-destructible): it is not, on Windows
    StackTrace(const StackTrace&) = delete;
    StackTrace& operator=(const StackTrace&) = delete;

    /// Appends the calls, innermost first, this function included, until `frames` holds
    /// `maxFrames`. A walk that ends early is a success; false, after a line on WARN,
    /// only when the symbol engine did not start.
    bool getStack(std::vector<StackFrame>& frames, unsigned maxFrames);

    /// Logs the text of this stack, beginning with the caller's caller, if the channel
    /// is enabled.
    void logStack(int32_t channel, Logger& logger = MasterLogger::defaultLogger());

    /// The text of this stack, beginning with the caller; lines are joined by '\n'.
    std::string getStackText();

    /// Adds a module to the symbol engine of `process`, with its path, name, address and
    /// size in bytes. True also if the engine knew it; false after a line on NORM. On
    /// Linux there is one engine, for this process, whatever `process` is.
    bool loadModule(void* process, const std::string& image, const std::string& module,
                    uint64_t base, uint32_t size);

    /// Adds every module of this process; once per object.
    void loadModules();

private:
    friend class StackTraceWithoutSymbols; // of the tests

    void* d_process = nullptr; // null: cannot walk
    uint32_t d_processId = 0;
    bool d_modulesLoaded = false;
};

} // namespace core
