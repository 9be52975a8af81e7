#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The file that a crash leaves behind: on Windows a minidump, on Linux a report as text.
/// It is named after the program and its version.
namespace core {

/// The status of a crashed run; where a status has eight bits it shows as 129.
inline constexpr int kCrashStatus = -127;

/// Leaves the evidence of a crash: the dump at dumpFilePath, in the folder Paths::Dumps,
/// which is made if only its last level is missing; a line on CRIT that says so, or why
/// not; and a line in the file dumps.log of the folder Paths::Logs, if that exists. The
/// dump of an earlier crash of the same build is replaced, on Linux only by a whole one.
/// None of the three is lost when another fails.
///
/// This form is for crashes without a fault; it includes the current C++ exception, if
/// there is one. core_crashdump_win32.h has the form for structured exceptions. Returns
/// 1, on which an exception filter runs its handler. For code that ends a process; the
/// folders must have been set. The guard in core_guard.h does the same.
int32_t writeCrashDump();

/// How dumps name a program: its executable's file name without ".exe"; "unknown" for an
/// empty one. A slice of `executable`, or a constant.
std::string_view dumpModuleName(std::string_view executable);

/// "FOLDER\MODULE-TAG.dmp", every '/' of the folder a '\'.
std::string dumpFilePath(std::string_view folder, std::string_view executable,
                         std::string_view tag);

} // namespace core
