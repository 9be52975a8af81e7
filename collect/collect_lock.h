#pragma once

#include <cstdint>
#include <string>

namespace collect {

/// Reserves a folder for one collector: while an object holds the file collect.lock in it,
/// no other object can, in this process or another. The system releases the lock however a
/// process ends; the file, which is empty, stays.
class FolderLock {
public:
    /// The folder must exist. Failures, other than that another holds it, are logged on
    /// WARN.
    explicit FolderLock(const std::string& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    enum class State : uint8_t { Held, HeldByAnother, Failed };
    State state() const { return d_state; }

private:
    intptr_t d_file = -1;
    State d_state = State::Failed;
};

} // namespace collect
