#pragma once

#include "core_check.h"
#include "core_v2masterlogger.h"
#include "core_varargs.h"

#include <string>
#include <string_view>

/// The calls that log. No function takes both finished texts and formats, so a '%' in a
/// folder name stays a '%'.
///
///     to log                                                  call
///     a format with arguments                                 logf
///     the same with arguments that cost something to make     CORE_LOGF
///     a format, in the name of a function                     logFrom
///     that something happened at this place of the source     logAt
///     a message that could come very often                    logRepeated
///     a finished text                                         logText
///
/// All but logText ask first whether the channel is enabled. logf, logText and CORE_LOGF_TO take
/// a logger as their first argument; otherwise it is MasterLogger::defaultLogger().
///
/// None of them throws. Without memory for a line, its bare format is logged, or nothing.
namespace core {

namespace detail {
/// An empty `function` is none.
void logFormatted(Logger& logger, int32_t channel, std::string_view function, const char* format,
                  const FormatArg* args, size_t count);
} // namespace detail

/// Logs a finished text, even if the channel is disabled.
inline void logText(int32_t channel, std::string_view text) {
    MasterLogger::logText(MasterLogger::defaultLogger(), channel, text);
}
inline void logText(Logger& logger, int32_t channel, std::string_view text) {
    MasterLogger::logText(logger, channel, text);
}

/// Formats by core::format and logs, if the channel is enabled. The arguments are
/// evaluated by the call; if that costs time, use CORE_LOGF.
template <typename... Args>
void logf(Logger& logger, int32_t channel, FormatString<kFormatKind<Args>...> format,
          const Args&... args) {
    if (!channelEnabled(channel))
        return;
    const detail::ErasedArguments<Args...> erased{detail::eraseArgument(args)...};
    detail::logFormatted(logger, channel, {}, format.text(), erased.data(), erased.size());
}
template <typename... Args>
void logf(int32_t channel, FormatString<kFormatKind<Args>...> format, const Args&... args) {
    logf(MasterLogger::defaultLogger(), channel, format, args...);
}

/// `message` as a line of the named function: joined directly when it begins with
/// "(", otherwise by " - ". Names are written out ("utl::IniReader::load"), a
/// leading "NS_" left off.
std::string withFunction(std::string_view function, std::string_view message);

/// logf for a line of the named function.
template <typename... Args>
void logFrom(int32_t channel, std::string_view function, FormatString<kFormatKind<Args>...> format,
             const Args&... args) {
    if (!channelEnabled(channel))
        return;
    const detail::ErasedArguments<Args...> erased{detail::eraseArgument(args)...};
    detail::logFormatted(MasterLogger::defaultLogger(), channel, function, format.text(),
                         erased.data(), erased.size());
}

/// Logs on WARN that the named function had too little memory. Returns false, as such
/// functions then do.
bool logNoMemory(std::string_view function);

/// Logs "Log at FILE:LINE (FUNCTION) - MESSAGE" if the channel is enabled; a null or
/// empty function or message is left out, with its punctuation.
void logAt(int32_t channel, const CheckSite& site, const char* function = nullptr,
           const char* message = nullptr);

/// Logs through the installed LogRImpl: see DefaultLogRImpl for the rules.
void logRepeated(std::string_view identity, int32_t channel, std::string_view key,
                 const TextProducer& produce);

} // namespace core

/// core::logf whose format's arguments, and whose logger, are evaluated only when the
/// channel is enabled. Statements.
#define CORE_LOGF(channel, ...)                                                                    \
    CORE_LOGF_TO(core::MasterLogger::defaultLogger(), channel, __VA_ARGS__)
#define CORE_LOGF_TO(logger, channel, ...)                                                         \
    do {                                                                                           \
        const int32_t coreLogChannel = (channel);                                                  \
        if (core::channelEnabled(coreLogChannel))                                                  \
            core::logf((logger), coreLogChannel, __VA_ARGS__);                                     \
    } while (false)
