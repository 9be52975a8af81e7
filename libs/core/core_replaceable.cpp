#include "internal/core_replaceable.h"

namespace core {
namespace {

struct Delayed {
    std::function<void()> work;
    Delayed* next;
};

// Plain data without a destructor, since threads and the process may log to their very end.
struct Visits {
    int depth;
    Delayed* delayed; // the latest first
};
constinit thread_local Visits visits{0, nullptr};

} // namespace

Visit::Visit() { ++visits.depth; }

Visit::~Visit() {
    if (--visits.depth != 0)
        return;
    while (visits.delayed != nullptr) { // what runs may replace, and so delay, more
        const std::unique_ptr<Delayed> first(visits.delayed);
        visits.delayed = first->next;
        first->work();
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

void Visit::runOutside(std::function<void()> work) {
    if (active())
        visits.delayed = new Delayed{std::move(work), visits.delayed};
    else
        work();
}

} // namespace core
