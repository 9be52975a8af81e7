#include "collect_lock.h"

#include "core_log.h"
#include "core_utf.h"
#include "core_wrapper.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace collect {

FolderLock::FolderLock(const std::string& folder) {
    core::SystemText path;
    const bool named = core::pathFromUtf8(folder + "/collect.lock", path);
    const int file = named ? ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600) : -1;
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0)
        d_state = State::Held;
    else if (file >= 0 && errno == EWOULDBLOCK)
        d_state = State::HeldByAnother;
    else
        core::logFrom(
            core::kChannelWarn, "collect::FolderLock", "(%s) - %s", folder,
            core::Wrapper::systemErrorText(static_cast<uint32_t>(named ? errno : EILSEQ)));
    d_file = file;
}

FolderLock::~FolderLock() {
    if (d_file >= 0)
        ::close(static_cast<int>(d_file));
}

} // namespace collect
