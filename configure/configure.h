#pragma once

/// The configuration tool: shows the address and port of the network video recorder
/// in a dialog and stores what the operator confirms.
namespace configure {

/// Runs `runApplication` under the crash guard of core_guard.h and returns its result, or
/// core::kCrashStatus after a crash: the process entry then ends the process at once.
int runGuarded(int argc, char** argv);

/// Runs `main` with what the process needs around it: the default folders and a log
/// implementation. Returns main's result.
int runApplication(int argc, char** argv);

/// The tool itself: reads the settings file, runs the dialog and, on OK with a
/// change, replaces the file and logs the change on NORM.
///
/// A missing or unreadable file means empty fields; a settings folder that cannot be made
/// is a failed check, and the dialog still opens. The result is always 0. Qt keeps
/// references to both arguments: they must stay valid until the process ends. `argv` ends
/// with a null pointer.
int main(int argc, char** argv);

} // namespace configure
