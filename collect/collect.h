#pragma once

/// The program around the collector: orvistrand-collect.
namespace collect {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

/// Runs the collector under the crash guard with the arguments that the process got, in the
/// system's encoding; returns the process's exit status.
int runGuarded(int argc, char** argv);

/// The same without the guard; the arguments are UTF-8.
int runApplication(int argc, char** argv);

} // namespace collect
