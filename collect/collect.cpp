#include "collect.h"

#include "collect_arguments.h"
#include "collect_export.h"
#include "collect_lock.h"
#include "collect_options.h"
#include "collect_receiver.h"
#include "collect_stop.h"
#include "collect_store.h"
#include "collect_table.h"
#include "core_commandline.h"
#include "core_filelog.h"
#include "core_globals.h"
#include "core_guard.h"
#include "core_log.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "kern_pollloop.h"
#include "utl_fileutils.h"

#include <cstdio>
#include <string>
#include <vector>

namespace collect {
namespace {

int print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    return std::fflush(stdout) == 0 ? kDone : kFailed;
}

int complain(int status, const std::string& text) {
    std::fprintf(stderr, "orvistrand-collect: %s\n", text.c_str());
    return status;
}

int exportKept(const Options& options) {
    const core::DefaultGlobals globals;
    Table table;
    if (!Store(options.folder).replay(table))
        return complain(kFailed, core::format("cannot read the reports in '%s'", options.folder));
    return print(exportTable(table, options.format));
}

/// With the log installed.
int receiveUntilStopped(const Options& options, core::FileLogImpl* log) {
    Table table;
    Store store(options.folder);
    if (!store.replay(table) || !store.open(table))
        return complain(kFailed, core::format("cannot keep reports in '%s'", options.folder));
    kern::PollLoop loop;
    Receiver receiver(loop, table, store, options);
    const StopRequests stopRequests(loop);
    if (!loop.isReady() || !receiver.start())
        return complain(
            kFailed, core::format("cannot receive on %s port %u", options.address, options.port));
    log->flush();
    print(core::format("receiving on %s port %d, showing on %s\n", options.address, receiver.port(),
                       receiver.pagePath()));
    loop.run();
    receiver.writePage();
    return kDone;
}

int receive(const Options& options) {
    core::MasterLogger::setChannelEcho(core::kChannelWarn, true); // for those at the screen
    if (!utl::FileUtils::createPath(options.folder))
        return complain(kFailed, core::format("cannot make '%s'", options.folder));
    const FolderLock lock(options.folder);
    if (lock.state() == FolderLock::State::HeldByAnother)
        return complain(kFailed,
                        core::format("another collector is at work in '%s'", options.folder));
    if (lock.state() == FolderLock::State::Failed)
        return complain(kFailed, core::format("cannot write in '%s'", options.folder));
    auto file = std::make_unique<core::FileLogImpl>(
        core::FileLogImpl::Options{.path = options.folder + "/collect.log"});
    core::FileLogImpl* const log = file.get();
    const core::Globals globals(std::move(file)); // which owns it until its own end
    if (!log->isOpen())
        return complain(kFailed, core::format("cannot write a log in '%s'", options.folder));
    return receiveUntilStopped(options, log);
}

} // namespace

int runGuarded(int argc, char** argv) {
    core::Arguments arguments(utf8Arguments(argc, argv));
    return core::runGuardedWith(runApplication, arguments.count(), arguments.values());
}

int runApplication(int argc, char** argv) {
    core::Paths::setDefaultPaths();
    const Options options = readOptions(std::vector<std::string>(argv + 1, argv + argc));
    switch (options.task) {
    case Options::Task::Help:
        return print(helpText());
    case Options::Task::Version:
        return print(core::format("orvistrand-collect %s\n", core::version()));
    case Options::Task::Export:
        return exportKept(options);
    case Options::Task::Receive:
        return receive(options);
    case Options::Task::Refuse:
        break;
    }
    return complain(kWrongUsage, options.complaint + "; --help tells more");
}

} // namespace collect
