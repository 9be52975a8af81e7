#include "child_process.h"
#include "temp_folder.h"

#include <windows.h>

#include <filesystem>

namespace test {
namespace {

HANDLE inheritableFile(const std::string& path) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(std::filesystem::path(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                       &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// The child's exit code, -1 when it did not start.
int startAndWait(HANDLE out, HANDLE err) {
    wchar_t executable[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, executable, MAX_PATH);
    wchar_t commandLine[] = L"child --gtest_brief=1";
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = out;
    start.hStdError = err;
    PROCESS_INFORMATION child{};
    if (CreateProcessW(executable, commandLine, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                       &child) == 0)
        return -1;
    DWORD status = 0;
    WaitForSingleObject(child.hProcess, INFINITE);
    GetExitCodeProcess(child.hProcess, &status);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    return static_cast<int>(status & 0xFF);
}

/// What a child printed, with the line ends it wrote, not those of the runtime.
std::string readText(const std::string& path) {
    const std::string text = readFile(path);
    std::string kept;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "\r\n") != 0)
            kept += text[i];
    }
    return kept;
}

} // namespace

ChildResult runChild(const std::string& name, const std::string& argument) {
    const TempFolder folder;
    const std::string outPath = folder / "out";
    const std::string errPath = folder / "err";
    HANDLE out = inheritableFile(outPath);
    HANDLE err = inheritableFile(errPath);

    ChildResult result;
    SetEnvironmentVariableA(detail::kChildCase, name.c_str());
    SetEnvironmentVariableA(detail::kChildArgument, argument.c_str());
    result.status = startAndWait(out, err);
    SetEnvironmentVariableA(detail::kChildCase, nullptr);
    SetEnvironmentVariableA(detail::kChildArgument, nullptr);
    CloseHandle(out);
    CloseHandle(err);

    result.out = readText(outPath);
    result.err = readText(errPath);
    return result;
}

} // namespace test
