#include "crashing.h"

#include "core_check.h"
#include "core_guard.h"
#include "core_log.h"
#include "core_paths.h"
#include "qt_fatalmessages.h"
#include "scripted_log.h"

#include <QCoreApplication>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <thread>

// A program for crashes.py that crashes in the way its first argument names.

namespace crashing {

// Not local to this source, otherwise the compiler would know that the call is impossible.
struct Base {
    Base() {
        Base* volatile self = this; // otherwise the compiler knows the type
        self->callIt();
    }
    virtual ~Base() = default;
    [[gnu::noinline]] void callIt() { call(); } // NOLINT(clang-analyzer-cplusplus.PureVirtualCall)
    virtual void call() = 0;
};
struct Derived : Base {
    void call() override {}
};

namespace {

volatile int zero = 0;

__attribute__((noinline, no_sanitize("undefined"))) void divideByZero() { zero = 100 / zero; }

__attribute__((noinline, no_sanitize("undefined"))) void jumpToNowhere() {
    void (*volatile nowhere)() = nullptr;
    nowhere(); // NOLINT(clang-analyzer-core*)
    zero = 0;  // so that it is no tail call
}

[[gnu::noinline]] int overflowStack(int depth) {
    int (*volatile deeper)(int) = overflowStack; // otherwise the compiler inlines it
    volatile char frame[4096] = {};
    return deeper(depth + 1) + frame[depth % 4096];
}

/// Faults when only `left` bytes of the stack are left.
[[gnu::noinline]] void useUpStack(const char* end, ptrdiff_t left) {
    volatile char frame[1024] = {};
    void (*volatile deeper)(const char*, ptrdiff_t) = useUpStack;
    if (reinterpret_cast<uintptr_t>(frame) - reinterpret_cast<uintptr_t>(end) <
        static_cast<uintptr_t>(left))
        core::deliberateFault();
    deeper(end, left);
    frame[0] = frame[1];
}

struct Cleanup {
    ~Cleanup() {
        std::fputs("unwound\n", stdout);
        std::fflush(stdout);
    }
};

[[noreturn, gnu::noinline]] void throwException() { throw std::runtime_error("out of paper"); }

[[gnu::noinline]] void throwThroughCleanup() {
    const Cleanup cleanup;
    throwException();
}

[[gnu::noinline]] void throwOut() noexcept { throwThroughCleanup(); }

/// Shows what is known about the throw as soon as the crash is logged.
void throwThroughNoexcept() {
    static const test::ScriptedObserver observer({core::kChannelCrit},
                                                 [](const std::string&) { showThrow(); });
    throwOut();
}

/// An exception whose what() calls `make`.
class Worded : public std::exception {
public:
    explicit Worded(void (*make)()) : d_make(make) {}
    const char* what() const noexcept override { return d_make(), "no words"; }

private:
    void (*d_make)();
};

[[gnu::noinline]] void throwWorded(void (*make)()) { throw Worded(make); }

/// Calls `slot` from Qt's event loop.
void inSlot(void (*slot)()) {
    static int argc = 1;
    static char name[] = "crashing";
    static char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    QTimer::singleShot(0, slot);
    QCoreApplication::exec();
}

[[gnu::noinline]] void destroyJoinableThread() {
    const std::thread thread([] { sleepForEver(); });
}

/// Overwrites memory upward, and faults at its end at the latest.
__attribute__((noinline, no_sanitize("address"))) void overrun(volatile char* from,
                                                               const volatile char* end) {
    for (; from < end; ++from)
        *from = 'x';
    core::deliberateFault();
}

[[gnu::noinline]] void overrunStack() {
    volatile char bottom = 0;
    overrun(&bottom, topOfStack());
}

/// To the end of the mapped memory.
void overrunHeap() {
    overrun(static_cast<char*>(std::malloc(16)), reinterpret_cast<char*>(UINTPTR_MAX)); // NOLINT
}

void overwriteChunk() {
    const auto block = std::make_unique<char[]>(64);
    std::memset(block.get() - 16, 'x', 256); // NOLINT
    core::deliberateFault();
}

/// Crashes while another thread holds something for ever.
void whileAnotherThread(void (*holdIt)(), void (*crash)() = core::deliberateFault) {
    static std::atomic<bool> held{false};
    std::thread([holdIt] {
        holdIt();
        held = true;
        sleepForEver();
    }).detach();
    while (!held)
        std::this_thread::yield();
    crash();
}

/// Rethrows while the heap is locked, since that needs no memory, unlike a new throw.
[[gnu::noinline]] void throwWithHeapLocked() {
    try {
        throwException();
    } catch (...) {
        whileAnotherThread(lockHeap, [] { throw; });
    }
}

/// An observer that never returns keeps the log's lock.
void lockLog() {
    static std::atomic<bool> inside{false};
    std::thread([] {
        const test::ScriptedObserver observer({core::kChannelWarn}, [](const std::string&) {
            inside = true;
            sleepForEver();
        });
        core::logText(core::kChannelWarn, "now");
    }).detach();
    while (!inside)
        std::this_thread::yield();
}

void onTwoThreads() {
    static std::atomic<int> ready{0};
    const auto both = [] {
        for (++ready; ready < 2;)
            ;
        core::deliberateFault();
    };
    std::thread(both).detach();
    both();
}

/// Other threads fault one after the other while this one's fault is reported.
void againOnOthers() {
    for (int i = 0; i < 8; ++i) {
        std::thread([i] {
            std::this_thread::sleep_for(std::chrono::milliseconds(2 * i));
            core::deliberateFault();
        }).detach();
    }
    core::deliberateFault();
}

void faultOn(const std::string& line, const char* part) {
    if (line.find(part) != std::string::npos)
        core::deliberateFault();
}

void observing(const char* part, void (*crash)()) {
    static const auto watch = [part](const std::string& line) { faultOn(line, part); };
    static const test::ScriptedObserver observer({core::kChannelCrit, core::kChannelWarn}, watch);
    crash();
}

void logWarning() { core::logText(core::kChannelWarn, "now"); }

void logIntoImplementation() {
    core::MasterLogger::setImplementation(std::make_unique<test::ScriptedImpl>(
        [](const std::string& line) { faultOn(line, "now"); }));
    logWarning();
}

void hangInObserver() {
    static const test::ScriptedObserver observer({core::kChannelCrit},
                                                 [](const std::string&) { sleepForEver(); });
    core::deliberateFault();
}

void keepHistory() {
    core::MasterLogger::enableHistory(true);
    core::MasterLogger::setHistory(core::kChannelWarn, true);
    core::logText(core::kChannelWarn, "the last words");
}

/// Twenty threads log while this one crashes.
void whileOthersLog() {
    keepHistory();
    for (int i = 0; i < 20; ++i) {
        std::thread([] {
            for (;;)
                core::logText(core::kChannelWarn, std::string(40, 'a') + std::string(40, 'z'));
        }).detach();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    core::deliberateFault();
}

void crashAfterNestedRun() {
    if (core::runGuardedWith([](int, char**) { return 0; }, 0, nullptr) == 0)
        core::deliberateFault();
}

bool crashesAtExit = false;
const struct CrashAtExit {
    ~CrashAtExit() {
        if (crashesAtExit)
            core::deliberateFault();
    }
} crashAtExit;

const std::map<std::string_view, void (*)()> kCrashes = {
    {"none", [] {}},
    {"null_write", core::deliberateFault},
    {"division", divideByZero},
    {"bad_jump", jumpToNowhere},
    {"generated_code", runGeneratedCode},
    {"stack_overflow", [] { overflowStack(0); }},
    {"little_stack", [] { useUpStack(endOfStack(), 20480); }},
    {"exception", throwThroughCleanup},
    {"exception_in_slot", [] { inSlot(throwThroughCleanup); }},
    {"exception_in_noexcept", throwThroughNoexcept},
    {"what_hangs", [] { throwWorded([] { sleepForEver(); }); }},
    {"what_faults", [] { throwWorded(core::deliberateFault); }},
    {"abort", std::abort},
    {"pure_virtual", [] { Derived(); }},
    {"joinable_thread", destroyJoinableThread},
    {"fatal", [] { NS_QT::abortOnFatalMessages(), qFatal("no way on"); }},
    {"two_threads", onTwoThreads},
    {"again_on_others", againOnOthers},
    {"stack_overrun", overrunStack},
    {"heap_overrun", overrunHeap},
    {"heap_chunk", overwriteChunk},
    {"heap_locked", [] { whileAnotherThread(lockHeap); }},
    {"heap_kept", [] { lockHeap(), core::deliberateFault(); }},
    {"exception_heap_locked", throwWithHeapLocked},
    {"loader_locked", [] { whileAnotherThread(lockLoader); }},
    {"output_locked", [] { whileAnotherThread(lockOutput); }},
    {"exception_output_locked", [] { whileAnotherThread(lockOutput, throwException); }},
    {"log_locked", [] { whileAnotherThread(lockLog); }},
    {"exception_log_locked", [] { whileAnotherThread(lockLog, throwException); }},
    {"no_memory", [] { useUpMemory(), core::deliberateFault(); }},
    {"exception_no_memory", [] { useUpMemory(), throwException(); }},
    {"no_descriptors", [] { useUpDescriptors(), core::deliberateFault(); }},
    {"replaced", [] { replaceProgram(), core::deliberateFault(); }},
    {"signal_from_outside", [] { whileAnotherThread([] {}, signalFromOutside); }},
    {"observer_faults", [] { observing("minidump", throwException); }},
    {"observer_hangs", hangInObserver},
    {"in_observer", [] { observing("now", logWarning); }},
    {"in_implementation", logIntoImplementation},
    {"in_check", [] { observing("GASSERT", [] { CHECKF(false); }); }},
    {"full_pipe", [] { fillOutput(), core::deliberateFault(); }},
    {"history", [] { keepHistory(), core::deliberateFault(); }},
    {"others_log", whileOthersLog},
    {"nested", crashAfterNestedRun},
    {"on_another_thread", [] { std::thread(core::deliberateFault).join(); }},
    {"after_the_guard", [] { crashesAtExit = true; }},
};

int run(int, char** argv) {
    core::Paths::setDefaultPaths();
    if (argv[1] == std::string_view("raise"))
        return std::raise(std::atoi(argv[2]));
    kCrashes.at(argv[1])();
    return 0;
}

} // namespace
} // namespace crashing

int main(int argc, char** argv) {
    const int status = core::runGuardedWith(crashing::run, argc, argv);
    if (status == core::kCrashStatus)
        core::endProcess(status);
    return status;
}
