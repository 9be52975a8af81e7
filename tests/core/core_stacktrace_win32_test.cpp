#include "internal/core_stacktrace_lines.h"

#include <gtest/gtest.h>

namespace {

TEST(SymbolSearchPath, NamesEachAvailableFolderOnce) {
    const auto path = core::detail::symbolSearchPath;
    EXPECT_EQ(path("C:\\App", "C:\\App\\tool.exe", "C:\\Windows"),
              "C:\\App;C:\\App\\symbols;C:\\Windows;C:\\Windows\\system32;");
    EXPECT_EQ(path("D:\\x", "C:/App/tool.exe", ""), "D:\\x;C:/App;C:/App\\symbols;");
    EXPECT_EQ(path("", "tool.exe", ""), "tool.exe;tool.exe\\symbols;");
    EXPECT_EQ(path("C:\\", "", "C:\\W"), "C:\\;C:\\W;C:\\W\\system32;");
}

} // namespace
