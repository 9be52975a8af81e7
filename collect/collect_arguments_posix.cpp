#include "collect_arguments.h"

namespace collect {

std::vector<std::string> utf8Arguments(int argc, char** argv) { return {argv, argv + argc}; }

} // namespace collect
