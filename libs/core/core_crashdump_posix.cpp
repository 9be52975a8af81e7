#include "core_crashdump_calls.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "core_timespec.h"

#include <absl/debugging/symbolize.h>
#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <signal.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>
#include <unwind.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>

namespace core {
namespace {

constexpr size_t kNameSize = 512;
constexpr unsigned kMaxFrames = 100;

using Line = detail::FixedText<2048>;

class ReportFile {
public:
    ReportFile(detail::DumpPlace place, detail::DumpResult& result) {
        place.folder.replace('\\', '/');
        place.file.replace('\\', '/');
        ::mkdir(place.folder.c_str(), S_IRWXU | S_IRWXG | S_IRWXO);
        d_file =
            ::open(place.file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
        result = {d_file >= 0, static_cast<uint32_t>(errno)};
    }
    ~ReportFile() {
        if (d_file >= 0)
            ::close(d_file);
    }
    ReportFile(const ReportFile&) = delete;
    ReportFile& operator=(const ReportFile&) = delete;

    /// What a full disk cuts off is lost; the beginning says enough.
    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t written = ::write(d_file, text.data(), text.size());
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                return;
            text.remove_prefix(static_cast<size_t>(written));
        }
    }
    void write(const Line& line) const { write(line.view()); }

private:
    int d_file = -1;
};

detail::DumpPlace reportPlace() {
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    const std::string_view path(buffer.data(), length > 0 ? static_cast<size_t>(length) : 0);
    return detail::dumpPlace(path.substr(path.rfind('/') + 1));
}

Line& addTwoDigits(Line& line, int32_t number) {
    return line << (number < 10 ? "0" : "") << number;
}

void writeHead(const ReportFile& file) {
    const CivilTime time = utcCivilTime(now());
    Line line;
    line << "Crash report, version " << dumpVersionTag() << "\nTime ";
    line << time.year;
    addTwoDigits(line << "-", time.month);
    addTwoDigits(line << "-", time.day);
    addTwoDigits(line << " ", time.hour);
    addTwoDigits(line << ":", time.minute);
    addTwoDigits(line << ":", time.second);
    line << " UTC\nProcess " << getpid() << ", thread " << gettid() << "\n";
    file.write(line);
}

void writeSignal(const ReportFile& file, const siginfo_t& info) {
    const char* const name = sigabbrev_np(info.si_signo);
    Line line;
    line << "Signal " << info.si_signo << " (SIG" << (name != nullptr ? name : "?") << "), code "
         << info.si_code;
    if (info.si_code <= 0)
        line << ", sent by process " << info.si_pid;
    else
        (line << ", address ").addHex(reinterpret_cast<uintptr_t>(info.si_addr));
    file.write(line << "\n");
}

template <typename T>
T* pointerTo(uintptr_t address) {
    return reinterpret_cast<T*>(address); // NOLINT(performance-no-int-to-ptr)
}

bool isCode(uintptr_t address, dl_find_object& object) {
    return _dl_find_object(pointerTo<void>(address), &object) == 0;
}

#if defined(__x86_64__)

void writeRegisters(const ReportFile& file, const ucontext_t& context) {
    constexpr std::string_view kNames[] = {"r8",     "r9",  "r10",    "r11",     "r12", "r13",
                                           "r14",    "r15", "rdi",    "rsi",     "rbp", "rbx",
                                           "rdx",    "rax", "rcx",    "rsp",     "rip", "efl",
                                           "csgsfs", "err", "trapno", "oldmask", "cr2"};
    Line line;
    line << "\nRegisters\n";
    for (size_t i = 0; i < std::size(kNames); ++i)
        (line << "    " << kNames[i] << " ")
                .addHex(static_cast<uint64_t>(context.uc_mcontext.gregs[i]))
            << "\n";
    file.write(line);
}

/// After a jump to nowhere the walk would end where it begins, so it begins at the jump,
/// before the address that the call has pushed. The stack may be nowhere, too.
__attribute__((no_sanitize("address", "undefined"))) void comeBackFromNowhere(ucontext_t& context) {
    greg_t& programCounter = context.uc_mcontext.gregs[REG_RIP];
    greg_t& stackPointer = context.uc_mcontext.gregs[REG_RSP];
    dl_find_object object;
    if (isCode(static_cast<uintptr_t>(programCounter), object))
        return;
    programCounter = *pointerTo<const greg_t>(static_cast<uintptr_t>(stackPointer)) - 1;
    stackPointer += static_cast<greg_t>(sizeof(greg_t));
}

#else

void writeRegisters(const ReportFile&, const ucontext_t&) {}
void comeBackFromNowhere(ucontext_t&) {}

#endif

void writeMemoryMap(const ReportFile& file) {
    file.write("\nMemory map\n");
    const int map = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    std::array<char, 4096> buffer;
    for (ssize_t size = 0; (size = ::read(map, buffer.data(), buffer.size())) > 0;)
        file.write({buffer.data(), static_cast<size_t>(size)});
    ::close(map);
}

void writeFrame(const ReportFile& file, unsigned number, uintptr_t address) {
    std::array<char, kNameSize> name{"?"};
    absl::Symbolize(pointerTo<const void>(address), name.data(), kNameSize);
    Line line;
    addTwoDigits(line << "    #", static_cast<int32_t>(number)) << " ";
    line.addHex(address) << " in " << name.data();
    dl_find_object object;
    if (isCode(address, object)) {
        const char* const image = object.dlfo_link_map->l_name;
        line << " (" << (*image != '\0' ? image : "the program") << "+";
        line.addHex(address - object.dlfo_link_map->l_addr) << ")";
    }
    file.write(line << "\n");
}

struct Walk {
    const ReportFile& file;
    bool begun; // what lies before it is the handler's own
    unsigned frames = 0;
};

_Unwind_Reason_Code visitFrame(_Unwind_Context* context, void* argument) {
    auto& walk = *static_cast<Walk*>(argument);
    int interrupted = 0;
    const uintptr_t address = _Unwind_GetIPInfo(context, &interrupted);
    walk.begun = walk.begun || interrupted != 0;
    if (address == 0 || walk.frames == kMaxFrames)
        return _URC_END_OF_STACK;
    // A return address may lie behind the end of the function that called.
    if (walk.begun)
        writeFrame(walk.file, walk.frames++, interrupted != 0 ? address : address - 1);
    return _URC_NO_REASON;
}

/// By the compiler's own unwinder, which also knows the functions of the system's
/// libraries, which keep no frame pointer.
void writeStack(const ReportFile& file, bool inHandler) {
    file.write("\nStack\n");
    Walk walk{file, !inHandler};
    _Unwind_Backtrace(visitFrame, &walk);
}

std::string currentExceptionText() {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    if (type == nullptr)
        return "none";
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), &std::free);
    std::string text = name != nullptr ? name.get() : type->name();
    try {
        throw;
    } catch (const std::exception& exception) {
        text.append(": ").append(exception.what());
    } catch (...) { // the type is all there is to know
    }
    return text;
}

} // namespace

detail::DumpResult detail::writeDump(const DumpPlace& place, void*) {
    DumpResult result;
    const ReportFile file(place, result);
    writeHead(file);
    file.write("C++ exception " + currentExceptionText() + "\n");
    writeMemoryMap(file);
    writeStack(file, false);
    return result;
}

void detail::writeDumpInDistress(void* fault, DumpResult& result) {
    const auto& signalFault = *static_cast<const SignalFault*>(fault);
    auto& context = *static_cast<ucontext_t*>(signalFault.context);
    const ReportFile file(reportPlace(), result);
    writeHead(file);
    writeSignal(file, *static_cast<const siginfo_t*>(signalFault.info));
    writeRegisters(file, context);
    writeMemoryMap(file);
    comeBackFromNowhere(context);
    writeStack(file, true);
}

std::string detail::errorText(uint32_t error) { return std::strerror(static_cast<int>(error)); }

} // namespace core
