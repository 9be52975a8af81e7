#include "core_crashdump_win32.h"

#include "core_crashdump.h"
#include "core_crashdump_system.h"
#include "core_wrapper.h"

#include <cxxabi.h>

#include <cstdlib>
#include <utility>

namespace core {
namespace {

// Milliseconds. A dump has as long as it makes progress.
constexpr DWORD kForDescription = 500;
constexpr DWORD kWithoutProgress = 2500;
constexpr DWORD kForDump = 120'000;
constexpr DWORD kForLog = 1000;
constexpr DWORD kForEnd = 500;

constinit detail::CrashCause cause{};
constinit detail::CrashTold told{};
constinit std::atomic<bool> dumped{false};
constinit std::atomic<bool> recordTaken{false};
constinit bool shown = false; // as the crashed thread knows

struct Helper {
    HANDLE thread = nullptr;
    HANDLE begun = nullptr;     // by the crashed thread
    HANDLE described = nullptr; // by the crashed thread
    HANDLE shown = nullptr;     // dump and line
    HANDLE delivered = nullptr; // the line, to the log's receivers, by the crashed thread
    HANDLE recorded = nullptr;
};
constinit Helper helper;

/// Takes the heap's lock from a thread that never releases it: the crashed one, if it
/// crashed inside the heap, or one that waits for it. The process ends soon.
void releaseHeap() { HeapUnlock(GetProcessHeap()); }

// ---- By the helper

void awaitDescription() {
    if (cause.describe == nullptr ||
        WaitForSingleObject(helper.described, kForDescription) == WAIT_OBJECT_0)
        return;
    releaseHeap(); // the description may wait for it
    WaitForSingleObject(helper.described, kForDescription);
}

void record() {
    if (recordTaken.exchange(true))
        return;
    SYSTEMTIME time{};
    GetLocalTime(&time);
    told.time = {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
    detail::recordCrash(told);
}

void writeEvidence() {
    awaitDescription();
    told.dump = detail::writeMinidump(cause.pointers, detail::crashing);
    dumped = true;
    detail::echoDumpLine(told);
    SetEvent(helper.shown);
    WaitForSingleObject(helper.delivered, kForLog);
    record();
    SetEvent(helper.recorded);
}

DWORD WINAPI help(void*) {
    for (;;) {
        WaitForSingleObject(helper.begun, INFINITE);
        writeEvidence();
        if (!cause.endsProcess)
            continue;
        Sleep(kForEnd);
        detail::endNow(kCrashStatus);
    }
}

// ---- By the crashed thread

uint64_t processorTimeOf(HANDLE thread) {
    FILETIME created{};
    FILETIME exited{};
    FILETIME kernel{};
    FILETIME user{};
    GetThreadTimes(thread, &created, &exited, &kernel, &user);
    return uint64_t{kernel.dwLowDateTime} + user.dwLowDateTime;
}

/// False if the helper makes no progress.
bool helperProgresses() {
    constexpr DWORD kStep = 100;
    uint64_t used = 0;
    DWORD idle = 0;
    for (DWORD waited = 0; waited < kForDump && idle < kWithoutProgress; waited += kStep) {
        if (WaitForSingleObject(helper.shown, kStep) == WAIT_OBJECT_0)
            return true;
        const uint64_t before = std::exchange(used, processorTimeOf(helper.thread));
        idle = used == before ? idle + kStep : 0;
    }
    return false;
}

bool waitForHelper() {
    if (helperProgresses())
        return true;
    if (dumped) // it hangs at standard output
        return false;
    releaseHeap(); // DbgHelp needs it
    return helperProgresses();
}

/// What the helper has not done. Without a dump there can be no record: opening the file
/// needs the heap, too.
[[noreturn]] void endWithoutHelper() {
    if (!dumped)
        told.dump = {false, ERROR_TIMEOUT};
    if (!told.echoed)
        detail::echoDumpLine(told);
    if (dumped)
        record();
    detail::endNow(kCrashStatus);
}

void awaitShown() {
    if (!waitForHelper())
        endWithoutHelper();
    shown = true;
}

void awaitRecord() {
    SetEvent(helper.delivered);
    WaitForSingleObject(helper.recorded, kForLog);
}

/// Without the guard.
void leave(const detail::CrashCause& crash) {
    if (!detail::crashNamesAreNoted())
        detail::noteCrashNames();
    detail::startDumpHelper();
    detail::crashing = GetCurrentThreadId();
    detail::showEvidence(crash);
    detail::deliverEvidence();
    detail::crashing = 0;
}

} // namespace

constinit std::atomic<DWORD> detail::crashing{0};

std::string detail::programPath() {
    constexpr size_t kLimit = 4096;
    return Wrapper::executablePath(kLimit);
}

void detail::startDumpHelper() {
    if (helper.thread != nullptr)
        return;
    for (HANDLE* event :
         {&helper.begun, &helper.described, &helper.shown, &helper.delivered, &helper.recorded})
        *event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    helper.thread = CreateThread(nullptr, 0, help, nullptr, 0, nullptr);
}

void detail::showEvidence(const CrashCause& crash) {
    cause = crash;
    told = {};
    dumped = false;
    recordTaken = false;
    shown = false;
    SetEvent(helper.begun);
    if (cause.describe != nullptr) {
        cause.describe();
        SetEvent(helper.described);
    }
    awaitShown();
}

void detail::deliverEvidence() {
    checkCrashNames();
    deliverDumpLine(told);
    awaitRecord();
}

void detail::endAfterEvidence() {
    SetEvent(helper.described);
    if (!shown)
        awaitShown();
    awaitRecord();
    endNow(kCrashStatus);
}

void detail::endNow(int status) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    std::abort();
}

long writeCrashDump(EXCEPTION_POINTERS* info) {
    leave({info, nullptr, false});
    return EXCEPTION_EXECUTE_HANDLER;
}

int32_t writeCrashDump() {
    const bool caught = abi::__cxa_current_exception_type() != nullptr;
    leave({nullptr, caught ? detail::describeException : nullptr, false});
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace core
