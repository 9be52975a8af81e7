#include "core_filelog.h"

#include "core_log.h"
#include "core_timespec.h"
#include "core_varargs.h"
#include "core_wrapper.h"
#include "internal/core_filelog_system.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <utility>

namespace core {
namespace {

constexpr size_t kFlushSize = size_t{64} << 10U;
constexpr size_t kWaitingLimit = size_t{1} << 20U;
constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr int64_t kNanosecondsPerMillisecond = 1'000'000;

/// "2022-03-29 12:30:18.250 +0200".
std::string timeText(int64_t time) {
    const CivilTime local = localCivilTime(time);
    const int64_t inSecond = time - secondsOfCivilTime(utcCivilTime(time)) * kNanosecondsPerSecond;
    const int64_t east =
        (secondsOfCivilTime(local) - secondsOfCivilTime(utcCivilTime(time))) / 60; // minutes
    return format("%04d-%02d-%02d %02d:%02d:%02d.%03d %c%02d%02d", local.year, local.month,
                  local.day, local.hour, local.minute, local.second,
                  inSecond / kNanosecondsPerMillisecond, east < 0 ? '-' : '+', std::abs(east) / 60,
                  std::abs(east) % 60);
}

void appendText(std::string& line, std::string_view text) {
    for (const char ch : text) {
        if (ch == '\n')
            line += "\n\t";
        else if ((static_cast<unsigned char>(ch) < ' ' && ch != '\t') || ch == '\x7f')
            line += '?';
        else
            line += ch;
    }
    line += '\n';
}

bool isUrgent(int32_t channel) { return channel == kChannelCrit || channel == kChannelWarn; }

} // namespace

FileLogImpl::FileLogImpl(Options options) : d_options(std::move(options)) {
    int error = 0;
    {
        const std::lock_guard lock(d_mutex);
        d_told = !openFile();
        error = errno;
    }
    if (d_told)
        logFrom(kChannelWarn, "core::FileLogImpl", "(%s) - failed opening : %s", d_options.path,
                Wrapper::runtimeErrorText(error));
}

FileLogImpl::~FileLogImpl() {
    try {
        flush();
    } catch (const std::bad_alloc&) {
        if (d_file != nullptr)
            writeBuffer();
    }
}

bool FileLogImpl::isOpen() const {
    const std::lock_guard lock(d_mutex);
    return d_file != nullptr;
}

void FileLogImpl::write(int32_t channel, uint32_t loggerId, const ChannelRecord& record,
                        const char* text, size_t length) {
    bool isIn = false;
    try {
        std::string rest = format(" [%u] %s ", detail::systemThreadId(), record.name);
        if (loggerId != 0)
            rest += format("{%u} ", loggerId);
        appendText(rest, std::string_view(text, length));
        const std::lock_guard lock(d_mutex);
        append(timeText(now()) + rest);
        isIn = true;
        if (isUrgent(channel) || d_buffer.size() >= kFlushSize)
            flushBuffer();
    } catch (const std::bad_alloc&) {
        const std::lock_guard lock(d_mutex);
        d_lost += isIn ? 0 : 1;
    }
}

bool FileLogImpl::flush() {
    const std::lock_guard lock(d_mutex);
    return flushBuffer();
}

void FileLogImpl::append(std::string_view line) {
    if (d_buffer.size() + line.size() > kWaitingLimit) {
        ++d_lost;
        return;
    }
    if (d_size + d_buffer.size() + line.size() > d_options.maxSize && flushBuffer() && d_size > 0)
        rotate();
    d_buffer += line;
}

bool FileLogImpl::flushBuffer() {
    if (d_buffer.empty())
        return true;
    if (d_file != nullptr && !d_inLine && !detail::isFileAt(d_file.get(), d_options.path))
        d_file.reset();
    if ((d_file == nullptr && !openFile()) || !writeBuffer()) {
        tellOnce(errno);
        return false;
    }
    d_told = false;
    if (d_lost > 0) {
        d_buffer = format("%s [%u] WARN %u lines found no room here\n", timeText(now()),
                          detail::systemThreadId(), d_lost);
        d_lost = 0;
        return flushBuffer();
    }
    return true;
}

/// The stream has no buffer of its own, so that what was written is known.
bool FileLogImpl::writeBuffer() {
    const size_t written = std::fwrite(d_buffer.data(), 1, d_buffer.size(), d_file.get());
    const int error = errno;
    std::clearerr(d_file.get());
    d_size += written;
    if (written > 0)
        d_inLine = d_buffer[written - 1] != '\n';
    d_buffer.erase(0, written);
    errno = error;
    return d_buffer.empty();
}

bool FileLogImpl::openFile() {
    d_file.reset(Wrapper::fopen(d_options.path, "ab"));
    if (d_file == nullptr)
        return false;
    std::setvbuf(d_file.get(), nullptr, _IONBF, 0);
    d_size = detail::fileSize(d_file.get());
    return true;
}

void FileLogImpl::rotate() {
    d_file.reset();
    bool renamed = true;
    for (int32_t number = d_options.maxFiles - 1; number >= 1; --number)
        renamed = detail::renameLog(rotatedPath(number - 1), rotatedPath(number)) || number > 1;
    if (d_options.maxFiles <= 1)
        renamed = Wrapper::unlink(d_options.path) == 0;
    if (openFile() && !renamed)
        d_size = 0;
}

void FileLogImpl::tellOnce(int error) {
    if (std::exchange(d_told, true))
        return;
    std::fprintf(stderr, "FileLogImpl: cannot write '%s': %s\n", d_options.path.c_str(),
                 Wrapper::runtimeErrorText(error).c_str());
}

std::string FileLogImpl::rotatedPath(int32_t number) const {
    return number == 0 ? d_options.path : d_options.path + format(".%d", number);
}

} // namespace core
