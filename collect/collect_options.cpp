#include "collect_options.h"

#include "core_varargs.h"

#include <charconv>
#include <string_view>
#include <utility>

namespace collect {
namespace {

constexpr const char* kHelp =
    "Usage: orvistrand-collect [OPTION]...\n"
    "Receives reports of failed checks and shows on a page what fails where.\n"
    "\n"
    "  --listen ADDRESS   the IPv4 address to receive on; 127.0.0.1 unless given,\n"
    "                     0.0.0.0 for all of the computer\n"
    "  --port NUMBER      the UDP port, 25000 unless given; 0 takes a free one\n"
    "  --folder FOLDER    where the reports, the page and the log are kept;\n"
    "                     ./collected unless given\n"
    "  --once             end after the first report, when the page is written\n"
    "  --export csv|json  print what is known, and end; nothing is received\n"
    "  --help, --version  print that, and end\n"
    "\n"
    "The page is FOLDER/index.html. Ctrl-C ends the program.\n";

void refuse(Options& options, std::string complaint) {
    options.task = Options::Task::Refuse;
    options.complaint = std::move(complaint);
}

void takePort(Options& options, std::string_view text) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), options.port);
    if (error != std::errc{} || end != text.data() + text.size())
        refuse(options, core::format("'%s' is not a port", text));
}

void takeFormat(Options& options, std::string_view text) {
    options.task = Options::Task::Export;
    options.format = text == "json" ? Options::Format::Json : Options::Format::Csv;
    if (text != "json" && text != "csv")
        refuse(options, core::format("'%s' is neither csv nor json", text));
}

/// False unless `name` is an option that takes a value.
bool takeValue(Options& options, std::string_view name, const std::string& value) {
    if (name == "--listen")
        options.address = value;
    else if (name == "--folder")
        options.folder = value;
    else if (name == "--port")
        takePort(options, value);
    else if (name == "--export")
        takeFormat(options, value);
    else
        return false;
    return true;
}

bool takeSwitch(Options& options, std::string_view name) {
    if (name == "--once")
        options.once = true;
    else if (name == "--help")
        options.task = Options::Task::Help;
    else if (name == "--version")
        options.task = Options::Task::Version;
    else
        return name == "jitd";
    return true;
}

} // namespace

Options readOptions(const std::vector<std::string>& arguments) {
    Options options;
    for (size_t i = 0; i < arguments.size() && options.task != Options::Task::Refuse; ++i) {
        const std::string& name = arguments[i];
        if (takeSwitch(options, name))
            continue;
        Options probe; // to ask whether it is an option with a value at all
        if (!takeValue(probe, name, ""))
            refuse(options, core::format("unknown argument '%s'", name));
        else if (i + 1 == arguments.size())
            refuse(options, core::format("%s needs a value", name));
        else
            takeValue(options, name, arguments[++i]);
    }
    return options;
}

const char* helpText() { return kHelp; }

} // namespace collect
