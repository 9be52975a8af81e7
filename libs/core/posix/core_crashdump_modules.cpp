#include "core_crashdump_system.h"

#include <absl/debugging/symbolize.h>
#include <dlfcn.h>
#include <link.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace core::detail {
namespace {

constexpr size_t kNameSize = 512;
constexpr size_t kWindow = 256; // bytes of a stack's memory
constexpr size_t kWindowLine = 16;

template <typename T>
T* pointerTo(uintptr_t address) {
    return reinterpret_cast<T*>(address); // NOLINT(performance-no-int-to-ptr)
}

bool findModule(uintptr_t address, dl_find_object& object) {
    return _dl_find_object(pointerTo<void>(address), &object) == 0;
}

void addHexByte(ReportLine& line, unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    line << kDigits.substr(byte >> 4U, 1) << kDigits.substr(byte & 15U, 1);
}

/// The build-id among the notes of a part of a module.
std::string_view buildIdIn(const char* notes, size_t size) {
    while (size >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) note;
        std::memcpy(&note, notes, sizeof note);
        const size_t name = (note.n_namesz + 3U) & ~size_t{3};
        const size_t whole = sizeof note + name + ((note.n_descsz + 3U) & ~size_t{3});
        if (whole > size)
            break;
        if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4)
            return {notes + sizeof note + name, note.n_descsz};
        notes += whole;
        size -= whole;
    }
    return {};
}

std::string_view buildIdOf(const dl_find_object& object) {
    const auto* const header = static_cast<const ElfW(Ehdr)*>(object.dlfo_map_start);
    if (std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0)
        return {};
    const auto* const parts = reinterpret_cast<const ElfW(Phdr)*>(
        static_cast<const char*>(object.dlfo_map_start) + header->e_phoff);
    for (size_t i = 0; i < header->e_phnum; ++i) {
        if (parts[i].p_type != PT_NOTE)
            continue;
        const auto* const notes =
            pointerTo<const char>(object.dlfo_link_map->l_addr + parts[i].p_vaddr);
        if (const std::string_view id = buildIdIn(notes, parts[i].p_memsz); !id.empty())
            return id;
    }
    return {};
}

std::string_view nameOf(const link_map& module) {
    return *module.l_name != '\0' ? module.l_name : "the program";
}

void addModule(ReportLine& line, uintptr_t address) {
    dl_find_object object;
    if (!findModule(address, object))
        return;
    line << " (" << nameOf(*object.dlfo_link_map) << "+";
    line.addHex(address - object.dlfo_link_map->l_addr) << ")";
}

ReportLine& startFrame(ReportLine& line, size_t number, uintptr_t address) {
    line << "    #";
    line.addTwoDigits(static_cast<int>(number)) << " ";
    return line.addHex(address);
}

void writeModule(ReportFile& file, const link_map& module) {
    dl_find_object object;
    if (!findModule(reinterpret_cast<uintptr_t>(module.l_ld), object))
        return;
    ReportLine line;
    line << "    ";
    line.addHex(reinterpret_cast<uintptr_t>(object.dlfo_map_start)) << "-";
    line.addHex(reinterpret_cast<uintptr_t>(object.dlfo_map_end)) << " ";
    const std::string_view id = buildIdOf(object);
    for (const char byte : id)
        addHexByte(line, static_cast<unsigned char>(byte));
    line << (id.empty() ? "without-build-id " : " ") << nameOf(module);
    if (*module.l_name == '\0')
        line << " " << crashNames().program.view();
    file.write(line << "\n");
}

void writeMemory(ReportFile& file, uintptr_t from) {
    std::array<unsigned char, kWindow> memory{};
    size_t known = 0;
    while (known < kWindow && readMemory(from + known, memory.data() + known, kWindowLine))
        known += kWindowLine;
    for (size_t i = 0; i < known; i += kWindowLine) {
        ReportLine line;
        line << "    ";
        line.addHex(from + i) << ":";
        for (size_t k = i; k < i + kWindowLine; ++k)
            addHexByte(line << " ", memory[k]);
        file.write(line << "\n");
    }
}

} // namespace

bool readMemory(uintptr_t from, void* to, size_t size) {
    const iovec local{to, size};
    const iovec remote{pointerTo<void>(from), size};
    return ::process_vm_readv(::getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

bool isCode(uintptr_t address) {
    dl_find_object object;
    return findModule(address, object);
}

// Uses the loader's own list: its function for that takes a lock.
void writeModules(ReportFile& file) {
    file.write("\nModules, with their build-ids\n");
    for (const link_map* module = _r_debug.r_map; module != nullptr; module = module->l_next)
        writeModule(file, *module);
}

void writeAddresses(ReportFile& file, const CrashStack& stack) {
    ReportLine title;
    title << "\nAddresses of thread " << stack.thread << "\n";
    file.write(title);
    for (size_t i = 0; i < stack.count; ++i) {
        ReportLine line;
        startFrame(line, i, stack.frames[i]);
        addModule(line, stack.frames[i]);
        file.write(line << "\n");
    }
    if (stack.top != 0)
        writeMemory(file, stack.top);
}

void writeNames(ReportFile& file, const CrashStack& stack) {
    ReportLine title;
    title << "\nStack of thread " << stack.thread << "\n";
    file.write(title);
    for (size_t i = 0; i < stack.count; ++i) {
        std::array<char, kNameSize> name{"?"};
        absl::Symbolize(pointerTo<const void>(stack.frames[i]), name.data(), kNameSize);
        ReportLine line;
        startFrame(line, i, stack.frames[i]) << " in " << name.data();
        addModule(line, stack.frames[i]);
        file.write(line << "\n");
    }
}

} // namespace core::detail
