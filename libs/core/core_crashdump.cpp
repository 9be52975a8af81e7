#include "core_crashdump.h"

#include "core_log.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "core_wrapper.h"
#include "internal/core_crashdump_lines.h"

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>
#include <exception>

namespace core {
namespace {

using detail::PathText;

using Line = detail::FixedText<10240>;

constinit detail::CrashNames names;
constinit detail::DumpPlace place;

// Not on the stack, of which little may be left.
constinit Line line;
constinit PathText recordPath;

void backslashed(PathText& text, std::string_view prefix, std::string_view folder) {
    text.clear();
    text << prefix << folder;
    text.replace('/', '\\');
}

void filePath(PathText& path, const PathText& folder, std::string_view module,
              std::string_view tag) {
    path.clear();
    path << folder.view() << "\\" << module << "-" << tag << ".dmp";
}

void makeDumpLine(const detail::DumpResult& dump) {
    line.clear();
    line << (dump.written ? "Wrote " : "Failed to write ") << "minidump for '"
         << names.module.view() << "' to '" << detail::dumpPlace().file.view() << "', version '"
         << names.tag.view() << "'";
    if (!dump.written)
        line << " (" << detail::errorText(dump.error).view() << ")";
}

} // namespace

std::string_view dumpModuleName(std::string_view executable) {
    constexpr std::string_view kSuffix = ".exe";
    if (executable.empty())
        return "unknown";
    if (executable.ends_with(kSuffix))
        executable.remove_suffix(kSuffix.size());
    return executable;
}

std::string dumpFilePath(std::string_view folder, std::string_view executable,
                         std::string_view tag) {
    PathText folderText;
    PathText path;
    backslashed(folderText, "", folder);
    filePath(path, folderText, dumpModuleName(executable), tag);
    return std::string(path.view());
}

const detail::CrashNames& detail::crashNames() { return names; }

void detail::noteCrashNames() {
    // Linux adds this to the name of a program whose file was replaced.
    constexpr std::string_view kReplaced = " (deleted)";
    const std::string path = programPath();
    std::string_view program = path;
    if (program.ends_with(kReplaced))
        program.remove_suffix(kReplaced.size());
    const std::string_view executable = program.substr(program.find_last_of("\\/") + 1);
    names.module.clear();
    names.tag.clear();
    names.program.clear();
    names.moduleIsKnown = !executable.empty();
    names.module << dumpModuleName(executable);
    names.tag << dumpVersionTag();
    names.program << program;
}

bool detail::crashNamesAreNoted() { return !names.module.view().empty(); }

const detail::DumpPlace& detail::dumpPlace() {
    backslashed(place.folder, "./", Paths::storedPath(Paths::Dumps));
    filePath(place.file, place.folder, names.module.view(), names.tag.view());
    return place;
}

void detail::checkCrashNames() {
    if (!names.moduleIsKnown)
        static_cast<void>(Wrapper::moduleBaseName());
}

const void* detail::currentException() {
    const std::exception_ptr current = std::current_exception();
    const void* object = nullptr;
    static_assert(sizeof current == sizeof object);
    std::memcpy(&object, static_cast<const void*>(&current), sizeof object);
    return object;
}

void detail::addExceptionText(FixedText<4096>& text) {
    try {
        throw;
    } catch (const std::exception& exception) {
        text << ": " << exception.what();
    } catch (...) { // the type is all there is to know
    }
}

void detail::demangleType(FixedText<512>& type) {
    int status = 0;
    char* const name = abi::__cxa_demangle(type.c_str(), nullptr, nullptr, &status);
    if (name == nullptr)
        return;
    type.clear();
    type << name;
    std::free(name); // NOLINT(cppcoreguidelines-no-malloc): the runtime's
}

void detail::echoDumpLine(CrashTold& told) {
    if (!channelEnabled(kChannelCrit) || !MasterLogger::echoed(kChannelCrit))
        return;
    makeDumpLine(told.dump);
    static constinit Line shown;
    shown.clear();
    shown << "[CRIT] " << line.view() << "\n";
    told.echoed = true;
    writeToStandardOutput(shown.view());
}

void detail::deliverDumpLine(const CrashTold& told) {
    if (!channelEnabled(kChannelCrit))
        return;
    makeDumpLine(told.dump);
    MasterLogger::deliver(MasterLogger::defaultLogger(), kChannelCrit, line.view());
}

void detail::recordCrash(CrashTold& told) {
    const CivilTime& time = told.time;
    line.clear();
    line << time.year;
    line << "-";
    line.addTwoDigits(time.month) << "-";
    line.addTwoDigits(time.day) << " ";
    line.addTwoDigits(time.hour) << ":";
    line.addTwoDigits(time.minute) << ":";
    line.addTwoDigits(time.second)
        << ": " << names.module.view() << " " << names.tag.view() << "\n";
    recordPath.clear();
    recordPath << "./" << Paths::storedPath(Paths::Logs) << "/dumps.log";
    told.recorded = true;
    appendToFile(recordPath, line.view());
}

} // namespace core
