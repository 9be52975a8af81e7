#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace core {
class GUniqueBuf;
}

namespace utl {

/// A file's bytes as they are: no line end is translated.
///
/// Paths are UTF-8. Child processes never inherit an open file. Operations return false on
/// failure, too little memory included, after a line on WARN with the file and the system's
/// reason, if any. An object is used by one thread at a time, and can be reused once it is
/// closed; the static functions may be called on any thread.
class File {
public:
    // Open flags. kRead, kWrite or both must be set.
    static constexpr int32_t kRead = 1;       ///< what is there
    static constexpr int32_t kWrite = 2;      ///< over what is there
    static constexpr int32_t kCreate = 4;     ///< when it is missing
    static constexpr int32_t kTruncate = 8;   ///< with kWrite; without it, opening fails
    static constexpr int32_t kExclusive = 16; ///< with kCreate: fail if it exists
    static constexpr int32_t kFlush = 32;     ///< closing brings everything to disk
    static constexpr int32_t kAppend = 128;   ///< every write goes to the end

    /// Permission mode: read and write, 0600. On Windows, where the folder grants rights, a
    /// mode only makes a file read-only or not.
    static constexpr int32_t kOwnerOnly = 0x180;

    /// What loadIntoMem accepts by default: 64 MiB.
    static constexpr uint64_t kMaxLoadSize = uint64_t{1} << 26U;

    class System; ///< its system calls; tests replace it
    static const System& theSystem();

    File() : File(theSystem()) {}
    /// The system must outlive the file.
    explicit File(const System& system) : d_system(&system) {}
    ~File() { (void)close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// `mode` is the permission of a file that is created, less the umask. Never waits: a
    /// pipe or another device is not opened for reading. A failed check if a file is
    /// already open, which stays open, and for flags without kRead and kWrite.
    [[nodiscard]] bool openFile(const std::string& name, int32_t flags, int32_t mode = kOwnerOnly);

    /// False also if a flush has failed; the file is closed in any case. True if nothing is
    /// open.
    [[nodiscard]] bool close();

    /// Whether openFile succeeded, and close was not called since.
    bool isOpen() const { return d_handle >= 0; }

    /// Of the file that is, or was last, open.
    const std::string& name() const { return d_name; }
    int32_t flags() const { return d_flags; }
    int32_t mode() const { return d_mode; }

    /// Bytes from the start; 0 after opening. With kAppend, writing counts from where
    /// reading left off.
    uint64_t position() const { return d_position; }

    /// The file's size now, in bytes. A folder has none.
    [[nodiscard]] bool size(uint64_t& bytes) const;

    /// Replaces `buffer` by the next `count` bytes, or fewer at the file's end. On failure
    /// it holds what was read before.
    [[nodiscard]] bool readInto(std::string& buffer, size_t count);

    /// Writes all of it, here or at `offset`, and leaves the position after it.
    [[nodiscard]] bool write(const void* data, size_t count);
    [[nodiscard]] bool write(uint64_t offset, const void* data, size_t count);

    /// Reads a whole file of at most `maxSize` bytes. On failure `buffer` is empty.
    [[nodiscard]] static bool loadIntoMem(const std::string& path, std::string& buffer,
                                          uint64_t maxSize = kMaxLoadSize,
                                          const System& system = theSystem());

    /// Writes a whole file in place; kWrite, kCreate and kTruncate are added to `flags`. On
    /// failure, what has been written stays.
    [[nodiscard]] static bool createFromMem(const std::string& path, const void* data, size_t size,
                                            int32_t flags, int32_t mode,
                                            const System& system = theSystem());

    /// Replaces a whole file, or makes it, through a temporary one in its folder that is
    /// brought to disk and renamed: a reader, or the next start after a power cut, finds
    /// either the old content or the new. The bytes go to the very file that was made, but
    /// it is renamed by name: whoever may write in the folder can put another in its place,
    /// as they could replace the target. The result belongs to whoever stored it, with
    /// kOwnerOnly; owner and mode of the old file are lost, and a link is itself replaced.
    /// A temporary file that could not be written is left for inspection. A failed check if
    /// `path` has no file name at its end.
    [[nodiscard]] static bool createFromMemSafe(const std::string& path, const void* data,
                                                size_t size, const System& system = theSystem());
    [[nodiscard]] static bool createFromMemSafe(const std::string& path,
                                                const core::GUniqueBuf& buffer);

private:
    /// Takes ownership of an open file.
    void attach(int handle, std::string name, int32_t flags, int32_t mode) noexcept;
    void logReadError(size_t count, int error) const;
    void logWriteError(uint64_t offset, size_t count, int error) const;

    const System* d_system;
    std::string d_name;
    int32_t d_flags = 0;
    int32_t d_mode = 0;
    int d_handle = -1;
    uint64_t d_position = 0;
};

} // namespace utl
