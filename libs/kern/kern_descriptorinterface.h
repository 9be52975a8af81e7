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
/// An object lives on one thread, while that thread has a manager. Callbacks may end
/// watches and destroy the object. Nothing here throws or locks.
class DescriptorInterface {
public:
    DescriptorInterface(const DescriptorInterface&) = delete;
    DescriptorInterface& operator=(const DescriptorInterface&) = delete;

    /// Called again and again while the descriptor can be read or has failed, which the
    /// next read tells. May be called in vain when a descriptor was closed and its number
    /// watched again, so it should not block.
    virtual void readReady(intptr_t descriptor) = 0;
    /// The same for writing; does nothing by default.
    virtual void writeReady(intptr_t descriptor);

protected:
    DescriptorInterface() = default;

    /// Ends the remaining watches. Objects are not destroyed through this class.
    ~DescriptorInterface();

    /// False, after a failed check, when the thread has no manager or the manager refuses.
    bool watchRead(intptr_t descriptor);
    bool watchWrite(intptr_t descriptor);

    /// Does nothing when the thread has no manager, and so no watches.
    void unwatchRead(intptr_t descriptor);
    void unwatchWrite(intptr_t descriptor);
};

} // namespace kern
