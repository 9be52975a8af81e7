#include "internal/core_crashdump_lines.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

namespace core {
namespace {

constexpr int kPatience = 300; // milliseconds that standard output's reader gets

bool writable(int file) {
    pollfd output{file, POLLOUT, 0};
    return ::poll(&output, 1, kPatience) == 1 && (output.revents & POLLOUT) != 0;
}

/// What the runtime has buffered comes first, unless another thread holds its lock.
void flushStandardOutput() {
    if (!writable(STDOUT_FILENO) || ::ftrylockfile(stdout) != 0)
        return;
    ::fflush_unlocked(stdout);
    ::funlockfile(stdout);
}

} // namespace

void detail::writeToStandardOutput(std::string_view text) {
    flushStandardOutput();
    while (!text.empty() && writable(STDOUT_FILENO)) {
        // A pipe that is ready takes this much at once.
        const ssize_t written =
            ::write(STDOUT_FILENO, text.data(), std::min<size_t>(text.size(), PIPE_BUF));
        if (written < 0 && errno != EINTR)
            return;
        text.remove_prefix(static_cast<size_t>(std::max<ssize_t>(written, 0)));
    }
}

void detail::appendToFile(PathText& path, std::string_view line) {
    path.replace('\\', '/');
    // Without waiting, and only if it is a file: a pipe in its place may have no reader.
    const int file =
        ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY,
               S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH);
    if (file < 0)
        return;
    struct stat status {};
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
        [[maybe_unused]] const ssize_t written = ::write(file, line.data(), line.size());
    }
    ::close(file);
}

} // namespace core
