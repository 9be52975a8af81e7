#include "collect_lock.h"

#include "core_log.h"
#include "core_utf.h"
#include "core_wrapper.h"

#include <windows.h>

namespace collect {

// Having it open is the lock, since it is shared with nobody.
FolderLock::FolderLock(const std::string& folder) {
    core::SystemText path;
    const bool named = core::pathFromUtf8(folder + "/collect.lock", path);
    const HANDLE file = named ? CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                            OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)
                              : INVALID_HANDLE_VALUE;
    const DWORD error = named ? GetLastError() : ERROR_INVALID_NAME;
    if (file != INVALID_HANDLE_VALUE)
        d_state = State::Held;
    else if (error == ERROR_SHARING_VIOLATION)
        d_state = State::HeldByAnother;
    else
        core::logFrom(core::kChannelWarn, "collect::FolderLock", "(%s) - %s", folder,
                      core::Wrapper::systemErrorText(error));
    d_file = reinterpret_cast<intptr_t>(file);
}

FolderLock::~FolderLock() {
    if (d_state == State::Held)
        CloseHandle(reinterpret_cast<HANDLE>(d_file));
}

} // namespace collect
