#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace core {

/// Counts messages and says which of them are to be reported. Any thread.
class RepeatLimits {
public:
    /// A threshold below 1 is not used; a count threshold makes the other void.
    struct Rule {
        int32_t everyCount = 0;
        int32_t everySeconds = 0;
    };
    struct Report {
        int64_t times;   ///< occurrences since the last report
        int64_t seconds; ///< since that report
    };

    void setRule(std::string_view identity, const Rule& rule);

    /// Counts an occurrence of (`channel`, `key`) at `time`, in seconds. What is to be
    /// reported now by the identity's rule, if anything; without a rule always.
    std::optional<Report> count(std::string_view identity, int32_t channel, std::string_view key,
                                int64_t time);

private:
    struct Record {
        std::optional<int64_t> firstTime;
        int64_t count = 0;
        int64_t countAtReport = 0;
    };

    static bool suppressed(const Rule& rule, const Record& record, int64_t time);

    std::mutex d_mutex;
    // Not Abseil's, which do not survive a failed allocation.
    std::map<std::string, Rule, std::less<>> d_rules;
    std::map<std::pair<int32_t, std::string>, Record> d_records;
};

} // namespace core
