#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace core {

/// Receives the text logged on channel 0 through the loggers it is added to,
/// lines joined by '\n'.
struct StringCollector {
    std::string text;      ///< all lines so far
    int32_t lineCount = 0; ///< number of lines
    int32_t lineLimit = 0; ///< the collector is detached when it holds this many; 0 = none
};

/// The handle that callers log through: an id for echoed lines, collectors of
/// channel-0 text, and scope labels that indent the lines of a channel.
///
/// A handle without labels and collectors is only read by logging, so all threads
/// may share it. Labels and collectors belong to one thread at a time.
class Logger {
public:
    /// Id 0 means none: echoed lines then carry no id.
    explicit Logger(uint32_t id = 0) : d_id(id) {}

    /// 0 for none.
    uint32_t id() const { return d_id; }

    /// Opens and closes a scope on a channel. An empty label indents by " |", and by
    /// " |-" where it is the innermost. Closing without an open scope does nothing.
    void pushLabel(int32_t channel, std::string label);
    void popLabel(int32_t channel);

    /// The indentation of the channel's lines. Valid until the next non-const call.
    std::string_view prefix(int32_t channel);

    /// Not owned; must be removed, or have reached its limit, before it is destroyed.
    /// Null is ignored.
    void addCollector(StringCollector* collector);
    void removeCollector(StringCollector* collector);

    /// Appends a line, which may be a collector's own text, to every collector and
    /// detaches those that have reached their limit.
    void collect(std::string_view text);

private:
    using Labels = std::vector<std::string>;

    Labels* labelsOf(int32_t channel);
    void forgetPrefix();

    uint32_t d_id;
    std::vector<StringCollector*> d_stringTargets;
    std::vector<std::pair<int32_t, Labels>> d_nesting; // channels with open scopes
    int32_t d_prefixChannel = -1;                      // of the cached prefix, -1 = none
    std::string d_prefix;
};

} // namespace core
