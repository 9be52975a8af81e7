// A log call, compared with qCDebug and spdlog: disabled, and enabled into a sink that does
// nothing.

#include "core_log.h"

#include <QLoggingCategory>
#include <benchmark/benchmark.h>
#include <memory>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#include <string>

namespace {

Q_LOGGING_CATEGORY(disabledCategory, "orvistrand.bench", QtFatalMsg)

struct Texts {
    std::string oldAddress = "192.168.100.101", oldPort = "8080", address = "10.0.0.2", port = "81";
};

void Disabled_core(benchmark::State& state) {
    Texts t;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&t);
        CORE_LOGF(core::kChannelNorm, "changed from '%s:%s' to '%s%s'", t.oldAddress, t.oldPort,
                  t.address, t.port);
    }
}
void Disabled_qCDebug(benchmark::State& state) {
    Texts t;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&t);
        qCDebug(disabledCategory, "changed from '%s:%s' to '%s%s'", t.oldAddress.c_str(),
                t.oldPort.c_str(), t.address.c_str(), t.port.c_str());
    }
}
void Disabled_spdlog(benchmark::State& state) {
    Texts t;
    spdlog::logger logger("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
    logger.set_level(spdlog::level::off);
    for (auto _ : state) {
        benchmark::DoNotOptimize(&t);
        logger.info("changed from '{}:{}' to '{}{}'", t.oldAddress, t.oldPort, t.address, t.port);
    }
}

void NullSink_core(benchmark::State& state) {
    Texts t;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&t);
        CORE_LOGF(core::kChannelWarn, "changed from '%s:%s' to '%s%s'", t.oldAddress, t.oldPort,
                  t.address, t.port);
    }
}
void NullSink_spdlog(benchmark::State& state) {
    Texts t;
    spdlog::logger logger("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
    for (auto _ : state) {
        benchmark::DoNotOptimize(&t);
        logger.info("changed from '{}:{}' to '{}{}'", t.oldAddress, t.oldPort, t.address, t.port);
    }
}

BENCHMARK(Disabled_core);
BENCHMARK(Disabled_qCDebug);
BENCHMARK(Disabled_spdlog);
BENCHMARK(NullSink_core);
BENCHMARK(NullSink_spdlog);

} // namespace

BENCHMARK_MAIN();
