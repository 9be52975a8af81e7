#include "core_crashdump_system.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

namespace core::detail {
namespace {

constinit std::array<int, 4> reserve{-1, -1, -1, -1};

// For names: Abseil maps memory of its own.
constexpr size_t kReservedSize = 4194304;
constinit void* reservedMemory = nullptr;

/// Never through a link, nor into an existing file.
int createFile(const char* path) {
    return ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
}

} // namespace

void reserveForReport() {
    reserve[0] = ::eventfd(0, EFD_CLOEXEC); // the descriptor that is fastest to make
    for (size_t i = 1; i < reserve.size(); ++i)
        reserve[i] = ::fcntl(reserve[0], F_DUPFD_CLOEXEC, 0);
    reservedMemory = ::mmap(nullptr, kReservedSize, PROT_NONE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
}

void releaseReserve() {
    for (int& file : reserve) {
        if (file >= 0)
            ::close(file);
        file = -1;
    }
    if (reservedMemory != nullptr && reservedMemory != MAP_FAILED)
        ::munmap(reservedMemory, kReservedSize);
    reservedMemory = nullptr;
}

void ReportFile::open() {
    d_error = 0;
    releaseReserve();
    PathText folder = dumpPlace().folder;
    d_path = dumpPlace().file;
    folder.replace('\\', '/');
    d_path.replace('\\', '/');
    d_temporary = d_path;
    d_temporary << "." << ::getpid();
    ::mkdir(folder.c_str(), S_IRWXU);
    d_file = createFile(d_temporary.c_str());
    if (d_file < 0 && errno == EEXIST) { // of an earlier process with this number
        ::unlink(d_temporary.c_str());
        d_file = createFile(d_temporary.c_str());
    }
    if (d_file < 0)
        d_error = errno;
}

void ReportFile::write(std::string_view text) {
    while (!text.empty() && d_error == 0) {
        const ssize_t written = ::write(d_file, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<size_t>(written));
        else if (errno != EINTR)
            d_error = errno;
    }
}

void ReportFile::finish(DumpResult& result) {
    if (d_file >= 0 && ::close(d_file) != 0 && d_error == 0)
        d_error = errno;
    if (d_error == 0 && d_file >= 0 && ::rename(d_temporary.c_str(), d_path.c_str()) != 0)
        d_error = errno;
    if (d_error != 0 && d_file >= 0)
        ::unlink(d_temporary.c_str());
    result = {d_error == 0 && d_file >= 0, static_cast<uint32_t>(d_error)};
    d_file = -1;
}

} // namespace core::detail
