#include "internal/core_replaceable.h"

namespace core {
namespace {

// Plain data without a destructor, since threads and the process may log to their very end.
struct Visits {
    int depth;
    Visit::Work* delayed; // owned; the latest first
};
constinit thread_local Visits visits{0, nullptr};

} // namespace

Visit::Visit() { ++visits.depth; }

Visit::~Visit() {
    if (--visits.depth != 0)
        return;
    while (visits.delayed != nullptr) { // what runs may replace, and so delay, more
        const std::unique_ptr<Work> first(visits.delayed);
        visits.delayed = first->d_next.release();
        first->run();
    }
}

void Signal::set() {
    const std::lock_guard lock(d_mutex);
    d_set = true;
    d_changed.notify_all();
}

void Signal::wait() {
    std::unique_lock lock(d_mutex);
    d_changed.wait(lock, [this] { return d_set; });
}

bool Visit::active() { return visits.depth != 0; }

void Visit::runOutside(std::unique_ptr<Work> work) {
    if (!active()) {
        work->run();
        return;
    }
    work->d_next.reset(visits.delayed);
    visits.delayed = work.release();
}

} // namespace core
