#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace collect {

/// What the command line asks for.
struct Options {
    enum class Task : uint8_t { Receive, Export, Help, Version, Refuse };
    enum class Format : uint8_t { Csv, Json };

    Task task = Task::Receive;
    std::string address = "127.0.0.1"; ///< to receive on, IPv4
    uint16_t port = 25000;             ///< 0 takes a free one
    std::string folder = "collected";
    bool once = false; ///< ends after the first report
    Format format = Format::Csv;
    std::string complaint; ///< why it is refused
};

/// `arguments` without the program's name. "jitd" is for the crash guard.
Options readOptions(const std::vector<std::string>& arguments);

/// What --help prints.
const char* helpText();

} // namespace collect
