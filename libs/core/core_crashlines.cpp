#include "core_crashlines_calls.h"

#include "core_log.h"
#include "core_paths.h"
#include "core_wrapper.h"

namespace core {
namespace {

using Line = detail::FixedText<10240>;

// Not on the stack, of which little may be left.
constinit Line line;
constinit detail::PathText recordPath;

void addNames(Line& text) {
    text << "minidump for '" << detail::crashNames().module.view() << "' to '"
         << detail::dumpPlace().file.view() << "', version '" << detail::crashNames().tag.view()
         << "'";
}

void makeDumpLine(const detail::DumpResult& dump) {
    line.clear();
    line << (dump.written ? "Wrote " : "Failed to write ");
    addNames(line);
    if (!dump.written)
        line << " (" << detail::errorText(dump.error).view() << ")";
}

} // namespace

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
        << ": " << crashNames().module.view() << " " << crashNames().tag.view() << "\n";
    recordPath.clear();
    recordPath << "./" << Paths::storedPath(Paths::Logs) << "/dumps.log";
    told.recorded = true;
    appendToFile(recordPath, line.view());
}

void detail::checkCrashNames() {
    if (!crashNames().moduleIsKnown)
        static_cast<void>(Wrapper::moduleBaseName());
}

} // namespace core
