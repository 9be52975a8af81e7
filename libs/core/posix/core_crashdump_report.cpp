#include "core_crashdump_system.h"
#include "core_timespec.h"
#include "internal/core_historycopy.h"

#include <cxxabi.h>
#include <fcntl.h>
#include <signal.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstring>
#include <iterator>
#include <typeinfo>

namespace core {
namespace {

// Time limits for the pieces of a report, in milliseconds; far more than they need.
constexpr int kForLittle = 300;
constexpr int kForThreads = 600;
constexpr int kForNames = 1500;

// The order of the report: the safest comes first.
constinit detail::ReportFile file;
constinit detail::CrashStack crashed;

using detail::ReportLine;

/// A piece of the report.
template <typename Piece>
void attemptPiece(int milliseconds, Piece piece) {
    if (!detail::attempt(milliseconds, piece))
        file.write("    (cut short)\n");
}

void addTime(ReportLine& line, const CivilTime& time) {
    line << time.year;
    (line << "-").addTwoDigits(time.month);
    (line << "-").addTwoDigits(time.day);
    (line << " ").addTwoDigits(time.hour);
    (line << ":").addTwoDigits(time.minute);
    (line << ":").addTwoDigits(time.second);
}

void writeHead() {
    ReportLine line;
    line << "Crash report, version " << detail::crashNames().tag.view() << "\nProgram "
         << detail::crashNames().program.view() << "\nTime ";
    addTime(line, utcCivilTime(now()));
    line << " UTC\nProcess " << getpid() << ", thread " << gettid() << "\n";
    file.write(line);
}

void writeSignal(const siginfo_t& info) {
    const char* const name = sigabbrev_np(info.si_signo);
    ReportLine line;
    line << "Signal " << info.si_signo << " (SIG" << (name != nullptr ? name : "?") << "), code "
         << info.si_code;
    if (info.si_code <= 0)
        line << ", sent by process " << info.si_pid;
    else
        (line << ", address ").addHex(reinterpret_cast<uintptr_t>(info.si_addr));
    file.write(line << "\n");
}

#if defined(__x86_64__)

void writeRegisters(const ucontext_t& context) {
    constexpr std::string_view kNames[] = {"r8",     "r9",  "r10",    "r11",     "r12", "r13",
                                           "r14",    "r15", "rdi",    "rsi",     "rbp", "rbx",
                                           "rdx",    "rax", "rcx",    "rsp",     "rip", "efl",
                                           "csgsfs", "err", "trapno", "oldmask", "cr2"};
    ReportLine line;
    line << "\nRegisters\n";
    for (size_t i = 0; i < std::size(kNames); ++i)
        (line << "    " << kNames[i] << " ")
                .addHex(static_cast<uint64_t>(context.uc_mcontext.gregs[i]))
            << "\n";
    file.write(line);
}

#else

void writeRegisters(const ucontext_t&) {}

#endif

void writeMemoryMap() {
    file.write("\nMemory map\n");
    const int map = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    std::array<char, 4096> buffer;
    for (ssize_t size = 0; (size = ::read(map, buffer.data(), buffer.size())) > 0;)
        file.write({buffer.data(), static_cast<size_t>(size)});
    ::close(map);
}

/// The oldest first. Those that are being written are left out.
void writeHistory() {
    detail::HistoryLine kept{};
    if (!detail::readHistoryCopy(0, kept) && !detail::readHistoryCopy(1, kept))
        return;
    file.write("\nLast lines of the log\n");
    for (size_t age = detail::kHistoryCopyLines; age-- > 0;) {
        if (!detail::readHistoryCopy(age, kept))
            continue;
        ReportLine line;
        addTime(line << "    ", utcCivilTime(kept.time));
        line << " " << std::string_view(kept.channel.data(), kept.channelSize) << " "
             << std::string_view(kept.text.data(), kept.textSize) << "\n";
        file.write(line);
    }
}

// ---- Exceptions of C++

constinit detail::FixedText<512> exceptionType;
constinit detail::FixedText<4096> exceptionText;

void writeException() {
    exceptionType.clear();
    exceptionText.clear();
    exceptionType << abi::__cxa_current_exception_type()->name();
    detail::attempt(kForLittle, [] { detail::addExceptionText(exceptionText); });
    detail::attempt(kForLittle, [] { detail::demangleType(exceptionType); });
    ReportLine line;
    line << "C++ exception " << exceptionType.view() << exceptionText.view() << "\n";
    file.write(line);
}

// ---- Its pieces

void writeCause(const detail::CrashCause& cause) {
    if (abi::__cxa_current_exception_type() != nullptr && (cause.terminated || !cause.info))
        writeException();
    else if (cause.info != nullptr)
        writeSignal(*static_cast<const siginfo_t*>(cause.info));
}

/// The crash's own stack: where the exception was thrown, where the fault was, or here.
void walkCrash(const detail::CrashCause& cause, const void* here) {
    crashed.thread = gettid();
    crashed.count = 0;
    crashed.top = 0;
    const bool thrown = cause.terminated || cause.info == nullptr;
    const detail::CrashStack* const place =
        thrown ? detail::stackOfThrow(detail::currentException()) : nullptr;
    if (place != nullptr) {
        crashed.count = place->count;
        crashed.frames = place->frames;
        crashed.top = place->top;
    } else if (cause.context != nullptr) {
        detail::walkInterrupted(crashed, cause.context);
    } else {
        detail::walkFrom(crashed, here);
    }
}

void writeAddresses(const detail::CrashCause& cause, const void* here) {
    // If the walk faults, what it has found is written all the same.
    const bool whole = detail::attempt(kForLittle, [&] { walkCrash(cause, here); });
    attemptPiece(kForLittle, [] { detail::writeAddresses(file, crashed); });
    if (!whole)
        file.write("    (cut short)\n");
    attemptPiece(kForLittle, [] { detail::writeModules(file); });
}

const detail::OtherStacks* others = nullptr;

void writeOtherAddresses() {
    others = &detail::askOtherThreads(kForThreads / 2);
    for (size_t i = 0; i < others->count; ++i) {
        const detail::CrashStack& stack = others->stacks[i];
        detail::writeAddresses(file, stack);
        if (stack.answer != detail::CrashStack::Answer::Done)
            file.write("    (no answer)\n");
    }
}

void writeAllNames() {
    detail::writeNames(file, crashed);
    for (size_t i = 0; others != nullptr && i < others->count; ++i)
        detail::writeNames(file, others->stacks[i]);
}

} // namespace

[[gnu::noinline]] void detail::writeReport(const CrashCause& cause, DumpResult& result) {
    const void* const here = __builtin_return_address(0);
    others = nullptr;
    detail::attempt(kForLittle, [] { file.open(); });
    attemptPiece(kForLittle, writeHead);
    writeCause(cause);
    if (cause.context != nullptr)
        attemptPiece(kForLittle,
                     [&] { writeRegisters(*static_cast<const ucontext_t*>(cause.context)); });
    core::writeAddresses(cause, here);
    attemptPiece(kForThreads, writeOtherAddresses);
    attemptPiece(kForLittle, writeHistory);
    attemptPiece(kForLittle, writeMemoryMap);
    attemptPiece(kForNames, writeAllNames);
    file.write("\nEnd of report\n");
    detail::attempt(kForLittle, [&] { file.finish(result); });
}

} // namespace core
