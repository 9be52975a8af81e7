// The INI reader, compared with SimpleIni, inih and QSettings: parsing texts of several sizes from
// memory, opening a 100 kB file and a settings file of the tool, and the peak memory of a parse.

#include "utl_inireader.h"

// Narrow text without conversion, the fastest that SimpleIni offers.
#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <QSettings>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <ini.h>
#include <iostream>
#include <string>
#include <string_view>

namespace {

constexpr int64_t kKilo = 1000;
constexpr int64_t kMega = 1000 * kKilo;

// Sections of fifty keys, lines of about twenty bytes.
std::string makeIni(int64_t size) {
    std::string text;
    for (int section = 0; static_cast<int64_t>(text.size()) < size; ++section) {
        text += "[section_" + std::to_string(section) + "]\n";
        for (int key = 0; key < 50 && static_cast<int64_t>(text.size()) < size; ++key)
            text += "key_" + std::to_string(key) + "=value_" + std::to_string(key * 7919) + "\n";
    }
    return text;
}

// As the tool stores them, 64 bytes; with the "=" that SimpleIni needs.
const std::string& settings() {
    static const std::string text =
        "[NVR]\nAddress=nvr-1.customer.example.org\nPort=8080\nX=yyyyyy\n";
    return text;
}

void countBytes(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void parseCore(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        utl::IniReader reader;
        reader.parse(text.data(), text.size());
        benchmark::DoNotOptimize(reader.loaded());
    }
    countBytes(state, text);
}
void parseSimpleIni(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        CSimpleIniA reader;
        benchmark::DoNotOptimize(reader.LoadData(text.data(), text.size()));
    }
    countBytes(state, text);
}

void Parse_core(benchmark::State& state) { parseCore(state, makeIni(state.range(0))); }
void Parse_SimpleIni(benchmark::State& state) { parseSimpleIni(state, makeIni(state.range(0))); }
void ParseSettings_core(benchmark::State& state) { parseCore(state, settings()); }
void ParseSettings_SimpleIni(benchmark::State& state) { parseSimpleIni(state, settings()); }

// inih stores nothing; its users do, here in the usual two maps.
using Sections = std::map<std::string, std::map<std::string, std::string>>;
int keep(void* sections, const char* section, const char* name, const char* value) {
    (*static_cast<Sections*>(sections))[section].emplace(name, value);
    return 1;
}
void Parse_inih(benchmark::State& state) {
    const std::string text = makeIni(state.range(0));
    for (auto _ : state) {
        Sections sections;
        benchmark::DoNotOptimize(ini_parse_string(text.c_str(), &keep, &sections));
    }
    countBytes(state, text);
}

class IniFile {
public:
    explicit IniFile(const std::string& text)
        : d_path(d_folder.path().toStdString() + "/Settings") {
        std::ofstream(d_path, std::ios::binary) << text;
    }
    const std::string& path() const { return d_path; }

private:
    QTemporaryDir d_folder;
    std::string d_path;
};

template <typename Open>
void openFile(benchmark::State& state, const std::string& text, Open&& open) {
    const IniFile file(text);
    for (auto _ : state)
        open(file.path());
    countBytes(state, text);
}

void openCore(const std::string& path) {
    utl::IniReader reader;
    std::string value;
    benchmark::DoNotOptimize(reader.load(path));
    benchmark::DoNotOptimize(reader.get("NVR", "Port", value));
}
void openSimpleIni(const std::string& path) {
    CSimpleIniA reader;
    benchmark::DoNotOptimize(reader.LoadFile(path.c_str()));
    benchmark::DoNotOptimize(reader.GetValue("NVR", "Port"));
}

// QSettings caches what it has read and reads a file again only if it has changed. So the file
// grows before each opening, for our reader, too.
void grow(const std::string& path) {
    std::ofstream(path, std::ios::binary | std::ios::app) << '\n';
}
void openChangedCore(const std::string& path) {
    grow(path);
    openCore(path);
}
// QSettings parses a section when it is first asked for: measured for one section and for all.
void openQSettingsForOne(const std::string& path) {
    grow(path);
    const QSettings reader(QString::fromStdString(path), QSettings::IniFormat);
    benchmark::DoNotOptimize(reader.value("NVR/Port"));
}
void openQSettingsForAll(const std::string& path) {
    grow(path);
    const QSettings reader(QString::fromStdString(path), QSettings::IniFormat);
    benchmark::DoNotOptimize(reader.allKeys());
}

void Open100kB_core(benchmark::State& state) {
    openFile(state, makeIni(100 * kKilo), openChangedCore);
}
void Open100kB_QSettingsForOne(benchmark::State& state) {
    openFile(state, makeIni(100 * kKilo), openQSettingsForOne);
}
void Open100kB_QSettingsForAll(benchmark::State& state) {
    openFile(state, makeIni(100 * kKilo), openQSettingsForAll);
}
void OpenSettings_core(benchmark::State& state) { openFile(state, settings(), openCore); }
void OpenSettings_SimpleIni(benchmark::State& state) { openFile(state, settings(), openSimpleIni); }

// The peak memory of a child process, this program again, that loads a file, minus that of one that
// finds no file, divided by the file's size. The child prints it, since the system's count for a
// child starts with its parent's.
constexpr char kLoad[] = "--load";

void loadAndTellPeak(const char* path) {
    openCore(path);
    std::ifstream status("/proc/self/status");
    std::string word;
    while (word != "VmHWM:" && status >> word)
        continue;
    status >> word;
    std::cout << word << '\n';
}

double peakMemory(const std::string& path) {
    const std::string self = std::filesystem::canonical("/proc/self/exe");
    FILE* const child = popen((self + ' ' + kLoad + ' ' + path).c_str(), "r");
    double kilobytes = 0;
    if (std::fscanf(child, "%lf", &kilobytes) != 1) // NOLINT(cert-err34-c)
        std::cerr << "bench_ini: a run with " << kLoad << " failed\n";
    pclose(child);
    return kilobytes * 1024;
}

template <typename Make>
void loadFile(benchmark::State& state, Make make) {
    const std::string text = make(50 * kMega);
    const IniFile file(text);
    double memory = 0;
    for (auto _ : state)
        memory = peakMemory(file.path()) - peakMemory(file.path() + ".missing");
    state.counters["memory_in_files"] = memory / static_cast<double>(text.size());
}

// Properties of four bytes, as different as possible.
std::string makeShortestIni(int64_t size) {
    std::string text;
    for (int number = 0; static_cast<int64_t>(text.size()) < size; ++number) {
        if (number % 64 == 0)
            text += "[" + std::to_string(number) + "]\n";
        text += {static_cast<char>('0' + number % 64), '=', '1', '\n'};
    }
    return text;
}

void Load50MB_core_ordinary(benchmark::State& state) { loadFile(state, makeIni); }
void Load50MB_core_shortest(benchmark::State& state) { loadFile(state, makeShortestIni); }

BENCHMARK(Parse_core)->Arg(100 * kKilo)->Arg(10 * kMega)->Arg(100 * kMega);
BENCHMARK(Parse_SimpleIni)->Arg(100 * kKilo)->Arg(10 * kMega);
BENCHMARK(Parse_inih)->Arg(100 * kKilo)->Arg(10 * kMega);
BENCHMARK(ParseSettings_core);
BENCHMARK(ParseSettings_SimpleIni);
BENCHMARK(Open100kB_core);
BENCHMARK(Open100kB_QSettingsForOne);
BENCHMARK(Open100kB_QSettingsForAll);
BENCHMARK(OpenSettings_core);
BENCHMARK(OpenSettings_SimpleIni);
BENCHMARK(Load50MB_core_ordinary)->Iterations(1);
BENCHMARK(Load50MB_core_shortest)->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == kLoad) {
        loadAndTellPeak(argv[2]);
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
