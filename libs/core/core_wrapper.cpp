#include "core_wrapper.h"

#include "core_check.h"
#include "core_log.h"
#include "internal/core_wrapper_system.h"

#include <cerrno>
#include <new>
#include <system_error>

namespace core {
namespace {

constexpr CheckSite kNoModuleName{"core_wrapper_win32.cpp", 22};
constexpr CheckSite kNotUtf8{"core_wrapper_win32.cpp", 89};
constexpr size_t kModulePathLimit = 512;

constinit thread_local bool wideNames = true;

struct TheSystem final : Wrapper::System {};
constinit const TheSystem theSystem;

bool reported(bool converted, const char* failure) {
    if (!converted)
        CORE_LOGF(kChannelWarn, "%s", failure);
    return converted;
}

} // namespace

std::string Wrapper::moduleBaseName() {
    const std::string path = executablePath(kModulePathLimit);
    if (!CHECKF_AT(kNoModuleName, !path.empty()))
        return {};
    return path.substr(path.find_last_of("\\/") + 1);
}

FILE* Wrapper::fopen(const std::string& path, const std::string& mode) {
    SystemText systemPath;
    SystemText systemMode;
    if (!CHECKF_AT(kNotUtf8, pathFromUtf8(path, systemPath) &&
                                 fromUtf8(mode + detail::kNotInheritedMode, systemMode)))
        return nullptr;
    return detail::openFile(systemPath, systemMode);
}

int Wrapper::unlink(const std::string& path) { return unlink(path, theSystem); }

int Wrapper::unlink(const std::string& path, const System& system) {
    const int result = system.remove(path);
    const int error = errno;
    if (result == 0 || error != EACCES)
        return result;
    int retried = result;
    if (system.makeWritable(path) == 0)
        retried = system.remove(path);
    else
        logFrom(kChannelNorm, "core::Wrapper::unlink", "failed to chmod %s to unlink", path);
    errno = error; // callers judge by the first attempt
    return retried;
}

std::string Wrapper::runtimeErrorText(int error) {
    try {
        return std::generic_category().message(error);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

bool Wrapper::wideFileNames() { return wideNames; }

void Wrapper::setWideFileNames(bool wide) { wideNames = wide; }

bool Wrapper::fromUtf8(std::string_view text, SystemText& out) {
    return reported(core::fromUtf8(text, out), "fromUtf8 conversion failed");
}

bool Wrapper::toUtf8(SystemTextView text, std::string& out) {
    return reported(core::toUtf8(text, out), "toUtf8 conversion failed");
}

bool Wrapper::pathFromUtf8(std::string_view path, SystemText& out) {
    return reported(core::pathFromUtf8(path, out), "fromUtf8 conversion failed");
}

} // namespace core
