// The text of a stack 30 calls deep, with names and source lines, beside
// Boost.Stacktrace over libbacktrace. Both have read the debug information before.
// And what the crash guard costs a program's start: below 50 microseconds.

#include "core_guard.h"
#include "core_stacktrace.h"

#include <benchmark/benchmark.h>
#include <boost/stacktrace.hpp>
#include <string>

namespace {

using MakeText = std::string (*)();

std::string textOfCore() { return core::StackTrace{}.getStackText(); }
std::string textOfBoost() { return to_string(boost::stacktrace::stacktrace()); }

/// Calls through as many functions as `depth` says, each one of its own.
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

void GuardSetUp_core(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(core::runGuardedWith([](int, char**) { return 0; }, 0, nullptr));
}

BENCHMARK(GuardSetUp_core)->Unit(benchmark::kMicrosecond);
BENCHMARK(StackText_core)->Unit(benchmark::kMillisecond);
BENCHMARK(StackText_boost_libbacktrace)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
