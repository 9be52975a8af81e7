#pragma once

namespace kern {
class PollLoop;
}

namespace collect {

/// While it lives, what would end the program stops the loop instead: Ctrl-C, the system's
/// shutdown and, on Linux, SIGTERM. On Windows the system then waits until the object is
/// gone. One at a time.
class StopRequests {
public:
    explicit StopRequests(kern::PollLoop& loop);
    ~StopRequests();
    StopRequests(const StopRequests&) = delete;
    StopRequests& operator=(const StopRequests&) = delete;
};

} // namespace collect
