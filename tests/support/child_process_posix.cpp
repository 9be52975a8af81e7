#include "child_process.h"
#include "temp_folder.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {
namespace {

/// Only what is allowed between fork and exec in a program with threads.
[[noreturn]] void becomeChild(const char* out, const char* err, char** environment) {
    constexpr int kWrite = O_WRONLY | O_CREAT | O_TRUNC;
    dup2(open(out, kWrite, 0600), STDOUT_FILENO);
    dup2(open(err, kWrite, 0600), STDERR_FILENO);
    const char* const arguments[] = {"child", "--gtest_brief=1", nullptr};
    execve("/proc/self/exe", const_cast<char**>(arguments), environment);
    _exit(127);
}

} // namespace

ChildResult runChild(const std::string& name, const std::string& argument) {
    const TempFolder folder;
    const std::string out = folder / "out";
    const std::string err = folder / "err";

    std::string childCase = std::string(detail::kChildCase) + '=' + name;
    std::string childArgument = std::string(detail::kChildArgument) + '=' + argument;
    std::vector<char*> environment{childCase.data(), childArgument.data()};
    for (char** variable = environ; *variable != nullptr; ++variable)
        environment.push_back(*variable);
    environment.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0)
        becomeChild(out.c_str(), err.c_str(), environment.data());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child)
        return {};

    ChildResult result;
    if (WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    result.out = readFile(out);
    result.err = readFile(err);
    return result;
}

} // namespace test
