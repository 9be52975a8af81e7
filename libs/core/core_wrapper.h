#pragma once

#include "core_utf.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace core {

/// The few system calls that need care: the executable's name, files with UTF-8
/// names, and deleting read-only files. Paths are UTF-8; their '\' works on Linux
/// too. Failures come back as the call's own result and errno. Any thread.
class Wrapper {
public:
    class System; ///< its system calls; tests replace it

    /// The running executable's file name without its folder. Not known: a failed
    /// check and empty text.
    static std::string moduleBaseName();

    /// The running executable's path, of which at most `limit` bytes are looked at,
    /// in the system's narrow encoding; empty when the system cannot tell.
    static std::string executablePath(size_t limit);

    /// std::fopen for a UTF-8 path; the file is never inherited by child processes.
    /// Null also, after a failed check, when the path or the mode is not UTF-8; and for
    /// reading a pipe by name, whose other end might never come.
    static FILE* fopen(const std::string& path, const std::string& mode);

    /// Deletes a file, even a read-only one: after EACCES it is made writable (mode 0600,
    /// which stays if the second try fails, too) and deleted again. 0, or -1 with errno.
    /// After a refusal errno is EACCES even when the second try succeeds; a path that is
    /// not UTF-8 is EILSEQ.
    static int unlink(const std::string& path);
    static int unlink(const std::string& path, const System& system);

    /// Whether this thread's `unlink` converts its path from UTF-8, true at start, or
    /// passes its bytes on as they are, in the system's narrow encoding.
    static bool wideFileNames();
    static void setWideFileNames(bool wide);

    /// What the system says about an error of its own: an errno on Linux, the code of
    /// GetLastError and its like on Windows. Empty only without memory for it.
    static std::string systemErrorText(uint32_t code);
    /// The same for an errno of the runtime's, on both.
    static std::string runtimeErrorText(int error);

    /// The conversions of core_utf.h; a failure is also logged on WARN, as "fromUtf8
    /// conversion failed" or "toUtf8 conversion failed".
    [[nodiscard]] static bool fromUtf8(std::string_view text, SystemText& out);
    [[nodiscard]] static bool toUtf8(SystemTextView text, std::string& out);
    [[nodiscard]] static bool pathFromUtf8(std::string_view path, SystemText& out);
};

} // namespace core
