#include "crashing.h"

#include "core_wrapper.h"

#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>

namespace crashing {
namespace {

const char* stack(size_t& size) {
    pthread_attr_t attributes;
    void* lowest = nullptr;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstack(&attributes, &lowest, &size);
    pthread_attr_destroy(&attributes);
    return static_cast<const char*>(lowest);
}

} // namespace

const char* endOfStack() {
    size_t size = 0;
    return stack(size);
}

const char* topOfStack() {
    size_t size = 0;
    const char* const lowest = stack(size);
    return lowest + size;
}

void runGeneratedCode() {
#if defined(__x86_64__)
    // push rbp; mov rbp, rsp; sub rsp, 16; xor eax, eax; mov [rax], eax
    constexpr unsigned char kCode[] = {0x55, 0x48, 0x89, 0xe5, 0x48, 0x83,
                                       0xec, 0x10, 0x31, 0xc0, 0x89, 0x00};
#else
    constexpr unsigned char kCode[] = {0};
#endif
    void* const memory =
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    std::memcpy(memory, kCode, sizeof kCode);
    reinterpret_cast<void (*)()>(memory)();
    sleepForEver(); // so that it is no tail call
}

// Printing the heap's statistics holds its lock; here they go into a pipe that nobody reads.
void lockHeap() {
    int ends[2];
    if (pipe(ends) != 0)
        std::abort();
    dup2(ends[1], STDERR_FILENO);
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    while (write(ends[1], "full", 4) > 0)
        ;
    fcntl(ends[1], F_SETFL, 0);
    std::thread(malloc_stats).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

void lockLoader() {} // no dump needs it

void lockOutput() { flockfile(stdout); }

void useUpMemory() {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = 1;
    setrlimit(RLIMIT_AS, &limit);
    for (size_t size = 1U << 20U; size >= 16; size /= 2) {
        while (std::malloc(size) != nullptr) // NOLINT: to be lost
            ;
    }
}

void useUpDescriptors() {
    while (open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0)
        ;
}

void replaceProgram() {
    const std::string path = core::Wrapper::executablePath(4096);
    std::filesystem::rename(path, path + ".old");
    std::filesystem::remove(path + ".old");
}

void signalFromOutside() {
    const pid_t self = getpid();
    if (fork() == 0) {
        kill(self, SIGSEGV);
        _exit(0);
    }
    sleepForEver();
}

void fillOutput() {
    fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK);
    const char text[4096] = {};
    while (write(STDOUT_FILENO, text, sizeof text) > 0)
        ;
    while (write(STDOUT_FILENO, text, 1) > 0)
        ;
    fcntl(STDOUT_FILENO, F_SETFL, 0);
}

void showThrow() {} // the report is read

} // namespace crashing
