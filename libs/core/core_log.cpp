#include "core_log.h"

#include <exception>

namespace core {

std::string withFunction(std::string_view function, std::string_view message) {
    std::string line(function);
    if (!message.starts_with('('))
        line += " - ";
    line += message;
    return line;
}

void detail::logFormatted(Logger& logger, int32_t channel, std::string_view function,
                          const char* format, const FormatArg* args, size_t count) {
    std::string text;
    std::string_view line = text;
    try {
        formatTo(text, format, args, count);
        if (!function.empty())
            text = withFunction(function, text);
        line = text;
    } catch (const std::exception&) { // no memory: the bare format says more than nothing
        line = format;
    }
    MasterLogger::logEnabled(logger, channel, line);
}

bool logNoMemory(std::string_view function) {
    logFrom(kChannelWarn, function, "too little memory");
    return false;
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
