#include "collect_stop.h"

#include "kern_pollloop.h"

#include <windows.h>

#include <condition_variable>
#include <mutex>

namespace collect {
namespace {

// The system calls the handler on a thread of its own.
std::mutex mutex;
std::condition_variable gone;
kern::PollLoop* current = nullptr;

BOOL WINAPI stopCurrent(DWORD event) {
    std::unique_lock lock(mutex);
    if (current != nullptr)
        current->stop();
    // After these the system ends the program as soon as the handler returns.
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT)
        gone.wait(lock, [] { return current == nullptr; });
    return TRUE;
}

} // namespace

StopRequests::StopRequests(kern::PollLoop& loop) {
    {
        const std::lock_guard lock(mutex);
        current = &loop;
    }
    SetConsoleCtrlHandler(stopCurrent, TRUE);
}

StopRequests::~StopRequests() {
    {
        const std::lock_guard lock(mutex);
        current = nullptr;
    }
    gone.notify_all();
    SetConsoleCtrlHandler(stopCurrent, FALSE);
}

} // namespace collect
