#include "core_crashdump_system.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace core::detail {
namespace {

constexpr int kFramePointer = 6; // rbp, as debug information numbers it
constexpr int kMaxSteps = 16;    // through code that has no unwinding information

struct Walk {
    CrashStack& stack;
    uintptr_t first;    // where it begins; 0: at the place of the signal
    bool begun = false; // what lies before it is the walk's and the handler's own
    uintptr_t lastFramePointer = 0;
};

_Unwind_Reason_Code visitFrame(_Unwind_Context* context, void* argument) {
    auto& walk = *static_cast<Walk*>(argument);
    int interrupted = 0;
    const uintptr_t address = _Unwind_GetIPInfo(context, &interrupted);
    const bool isFirst = walk.first != 0 ? address == walk.first : interrupted != 0;
    if (isFirst && !walk.begun && walk.stack.top == 0)
        walk.stack.top = _Unwind_GetCFA(context);
    walk.begun = walk.begun || isFirst;
    if (address == 0 || walk.stack.count == CrashStack::kMaxFrames)
        return _URC_END_OF_STACK;
    // A return address may lie behind the end of the function that called.
    if (walk.begun)
        walk.stack.add(interrupted != 0 ? address : address - 1);
#if defined(__x86_64__)
    walk.lastFramePointer = _Unwind_GetGR(context, kFramePointer);
#endif
    return _URC_NO_REASON;
}

/// One step outward by a frame pointer, which our own code and most generated code keep.
bool stepByFramePointer(uintptr_t& framePointer, uintptr_t& address) {
    std::array<uintptr_t, 2> frame{}; // the caller's frame pointer, the return address
    if (!readMemory(framePointer, frame.data(), sizeof frame) || frame[0] <= framePointer ||
        frame[1] == 0)
        return false;
    framePointer = frame[0];
    address = frame[1] - 1;
    return true;
}

/// By the compiler's own unwinder, which also knows the functions of the system's libraries,
/// which keep no frame pointer; where it knows nothing, as in generated code, by those.
void walkOn(Walk walk) {
    _Unwind_Backtrace(visitFrame, &walk);
    CrashStack& stack = walk.stack;
    if (stack.count == 0 || isCode(stack.frames[stack.count - 1]))
        return;
    uintptr_t address = 0;
    while (stack.count < CrashStack::kMaxFrames &&
           stepByFramePointer(walk.lastFramePointer, address))
        stack.add(address);
}

#if defined(__x86_64__)

/// One step outward where the signal's place is in no module: after a call to nowhere and in
/// a function without a frame the return address lies on top of the stack.
bool stepOut(uintptr_t& address, uintptr_t& stackPointer, uintptr_t& framePointer) {
    uintptr_t top = 0;
    if (readMemory(stackPointer, &top, sizeof top) && isCode(top)) {
        address = top - 1;
        stackPointer += sizeof top;
        return true;
    }
    const uintptr_t frame = framePointer;
    if (frame < stackPointer || !stepByFramePointer(framePointer, address))
        return false;
    stackPointer = frame + 2 * sizeof(uintptr_t);
    return true;
}

void leaveUnknownCode(CrashStack& stack, ucontext_t& context) {
    auto& registers = context.uc_mcontext.gregs;
    auto address = static_cast<uintptr_t>(registers[REG_RIP]);
    auto stackPointer = static_cast<uintptr_t>(registers[REG_RSP]);
    auto framePointer = static_cast<uintptr_t>(registers[REG_RBP]);
    stack.top = stackPointer;
    for (int steps = 0; steps < kMaxSteps && !isCode(address); ++steps) {
        stack.add(address);
        if (!stepOut(address, stackPointer, framePointer))
            return;
    }
    registers[REG_RIP] = static_cast<greg_t>(address);
    registers[REG_RSP] = static_cast<greg_t>(stackPointer);
    registers[REG_RBP] = static_cast<greg_t>(framePointer);
}

#else

void leaveUnknownCode(CrashStack&, ucontext_t&) {}

#endif

// ---- Other threads

constinit OtherStacks others;

void answer(int, siginfo_t*, void* context) {
    const pid_t self = ::gettid();
    for (CrashStack& stack : others.stacks) {
        auto asked = CrashStack::Answer::Asked;
        if (stack.thread != self ||
            !stack.answer.compare_exchange_strong(asked, CrashStack::Answer::Begun))
            continue;
        walkInterrupted(stack, context);
        stack.answer = CrashStack::Answer::Done;
    }
}

/// The other threads of this process, as the system lists them, without its library's
/// function for it, which allocates.
void listThreads() {
    constexpr size_t kNameOffset = 19; // of an entry: inode, offset, length, type, name
    constexpr size_t kLengthOffset = 16;
    others.count = 0;
    const int folder = ::open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    alignas(8) std::array<char, 4096> entries;
    for (long size = 0;
         (size = ::syscall(SYS_getdents64, folder, entries.data(), entries.size())) > 0;) {
        uint16_t length = 0;
        for (const char* entry = entries.data(); entry < entries.data() + size; entry += length) {
            std::memcpy(&length, entry + kLengthOffset, sizeof length);
            const std::string_view name(entry + kNameOffset);
            pid_t thread = 0;
            std::from_chars(name.data(), name.data() + name.size(), thread);
            if (thread != 0 && thread != ::gettid() && others.count < OtherStacks::kMaxThreads)
                others.stacks[others.count++].thread = thread;
        }
    }
    ::close(folder);
}

bool allAnswered() {
    const CrashStack* const first = others.stacks.data();
    return std::all_of(first, first + others.count, [](const CrashStack& stack) {
        return stack.answer == CrashStack::Answer::Done;
    });
}

} // namespace

void walkInterrupted(CrashStack& stack, void* context) {
    leaveUnknownCode(stack, *static_cast<ucontext_t*>(context));
    walkOn({stack, 0});
}

void walkFrom(CrashStack& stack, const void* first) {
    walkOn({stack, reinterpret_cast<uintptr_t>(first)});
}

const OtherStacks& askOtherThreads(int milliseconds) {
    const int question = SIGRTMAX;
    struct sigaction action {};
    action.sa_sigaction = answer;
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
    ::sigaction(question, &action, nullptr);
    listThreads();
    for (size_t i = 0; i < others.count; ++i) {
        CrashStack& stack = others.stacks[i];
        stack.count = 0;
        stack.top = 0;
        stack.answer = CrashStack::Answer::Asked;
        ::syscall(SYS_tgkill, ::getpid(), stack.thread, question);
    }
    const timespec pause{0, 1'000'000};
    for (int waited = 0; waited < milliseconds && !allAnswered(); ++waited)
        ::nanosleep(&pause, nullptr);
    return others;
}

} // namespace core::detail
