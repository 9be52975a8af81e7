#include "child_process.h"
#include "core_wrapper.h"
#include "temp_folder.h"

#include <sys/wait.h>

namespace test {

ChildResult runChild(const std::string& name, const std::string& argument) {
    const TempFolder folder;
    // The shell becomes the child, so that its end is the child's.
    const std::string command = "exec '" + core::Wrapper::executablePath(4096) +
                                "' --gtest_brief=1 >'" + (folder / "out") + "' 2>'" +
                                (folder / "err") + "'";
    setenv(detail::kChildCase, name.c_str(), 1);
    setenv(detail::kChildArgument, argument.c_str(), 1);
    const int status = std::system(command.c_str());
    unsetenv(detail::kChildCase);
    unsetenv(detail::kChildArgument);

    ChildResult result{.out = readFile(folder / "out"), .err = readFile(folder / "err")};
    if (WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    return result;
}

} // namespace test
