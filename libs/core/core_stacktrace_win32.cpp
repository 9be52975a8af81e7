#include "core_log.h"
#include "core_stacktrace.h"
#include "core_wrapper.h"
#include "internal/core_handle_win32.h"
#include "internal/core_stacktrace_lines.h"

#include <windows.h>

#include <dbghelp.h>
#include <tlhelp32.h>

namespace core {
namespace {

constexpr DWORD kPathLimit = 1024;
constexpr DWORD kNameLimit = 1024;
constexpr DWORD kSymbolHeader = 32;
static_assert(kSymbolHeader == sizeof(IMAGEHLP_SYMBOL64));
static_assert(sizeof(IMAGEHLP_MODULE64) == 1680);
static_assert(sizeof(MODULEENTRY32) == 548);
static_assert(CONTEXT_FULL == 0x10007);

/// Text that a system call writes, given a buffer and its size; it is not known when the
/// call fails or the buffer is too small.
template <typename Call>
std::string systemText(Call call) {
    std::string text(kPathLimit, '\0');
    const DWORD length = call(text.data(), kPathLimit);
    text.resize(length <= kPathLimit ? length : 0);
    return text;
}

std::string searchPath() {
    return detail::symbolSearchPath(
        systemText([](char* text, DWORD size) { return GetCurrentDirectoryA(size, text); }),
        Wrapper::executablePath(kPathLimit), systemText([](char* text, DWORD size) {
            return GetEnvironmentVariableA("SYSTEMROOT", text, size);
        }));
}

std::string undecorated(const char* name) {
    std::string text(kNameLimit, '\0');
    for (const DWORD form : {UNDNAME_NAME_ONLY, UNDNAME_COMPLETE}) {
        if (const DWORD length = UnDecorateSymbolName(name, text.data(), kNameLimit, form)) {
            text.resize(length);
            return text;
        }
    }
    return name;
}

/// Looks up what is known of addresses; one symbol buffer serves them all.
class Lookup {
public:
    explicit Lookup(HANDLE process) : d_process(process) {
        d_symbol.header.SizeOfStruct = kSymbolHeader;
        d_symbol.header.MaxNameLength = kNameLimit;
    }

    StackFrame frameAt(DWORD64 address) {
        StackFrame frame;
        findFunction(address, frame);
        findLine(address, frame);
        findModule(address, frame);
        return frame;
    }

private:
    void findFunction(DWORD64 address, StackFrame& frame) {
        DWORD64 displacement = 0;
        if (SymGetSymFromAddr64(d_process, address, &displacement, &d_symbol.header))
            frame.function = undecorated(d_symbol.header.Name) + "()";
        else
            detail::logNoSymbol(address, GetLastError());
    }

    void findLine(DWORD64 address, StackFrame& frame) {
        DWORD displacement = 0;
        IMAGEHLP_LINE64 line{};
        line.SizeOfStruct = sizeof line;
        if (!SymGetLineFromAddr64(d_process, address, &displacement, &line))
            return;
        frame.line = line.LineNumber;
        frame.sourceFile = line.FileName;
    }

    void findModule(DWORD64 address, StackFrame& frame) {
        IMAGEHLP_MODULE64 module{};
        module.SizeOfStruct = sizeof module;
        if (!SymGetModuleInfo64(d_process, address, &module)) {
            detail::logNoModuleInfo();
            return;
        }
        frame.imageName = module.ImageName;
        const bool hasPdb = *module.LoadedPdbName != '\0';
        frame.symbolFileName = hasPdb ? module.LoadedPdbName : module.LoadedImageName;
    }

    HANDLE d_process;
    union {
        IMAGEHLP_SYMBOL64 header;
        char bytes[kSymbolHeader + kNameLimit];
    } d_symbol{};
};

/// Whether the walk may use the frame it has come to.
bool usable(const STACKFRAME64& frame) {
    constexpr const char* kGetStack = "core::StackTrace::getStack";
    if (frame.AddrPC.Offset == frame.AddrReturn.Offset) {
        logFrom(kChannelWarn, kGetStack, "endless callstack");
        return false;
    }
    if (frame.AddrPC.Offset == 0)
        logFrom(kChannelWarn, kGetStack, "offset==0");
    return frame.AddrPC.Offset != 0;
}

void walk(HANDLE process, CONTEXT& context, std::vector<StackFrame>& frames, size_t maxFrames) {
    STACKFRAME64 frame{};
    frame.AddrPC = {context.Eip, 0, AddrModeFlat};
    frame.AddrFrame = {context.Ebp, 0, AddrModeFlat};
    frame.AddrStack = {context.Esp, 0, AddrModeFlat};
    Lookup lookup(process);
    while (StackWalk64(IMAGE_FILE_MACHINE_I386, process, GetCurrentThread(), &frame, &context,
                       nullptr, SymFunctionTableAccess64, SymGetModuleBase64, nullptr) &&
           frames.size() < maxFrames && usable(frame)) {
        frames.push_back(lookup.frameAt(frame.AddrPC.Offset));
        if (frame.AddrReturn.Offset == 0)
            break;
    }
}

} // namespace

std::string detail::symbolSearchPath(const std::string& currentFolder,
                                     const std::string& executable, const std::string& systemRoot) {
    std::string path;
    if (!currentFolder.empty())
        path += currentFolder + ';';
    const std::string folder = executable.substr(0, executable.find_last_of("\\/:"));
    if (!folder.empty() && folder != currentFolder)
        path += folder + ';';
    if (!folder.empty())
        path += folder + "\\symbols;";
    if (!systemRoot.empty())
        path += systemRoot + ';' + systemRoot + "\\system32;";
    return path;
}

StackTrace::StackTrace() {
    const HANDLE process = GetCurrentProcess();
    const std::string path = searchPath();
    if (!SymInitialize(process, path.c_str(), FALSE)) {
        logFrom(kChannelNorm, "core::StackTrace::StackTrace",
                "failed to initialise symbols from %s", path);
        return;
    }
    d_process = process;
    d_processId = GetCurrentProcessId();
    SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES | SYMOPT_FAIL_CRITICAL_ERRORS);
    char effectivePath[kPathLimit];
    SymGetSearchPath(process, effectivePath, kPathLimit);
}

StackTrace::~StackTrace() {
    if (d_process != nullptr)
        SymCleanup(d_process);
}

bool StackTrace::loadModule(void* process, const std::string& image, const std::string& module,
                            uint64_t base, uint32_t size) {
    if (SymLoadModule64(process, nullptr, image.c_str(), module.c_str(), base, size) != 0 ||
        GetLastError() == ERROR_SUCCESS)
        return true;
    detail::logNoModule(image, module, base, size);
    return false;
}

void StackTrace::loadModules() {
    if (d_modulesLoaded)
        return;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0));
    if (snapshot.isValid()) {
        MODULEENTRY32 entry{};
        entry.dwSize = sizeof entry;
        for (BOOL found = Module32First(snapshot.get(), &entry); found;
             found = Module32Next(snapshot.get(), &entry)) {
            // Widened with its sign, as the engine's own conversion of pointers does.
            const auto base = reinterpret_cast<intptr_t>(entry.modBaseAddr);
            loadModule(d_process, entry.szExePath, entry.szModule,
                       static_cast<uint64_t>(static_cast<int64_t>(base)), entry.modBaseSize);
        }
    }
    d_modulesLoaded = true;
}

[[gnu::noinline]] bool StackTrace::getStack(std::vector<StackFrame>& frames, unsigned maxFrames) {
    if (d_process == nullptr) {
        logAt(kChannelWarn, detail::kNoSymbolEngine);
        return false;
    }
    loadModules();
    CONTEXT context{};
    context.ContextFlags = CONTEXT_FULL;
    // The system's own capture yields the caller's registers, which would lose a frame.
    asm volatile("0: movl $0b, %0\n\tmovl %%ebp, %1\n\tmovl %%esp, %2"
                 : "=m"(context.Eip), "=m"(context.Ebp), "=m"(context.Esp));
    walk(d_process, context, frames, maxFrames);
    return true;
}

} // namespace core
