#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace core {

/// Decides what becomes of failed checks and alerts beyond their log line: whether
/// they stop the program, and which are expected and need no report.
///
/// One per process, there from the first initialiser to the very end. What it reads
/// from files it reads when it is first asked; a failure during that reading, and
/// one of another thread at the same time, is judged by the defaults. Any thread.
class TestInterface {
public:
    enum class ReportType : uint8_t { Assertion, Alert };

    struct Settings {
        int32_t assertLevel = 1;
        std::string sendAddress = "198.51.100.100"; ///< IPv4
        int32_t sendPort = 25000;
        std::string symbolServerAddress;
        uint32_t flags = 0; ///< as below
    };
    static constexpr uint32_t kAbortOnAssertion = 1U << 0;
    static constexpr uint32_t kAbortOnAlert = 1U << 3;

    static TestInterface& instance();

    Settings settings();

    /// Whether the exclusion list of core::AssertExclude names the site.
    bool isExcluded(const char* file, int32_t line);

    /// Takes over a failure that has been logged, and counts it.
    void report(ReportType type, const char* condition, const char* file, int32_t line,
                int32_t level, const std::string& message);
    uint64_t reportCount(ReportType type) const;

    /// Whether a failure of this type must stop the program; off by default.
    bool abortsOn(ReportType type);

private:
    struct Loaded;

    constexpr TestInterface() = default;
    const Loaded* loaded();

    std::atomic<bool> d_loadStarted{false};
    std::atomic<const Loaded*> d_loaded{nullptr}; // never deleted
    std::array<std::atomic<uint64_t>, 2> d_reportCounts{};
};

} // namespace core
