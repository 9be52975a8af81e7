#pragma once

#include "core_v2masterlogger.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace core {

/// Writes the log into a file, which any program may install:
///
///     const core::FileLogImpl::Options options{.path = "files/tool.log"};
///     const core::Globals globals(std::make_unique<core::FileLogImpl>(options));
///
/// Each line has the local time with its offset from UTC, the thread, the channel, the
/// logger's id if it has one, and the text:
///
///     2022-03-29 12:30:18.250 +0200 [4711] WARN {3} can't open 'a'
///
/// Further lines of a text begin with a tab, and its other control characters become '?',
/// so that no text can pass for a line of the log.
///
/// Lines on CRIT and WARN, and all before them, are written before the call returns;
/// others wait until there are 64 KiB, or for `flush`. A file that would grow above its
/// limit is renamed to PATH.1, that one to PATH.2 and so on, and a new one is started; no
/// line is split between files. If renaming fails, the file grows by the same amount
/// before the next try. On Linux a new file is started if somebody has renamed or deleted
/// the open one; Windows does not allow that.
///
/// If writing fails, standard error gets one message, and up to 1 MiB of lines wait. Once
/// writing works again, the log goes on, with a line that says how many lines were
/// dropped. Any thread; lines are in the order of their times.
class FileLogImpl : public LogImpl {
public:
    /// Which file, and how much of it is kept.
    struct Options {
        std::string path;                      ///< UTF-8; its folder must exist
        uint64_t maxSize = uint64_t{4} << 20U; ///< of a file, in bytes
        int32_t maxFiles = 5;                  ///< the current one included
    };

    /// Opens the file for appending. A failure is logged by the implementation installed
    /// at that time; each flush tries again.
    explicit FileLogImpl(Options options);
    ~FileLogImpl() override;

    /// Whether the file could be opened.
    bool isOpen() const;

    void write(int32_t channel, uint32_t loggerId, const ChannelRecord& record, const char* text,
               size_t length) override;

    /// Writes all waiting lines. False: not all could be written.
    bool flush();

private:
    struct Closer {
        void operator()(FILE* file) const { std::fclose(file); }
    };

    // All under d_mutex.
    void append(std::string_view line);
    bool flushBuffer();
    bool writeBuffer();
    bool openFile();
    void rotate();
    void tellOnce(int error);
    std::string rotatedPath(int32_t number) const;

    const Options d_options;
    mutable std::mutex d_mutex;
    std::unique_ptr<FILE, Closer> d_file;
    uint64_t d_size = 0;   // of the file
    std::string d_buffer;  // not written yet
    bool d_inLine = false; // whether it begins within a line
    uint64_t d_lost = 0;   // lines
    bool d_told = false;   // standard error has the message
};

} // namespace core
