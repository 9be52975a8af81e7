#include "core_stacktrace.h"

#include "core_log.h"
#include "internal/core_stacktrace_lines.h"

#include <new>
#include <string_view>
#include <utility>

namespace core {
namespace {

constexpr std::string_view kGetStack = "core::StackTrace::getStack";

// Both separators on both platforms: the debug information of a cross-built program names
// its sources with '/', beside images with '\\'.
std::string baseName(const std::string& path) { return path.substr(path.find_last_of("\\/") + 1); }

std::string frameLine(size_t number, const StackFrame& frame) {
    std::string line =
        core::format("#%02d in %s", number, frame.function.empty() ? "?" : frame.function);
    if (!frame.sourceFile.empty())
        line += core::format(" at %s:%d", baseName(frame.sourceFile), frame.line);
    if (!frame.imageName.empty())
        line += core::format(" (%s)", baseName(frame.imageName));
    return line;
}

} // namespace

std::vector<std::string> detail::stackLines(const std::vector<StackFrame>& frames) {
    constexpr size_t kDiscarded = StackTrace::kDiscarded;
    if (frames.size() <= kDiscarded)
        return {core::format("Stack with 0 frames (discarded %d)", kDiscarded)};
    std::vector<std::string> lines;
    bool nameless = false;
    for (size_t i = kDiscarded; i < frames.size(); ++i) {
        const bool wasNameless = std::exchange(nameless, frames[i].function.empty());
        if (wasNameless && nameless)
            continue;
        if (wasNameless)
            lines.push_back(core::format("#%02d in ?", i));
        lines.push_back(frameLine(i + 1 - kDiscarded, frames[i]));
    }
    if (nameless)
        lines.push_back(core::format("#%02d in ?", frames.size()));
    return lines;
}

void detail::logNoModule(const std::string& image, const std::string& module, uint64_t base,
                         uint32_t size) {
    // "%d" of a name is itself a reported mismatch; the line is known by this text.
    constexpr RuntimeFormat kForm =
        runtimeFormat("failed to load image=%s module=%d base_addr=%d, size=%d");
    logFrom(kChannelNorm, "core::StackTrace::loadModule", kForm, image, module, base, size);
}

void detail::logNoSymbol(uint64_t address, uint32_t error) {
    logFrom(kChannelNorm, kGetStack, "failed to get symbol from addr %d : %d", address, error);
}

void detail::logNoModuleInfo() { logFrom(kChannelNorm, kGetStack, "failed to get module info"); }

// The discarded frames are counted, so neither of these may be inlined into its caller
// or call by a jump.
[[gnu::noinline]] void StackTrace::logStack(int32_t channel, Logger& logger) {
    std::vector<StackFrame> frames;
    const bool walked = getStack(frames, kMaxFrames);
    if (!channelEnabled(channel))
        return;
    if (!walked) {
        logText(logger, channel, "Failed to get stack");
        return;
    }
    for (const std::string& line : detail::stackLines(frames))
        logText(logger, channel, line);
}

[[gnu::noinline]] std::string StackTrace::getStackText() {
    // A handle of its own: the default one is shared by all threads.
    Logger logger;
    StringCollector capture;
    try {
        logger.addCollector(&capture);
        logStack(kChannelString, logger);
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): what there is will do
    }
    return std::move(capture.text);
}

} // namespace core
