#include "core_log.h"
#include "core_stacktrace.h"
#include "core_wrapper.h"
#include "internal/core_stacktrace_lines.h"

#include <absl/debugging/stacktrace.h>
#include <absl/debugging/symbolize.h>
#include <cxxabi.h>
#include <elfutils/libdw.h>
#include <elfutils/libdwfl.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace core {
namespace {

constexpr size_t kDeepestStack = 1024;
constexpr size_t kLongestName = 1024;
constexpr size_t kMostPlaces = 4096; // more than the checks of a program are likely to need

struct Module {
    std::string image;
    uint64_t base;
    uint32_t size;

    bool operator==(const Module&) const = default;
};

/// What is known about an address; the error is from looking up its symbol.
struct Place {
    StackFrame frame;
    bool located = false;
    uint32_t error = 0;
};

int openModule(Dwfl_Module*, void**, const char* image, Dwarf_Addr, char** path, Elf**) {
    const int file = open(image, O_RDONLY | O_CLOEXEC);
    if (file >= 0)
        *path = strdup(image);
    return file;
}

/// Searches this machine only: the library's default would ask the debug information
/// servers in the user's settings.
int findDebugFile(Dwfl_Module* module, void** data, const char* name, Dwarf_Addr base,
                  const char* image, const char* link, GElf_Word sum, char** path) {
    const auto find = std::getenv("DEBUGINFOD_URLS") == nullptr ? dwfl_standard_find_debuginfo
                                                                : dwfl_build_id_find_debuginfo;
    return find(module, data, name, base, image, link, sum, path);
}

/// Without the parameters at its end, if it has any. Those of its template may hold
/// parentheses as well.
std::string withoutParameters(std::string function) {
    size_t start = function.rfind(')');
    for (int depth = start != std::string::npos ? 1 : 0; depth > 0 && start > 0;) {
        --start;
        depth += function[start] == ')' ? 1 : function[start] == '(' ? -1 : 0;
    }
    return start != std::string::npos ? function.substr(0, start) : function;
}

/// The text of a symbol. Those that Abseil has demangled end in "()" already, except
/// functions that return a std::string, whose tag it does not know.
std::string functionText(const std::string& symbol) {
    if (symbol.ends_with("()"))
        return symbol;
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), &std::free);
    return (demangled != nullptr ? withoutParameters(demangled.get()) : symbol) + "()";
}

std::string functionAt(const char* address) {
    char name[kLongestName];
    return absl::Symbolize(address, name, sizeof name) ? functionText(name) : "";
}

/// For names in a separate debug file, where Abseil does not look.
std::string symbolAt(Dwfl_Module* module, uintptr_t address) {
    GElf_Off offset = 0;
    GElf_Sym symbol{};
    const char* const name =
        dwfl_module_addrinfo(module, address, &offset, &symbol, nullptr, nullptr, nullptr);
    return name != nullptr && offset < symbol.st_size ? functionText(name) : "";
}

/// The compilation unit that contains the address. All are searched if the table does not
/// have it: Clang writes no table.
Dwarf_Die* unitAt(Dwfl_Module* module, uintptr_t address, Dwarf_Addr& bias) {
    Dwarf_Die* unit = dwfl_module_addrdie(module, address, &bias);
    if (unit != nullptr && dwarf_haspc(unit, address - bias) > 0)
        return unit;
    unit = nullptr;
    while ((unit = dwfl_module_nextcu(module, unit, &bias)) != nullptr) {
        if (dwarf_haspc(unit, address - bias) > 0)
            break;
    }
    return unit;
}

void findLine(Dwfl_Module* module, uintptr_t address, StackFrame& frame) {
    Dwarf_Addr bias = 0;
    Dwarf_Die* const unit = unitAt(module, address, bias);
    Dwarf_Line* const line = unit != nullptr ? dwarf_getsrc_die(unit, address - bias) : nullptr;
    const char* const file = line != nullptr ? dwarf_linesrc(line, nullptr, nullptr) : nullptr;
    int number = 0;
    if (file == nullptr || dwarf_lineno(line, &number) != 0)
        return;
    frame.sourceFile = file;
    frame.line = static_cast<uint32_t>(number);
}

constexpr Dwfl_Callbacks kCallbacks{openModule, findDebugFile, nullptr, nullptr};

/// What libdw knows about this process. Kept, since reading debug information takes far
/// longer than a walk; so are the places found, since the same ones recur. libdw is not
/// thread-safe, hence the lock; under it nothing is logged and no check can fail.
class Symbols {
public:
    static Symbols* instance() {
        static Symbols* const theSymbols = start();
        return theSymbols;
    }

    /// Forgets the modules that are not among these.
    std::vector<Module> replaceModules(const std::vector<Module>& modules) {
        const std::lock_guard lock(d_mutex);
        std::vector<Module> refused;
        if (modules == d_modules)
            return refused;
        d_places.clear();
        dwfl_report_begin(d_dwfl);
        std::copy_if(modules.begin(), modules.end(), std::back_inserter(refused),
                     [this](const Module& module) { return !report(module); });
        dwfl_report_end(d_dwfl, nullptr, nullptr);
        d_modules = refused.empty() ? modules : std::vector<Module>(); // to try again
        return refused;
    }

    bool addModule(const Module& module) {
        const std::lock_guard lock(d_mutex);
        d_modules.clear();
        d_places.clear();
        dwfl_report_begin_add(d_dwfl);
        return report(module) && dwfl_report_end(d_dwfl, nullptr, nullptr) == 0;
    }

    Place locate(const char* address) {
        const std::lock_guard lock(d_mutex);
        if (const auto known = d_places.find(address); known != d_places.end())
            return known->second;
        if (d_places.size() >= kMostPlaces)
            d_places.clear();
        Place place;
        errno = 0;
        place.located = find(address, place.frame);
        place.error = static_cast<uint32_t>(errno);
        return d_places.emplace(address, std::move(place)).first->second;
    }

private:
    explicit Symbols(Dwfl* dwfl) : d_dwfl(dwfl) {}

    static Symbols* start() {
        Dwfl* const dwfl = dwfl_begin(&kCallbacks);
        return dwfl != nullptr ? new Symbols(dwfl) : nullptr;
    }

    /// Fills in what is known; false when no module holds the address.
    bool find(const char* pointer, StackFrame& frame) {
        const auto address = reinterpret_cast<uintptr_t>(pointer);
        frame.function = functionAt(pointer);
        Dwfl_Module* const module = dwfl_addrmodule(d_dwfl, address);
        if (module == nullptr)
            return false;
        if (frame.function.empty())
            frame.function = symbolAt(module, address);
        findLine(module, address, frame);
        const char* mainFile = nullptr;
        const char* debugFile = nullptr;
        const char* const name = dwfl_module_info(module, nullptr, nullptr, nullptr, nullptr,
                                                  nullptr, &mainFile, &debugFile);
        frame.imageName = name != nullptr ? name : "";
        frame.symbolFileName = debugFile != nullptr  ? debugFile
                               : mainFile != nullptr ? mainFile
                                                     : "";
        return true;
    }

    bool report(const Module& module) {
        return dwfl_report_module(d_dwfl, module.image.c_str(), module.base,
                                  module.base + module.size) != nullptr;
    }

    std::mutex d_mutex;
    Dwfl* const d_dwfl;
    std::vector<Module> d_modules; // those that libdw knows
    std::unordered_map<const void*, Place> d_places;
};

int addLoadedModule(dl_phdr_info* info, size_t, void* modules) {
    uint64_t low = UINT64_MAX;
    uint64_t high = 0;
    for (const ElfW(Phdr)* part = info->dlpi_phdr; part < info->dlpi_phdr + info->dlpi_phnum;
         ++part) {
        if (part->p_type != PT_LOAD)
            continue;
        low = std::min<uint64_t>(low, part->p_vaddr & ~(part->p_align - 1));
        high = std::max<uint64_t>(high, part->p_vaddr + part->p_memsz);
    }
    if (low < high) {
        const bool isProgram = *info->dlpi_name == '\0';
        static_cast<std::vector<Module>*>(modules)->push_back(
            {isProgram ? Wrapper::executablePath(PATH_MAX) : info->dlpi_name, info->dlpi_addr + low,
             static_cast<uint32_t>(high - low)});
    }
    return 0;
}

StackFrame frameAt(Symbols& symbols, const char* address) {
    Place place = symbols.locate(address);
    if (place.frame.function.empty())
        detail::logNoSymbol(reinterpret_cast<uintptr_t>(address), place.error);
    if (!place.located)
        detail::logNoModuleInfo();
    return std::move(place.frame);
}

[[gnu::noinline]] void* addressInCaller() { return __builtin_return_address(0); }

/// The stack from the frame on to which `first` is the return address. How Abseil was
/// built decides whether its own walk begins there or one frame further in.
std::vector<void*> returnAddresses(const void* first) {
    std::vector<void*> addresses(kDeepestStack);
    addresses.resize(static_cast<size_t>(
        absl::GetStackTrace(addresses.data(), static_cast<int>(addresses.size()), 0)));
    const auto found = std::find(addresses.begin(), addresses.end(), first);
    if (found != addresses.end())
        addresses.erase(addresses.begin(), found);
    return addresses;
}

} // namespace

StackTrace::StackTrace() {
    if (Symbols* const symbols = Symbols::instance()) {
        d_process = symbols;
        d_processId = static_cast<uint32_t>(getpid());
    } else {
        logFrom(kChannelNorm, "core::StackTrace::StackTrace",
                "failed to initialise symbols from %s", dwfl_errmsg(-1));
    }
}

StackTrace::~StackTrace() = default;

// There is only this process to ask, so the handle is not looked at.
bool StackTrace::loadModule(void*, const std::string& image, const std::string& module,
                            uint64_t base, uint32_t size) {
    // libdw opens the file when it first needs it, which is too late to say no.
    Symbols* const symbols = Symbols::instance();
    if (symbols != nullptr && access(image.c_str(), R_OK) == 0 &&
        symbols->addModule({image, base, size}))
        return true;
    detail::logNoModule(image, module, base, size);
    return false;
}

void StackTrace::loadModules() {
    if (std::exchange(d_modulesLoaded, true) || d_process == nullptr)
        return; // that it cannot be done was said when the engine did not start
    // The loader is locked while it lists its modules, so they are only noted there.
    std::vector<Module> modules;
    dl_iterate_phdr(addLoadedModule, &modules);
    for (const Module& refused : static_cast<Symbols*>(d_process)->replaceModules(modules))
        detail::logNoModule(refused.image, refused.image, refused.base, refused.size);
}

[[gnu::noinline]] bool StackTrace::getStack(std::vector<StackFrame>& frames, unsigned maxFrames) {
    if (d_process == nullptr) {
        logAt(kChannelWarn, detail::kNoSymbolEngine);
        return false;
    }
    loadModules();
    std::vector<void*> addresses = returnAddresses(__builtin_return_address(0));
    addresses.insert(addresses.begin(), addressInCaller());
    for (const void* const address : addresses) {
        if (frames.size() >= maxFrames)
            break;
        // What follows a call may belong to the next line or function.
        const char* const call = static_cast<const char*>(address) - 1;
        frames.push_back(frameAt(*static_cast<Symbols*>(d_process), call));
    }
    return true;
}

} // namespace core
