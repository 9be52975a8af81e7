// The text of a stack 30 calls deep, with names and source lines, compared with Boost.Stacktrace
// over libbacktrace. Both have already read the debug information. Also what the crash guard adds
// to a program's start: the aim is below 50 microseconds.

#include "core_guard.h"
#include "core_stacktrace.h"

#include <benchmark/benchmark.h>
#include <boost/stacktrace.hpp>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>

namespace {

using MakeText = std::string (*)();

std::string textOfCore() { return core::StackTrace{}.getStackText(); }
std::string textOfBoost() { return to_string(boost::stacktrace::stacktrace()); }

/// Calls through `depth` different functions.
template <int depth>
[[gnu::noinline]] std::string textFrom(MakeText make) {
    std::string text;
    if constexpr (depth > 1)
        text = textFrom<depth - 1>(make);
    else
        text = make();
    benchmark::DoNotOptimize(text.data());
    return text;
}

void stackText(benchmark::State& state, MakeText make) {
    constexpr int kDepth = 30;
    const std::string first = textFrom<kDepth>(make);
    if (first.find("textFrom") == std::string::npos)
        state.SkipWithError("no names");
    for (auto _ : state)
        benchmark::DoNotOptimize(textFrom<kDepth>(make));
}
void StackText_core(benchmark::State& state) { stackText(state, textOfCore); }
void StackText_boost_libbacktrace(benchmark::State& state) { stackText(state, textOfBoost); }

// ---- The guard's set-up, each time in a new process, since a program does it once

constexpr const char* kSetUpAlone = "--set-up-alone";
double begun = 0;

double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void setUpAlone() {
    begun = processorSeconds();
    core::runGuardedWith(
        [](int, char**) { return std::printf("%.9f", processorSeconds() - begun); }, 0, nullptr);
}

void GuardSetUp_core(benchmark::State& state) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    for (auto _ : state) {
        FILE* const child = popen(("'" + program + "' " + kSetUpAlone).c_str(), "r");
        double seconds = 0;
        if (child == nullptr || std::fscanf(child, "%lf", &seconds) != 1)
            state.SkipWithError("no figure");
        pclose(child);
        state.SetIterationTime(seconds);
    }
}

BENCHMARK(GuardSetUp_core)->UseManualTime()->Iterations(30)->Unit(benchmark::kMicrosecond);
BENCHMARK(StackText_core)->Unit(benchmark::kMillisecond);
BENCHMARK(StackText_boost_libbacktrace)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && argv[1] == std::string(kSetUpAlone)) {
        setUpAlone();
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
