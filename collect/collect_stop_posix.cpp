#include "collect_stop.h"

#include "kern_pollloop.h"

#include <signal.h>

#include <atomic>

namespace collect {
namespace {

constinit std::atomic<kern::PollLoop*> current{nullptr};
static_assert(std::atomic<kern::PollLoop*>::is_always_lock_free);

void stopCurrent(int) {
    if (kern::PollLoop* const loop = current)
        loop->stop();
}

void onStop(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

} // namespace

StopRequests::StopRequests(kern::PollLoop& loop) {
    current = &loop;
    onStop(stopCurrent);
}

StopRequests::~StopRequests() {
    onStop(SIG_DFL);
    current = nullptr;
}

} // namespace collect
