// The formatter, compared with snprintf, fmt::sprintf and absl::StrFormat. Every function returns a
// new std::string with the same text.

#include "core_varargs.h"

#include <absl/strings/str_format.h>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <fmt/printf.h>
#include <string>

namespace {

template <typename... Args>
std::string viaSnprintf(const char* format, Args... args) {
    char buffer[256];
    const int length = std::snprintf(buffer, sizeof buffer, format, args...); // NOLINT
    return {buffer, static_cast<size_t>(length)};
}

struct Texts {
    // Hidden from the optimiser, so that no library can compute their lengths at compile time.
    std::string oldAddress = "192.168.100.101", oldPort = "8080", address = "10.0.0.2", port = "81";
    Texts() { benchmark::DoNotOptimize(this); }
};

constexpr char kChange[] = "NVR connection changed from '%s:%s' to '%s%s'";
constexpr char kStamped[] = "%04d-%02d-%02d %02d:%02d:%02d [%s] %s";
constexpr char kReals[] = "%.3f %g %.2f";

void FourStrings_core(benchmark::State& state) {
    const Texts t;
    for (auto _ : state) {
        benchmark::DoNotOptimize(core::format(kChange, t.oldAddress, t.oldPort, t.address, t.port));
    }
}
void FourStrings_snprintf(benchmark::State& state) {
    const Texts t;
    for (auto _ : state) {
        benchmark::DoNotOptimize(viaSnprintf(kChange, t.oldAddress.c_str(), t.oldPort.c_str(),
                                             t.address.c_str(), t.port.c_str()));
    }
}
void FourStrings_fmt(benchmark::State& state) {
    const Texts t;
    for (auto _ : state) {
        benchmark::DoNotOptimize(fmt::sprintf(kChange, t.oldAddress, t.oldPort, t.address, t.port));
    }
}
void FourStrings_absl(benchmark::State& state) {
    const Texts t;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            absl::StrFormat(kChange, t.oldAddress, t.oldPort, t.address, t.port));
    }
}

// A stamped log line: six integers and two texts.
struct Stamped {
    int year = 2022, month = 3, day = 29, hour = 10, minute = 30, second = 18;
    const char* channel = "NORM";
    const char* text = "NVR connection changed";
    Stamped() { benchmark::DoNotOptimize(this); }

    template <typename Format>
    void run(benchmark::State& state, Format&& format) const {
        for (auto _ : state) {
            benchmark::DoNotOptimize(format(year, month, day, hour, minute, second, channel, text));
        }
    }
};

void SixIntegers_core(benchmark::State& state) {
    Stamped().run(state, [](auto... args) { return core::format(kStamped, args...); });
}
void SixIntegers_snprintf(benchmark::State& state) {
    Stamped().run(state, [](auto... args) { return viaSnprintf(kStamped, args...); });
}
void SixIntegers_fmt(benchmark::State& state) {
    Stamped().run(state, [](auto... args) { return fmt::sprintf(kStamped, args...); });
}
void SixIntegers_absl(benchmark::State& state) {
    Stamped().run(state, [](auto... args) { return absl::StrFormat(kStamped, args...); });
}

struct Reals {
    double a = 3.14159265, b = 6.02214076e23, c = 12345.678;
    Reals() { benchmark::DoNotOptimize(this); }

    template <typename Format>
    void run(benchmark::State& state, Format&& format) const {
        for (auto _ : state)
            benchmark::DoNotOptimize(format(a, b, c));
    }
};

void ThreeDoubles_core(benchmark::State& state) {
    Reals().run(state, [](auto... args) { return core::format(kReals, args...); });
}
void ThreeDoubles_snprintf(benchmark::State& state) {
    Reals().run(state, [](auto... args) { return viaSnprintf(kReals, args...); });
}
void ThreeDoubles_fmt(benchmark::State& state) {
    Reals().run(state, [](auto... args) { return fmt::sprintf(kReals, args...); });
}
void ThreeDoubles_absl(benchmark::State& state) {
    Reals().run(state, [](auto... args) { return absl::StrFormat(kReals, args...); });
}

BENCHMARK(FourStrings_core);
BENCHMARK(FourStrings_snprintf);
BENCHMARK(FourStrings_fmt);
BENCHMARK(FourStrings_absl);
BENCHMARK(SixIntegers_core);
BENCHMARK(SixIntegers_snprintf);
BENCHMARK(SixIntegers_fmt);
BENCHMARK(SixIntegers_absl);
BENCHMARK(ThreeDoubles_core);
BENCHMARK(ThreeDoubles_snprintf);
BENCHMARK(ThreeDoubles_fmt);
BENCHMARK(ThreeDoubles_absl);

} // namespace

BENCHMARK_MAIN();
