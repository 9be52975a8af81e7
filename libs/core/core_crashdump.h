#pragma once

#include <string>
#include <string_view>

/// The file that a crash leaves behind: on Windows a minidump, on Linux a report in words.
/// It is named after the program and its version. See core_guard.h for what writes it.
namespace core {

/// A program's name in its dumps' names: without ".exe", "unknown" for an empty one. A
/// slice of `executable`, the name of its file, or a constant.
std::string_view dumpModuleName(std::string_view executable);

/// "FOLDER\MODULE-TAG.dmp", every '/' of the folder a '\'.
std::string dumpFilePath(std::string_view folder, std::string_view executable,
                         std::string_view tag);

} // namespace core
