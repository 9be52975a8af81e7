#pragma once

#include <string>
#include <vector>

namespace collect {

/// The process's arguments in UTF-8, the program's name first.
std::vector<std::string> utf8Arguments(int argc, char** argv);

} // namespace collect
