#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

/// For users' objects that some threads call while others replace them.
namespace core {

/// Marks that this thread runs the code of such an object; visits may nest.
///
/// Waiting for others inside a visit could deadlock, so what this thread replaces
/// meanwhile is destroyed when its outermost visit ends.
class Visit {
public:
    Visit();
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    /// Whether this thread is inside a visit.
    static bool active();

    /// Something to do later.
    class Work {
    public:
        Work() = default;
        virtual ~Work() = default;
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;
        virtual void run() = 0;

    private:
        friend class Visit;
        std::unique_ptr<Work> d_next;
    };

    /// Runs `work` when this thread is inside no visit: now, or at the end of the
    /// outermost.
    static void runOutside(std::unique_ptr<Work> work);
};

/// An event that happens once. Not std::latch, whose waiter slept on under Wine.
class Signal {
public:
    void set();
    void wait();

private:
    std::mutex d_mutex;
    std::condition_variable d_changed;
    bool d_set = false;
};

/// Owns an object that can be lent to its callers.
template <typename T>
class Lendable {
public:
    explicit Lendable(std::unique_ptr<T> object)
        : d_returned(std::make_shared<Signal>()),
          d_object(std::move(object)),
          d_lent(d_object.get(), [returned = d_returned](T*) { returned->set(); }) {}

    /// For the time of a call. Not after `destroy`.
    std::shared_ptr<T> lend() const { return d_lent; }

    /// Waits until nobody uses the object any more, then destroys it. Outside of visits,
    /// with no lock held.
    void destroy() {
        d_lent.reset();
        d_returned->wait();
        d_object.reset();
    }

private:
    std::shared_ptr<Signal> d_returned; // outlives who sets it
    std::unique_ptr<T> d_object;
    std::shared_ptr<T> d_lent; // its last copy does not destroy, but sets the signal
};

} // namespace core
