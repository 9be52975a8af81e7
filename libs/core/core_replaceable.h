#pragma once

#include <functional>
#include <latch>
#include <memory>
#include <utility>

/// For objects of somebody else's code that threads call while others replace them.
namespace core {

/// Such code is running on this thread; visits may nest.
///
/// Who waited for others inside of a visit could wait for itself, or two for each other.
/// So what this thread replaces meanwhile is destroyed when its outermost visit ends.
class Visit {
public:
    Visit();
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    /// Whether this thread is inside of one.
    static bool active();

    /// Runs `work` when this thread is inside of none: now, or at the end of the outermost.
    static void runOutside(std::function<void()> work);
};

/// Owns an object that can be lent to its callers.
template <typename T>
class Lendable {
public:
    explicit Lendable(std::unique_ptr<T> object)
        : d_returned(std::make_shared<std::latch>(1)),
          d_object(std::move(object)),
          d_lent(d_object.get(), [returned = d_returned](T*) { returned->count_down(); }) {}

    /// For the time of a call. Not after `destroy`.
    std::shared_ptr<T> lend() const { return d_lent; }

    /// Waits until nobody has it any more, then destroys the object. Outside of visits,
    /// with no lock held.
    void destroy() {
        d_lent.reset();
        d_returned->wait();
        d_object.reset();
    }

private:
    std::shared_ptr<std::latch> d_returned; // outlives the last lender's count
    std::unique_ptr<T> d_object;
    std::shared_ptr<T> d_lent; // its last copy does not destroy, but counts down
};

} // namespace core
