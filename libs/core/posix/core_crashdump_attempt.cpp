#include "core_crashdump_system.h"

#include <setjmp.h>
#include <signal.h>
#include <sys/time.h>
#include <time.h>

#include <algorithm>

namespace core {
namespace {

constexpr int kShortest = 50; // milliseconds for each attempt, however late it is

constinit sigjmp_buf resume{};
constinit volatile sig_atomic_t running = 0;
constinit int64_t deadline = 0;

int64_t millisecondsNow() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
}

/// 0: no limit. Repeats, in case a signal is lost.
void alarmIn(int64_t milliseconds) {
    itimerval timer{};
    timer.it_value = {milliseconds / 1000, milliseconds % 1000 * 1000};
    timer.it_interval = timer.it_value;
    setitimer(ITIMER_REAL, &timer, nullptr);
}

void end() {
    running = 0;
    alarmIn(0);
}

} // namespace

void detail::startCrashClock(int milliseconds) { deadline = millisecondsNow() + milliseconds; }

bool detail::runAttempt(int milliseconds, void (*step)(void*), void* argument) {
    if (sigsetjmp(resume, 1) != 0) {
        end();
        return false;
    }
    running = 1;
    const int64_t left = std::max<int64_t>(deadline - millisecondsNow(), kShortest);
    alarmIn(std::min<int64_t>(milliseconds, left));
    step(argument);
    end();
    return true;
}

void detail::cutAttempt() {
    if (running == 0)
        return;
    running = 0;
    siglongjmp(resume, 1);
}

} // namespace core
