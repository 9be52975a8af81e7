#include "core_log.h"

namespace core {

std::string withFunction(std::string_view function, std::string_view message) {
    std::string line(function);
    if (!message.starts_with('('))
        line += " - ";
    line += message;
    return line;
}

void logAt(int32_t channel, const CheckSite& site, const char* function, const char* message) {
    if (!channelEnabled(channel))
        return;
    const bool hasFunction = function != nullptr && *function != '\0';
    const bool hasMessage = message != nullptr && *message != '\0';
    if (hasFunction && hasMessage)
        logf(channel, "Log at %s:%d (%s) - %s", site.file, site.line, function, message);
    else if (hasFunction)
        logf(channel, "Log at %s:%d (%s)", site.file, site.line, function);
    else if (hasMessage)
        logf(channel, "Log at %s:%d - %s", site.file, site.line, message);
    else
        logf(channel, "Log at %s:%d", site.file, site.line);
}

void logRepeated(std::string_view identity, int32_t channel, std::string_view key,
                 const TextProducer& produce) {
    MasterLogger::logRepeated(identity, channel, key, produce);
}

} // namespace core
