#include "internal/core_wrapper_system.h"

#include <windows.h>

#include <cerrno>
#include <io.h>
#include <iterator>
#include <sys/stat.h>

namespace core {
namespace {

bool widePath(const std::string& path, SystemText& out) {
    if (Wrapper::pathFromUtf8(path, out))
        return true;
    errno = EILSEQ;
    return false;
}

} // namespace

std::string Wrapper::executablePath(size_t limit) {
    std::string path(limit, '\0');
    path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(limit)));
    return path;
}

std::string Wrapper::systemErrorText(uint32_t code) try {
    wchar_t buffer[512];
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                       buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
    std::wstring_view text(buffer, length);
    while (text.ends_with(L'\n') || text.ends_with(L'\r'))
        text.remove_suffix(1);
    std::string converted;
    return !text.empty() && core::toUtf8(text, converted) ? converted
                                                          : "error " + std::to_string(code);
} catch (const std::bad_alloc&) {
    return {};
}

const char* const detail::kNotInheritedMode = "N";

FILE* detail::openFile(const SystemText& path, const SystemText& mode) {
    return _wfopen(path.c_str(), mode.c_str());
}

int Wrapper::System::remove(const std::string& path) const {
    if (!wideFileNames())
        return _unlink(path.c_str());
    SystemText wide;
    return widePath(path, wide) ? _wunlink(wide.c_str()) : -1;
}

int Wrapper::System::makeWritable(const std::string& path) const {
    if (!wideFileNames())
        return _chmod(path.c_str(), _S_IREAD | _S_IWRITE);
    SystemText wide;
    return widePath(path, wide) ? _wchmod(wide.c_str(), _S_IREAD | _S_IWRITE) : -1;
}

} // namespace core
