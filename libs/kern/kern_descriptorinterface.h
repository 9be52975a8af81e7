#pragma once

#include <cstdint>

namespace kern {

/// Base class of objects that wait for descriptors (sockets, handles), which the
/// DescriptorManager of the thread watches:
///
///     class Receiver final : public kern::DescriptorInterface {
///         bool start() { return watchRead(d_socket); }
///         void readReady(intptr_t) override { ... }
///     };
///
/// An object lives on one thread, within the time in which that thread has a manager.
/// Ending watches and destroying the object are allowed in its callbacks. Nothing here
/// throws or locks.
class DescriptorInterface {
public:
    DescriptorInterface(const DescriptorInterface&) = delete;
    DescriptorInterface& operator=(const DescriptorInterface&) = delete;

    /// Called, again and again as long as it is so, when the descriptor can be read or
    /// has failed, which the next read tells. A descriptor that was watched again under
    /// the same number may be called for nothing, so it should not block.
    virtual void readReady(intptr_t descriptor) = 0;
    /// The same for writing; does nothing by default.
    virtual void writeReady(intptr_t descriptor);

protected:
    DescriptorInterface() = default;

    /// Ends the watches that are left. Objects are not destroyed through this class.
    ~DescriptorInterface();

    /// False, after a failed check, when the thread has no manager or it refuses.
    bool watchRead(intptr_t descriptor);
    bool watchWrite(intptr_t descriptor);

    /// Nothing when the thread has no manager, and with it no watches.
    void unwatchRead(intptr_t descriptor);
    void unwatchWrite(intptr_t descriptor);
};

} // namespace kern
