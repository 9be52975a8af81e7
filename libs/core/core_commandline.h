#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The arguments of a program, as `main` takes them.
namespace core {

/// An argument vector in the form that `main` takes, NULL-terminated. It owns its texts;
/// moving it does not move them.
class Arguments {
public:
    /// The program's name comes first.
    explicit Arguments(std::vector<std::string> texts);
    Arguments(Arguments&&) = default;
    Arguments& operator=(Arguments&&) = default;

    /// Without the NULL at the end.
    int count() const { return static_cast<int>(d_texts.size()); }
    /// Valid as long as the object that holds the texts.
    char** values() { return d_values.data(); }

private:
    std::vector<std::string> d_texts;
    std::vector<char*> d_values;
};

/// The arguments of a program that was started by a single text: the executable's
/// path, then the words of the text, which blanks separate and double quotes group.
Arguments splitCommandLine(std::string_view commandLine);

} // namespace core
