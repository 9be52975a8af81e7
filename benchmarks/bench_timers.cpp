// A hundred thousand timers on Qt's event loop: started, fired once and destroyed. Kern's timers,
// compared with QObject's own.

#include "kern_timerinterface.h"
#include "qt_timermanager.h"

#include <QCoreApplication>
#include <QObject>
#include <QTimerEvent>

#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr int kTimers = 100000;

struct Owner final : kern::TimerInterface {
    void timerExpired(int64_t) override { ++expired; }
    int expired = 0;
};

struct Peer final : QObject {
    void timerEvent(QTimerEvent*) override { ++expired; }
    int expired = 0;
};

template <typename Timed>
void run(benchmark::State& state) {
    for (auto _ : state) {
        auto owner = std::make_unique<Timed>();
        for (int i = 0; i < kTimers; ++i)
            owner->startTimer(1);
        while (owner->expired < kTimers)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        owner.reset();
    }
}

void Timers_core(benchmark::State& state) {
    const NS_QT::QtTimerManager manager;
    run<Owner>(state);
}

void Timers_qobject(benchmark::State& state) { run<Peer>(state); }

BENCHMARK(Timers_core)->Unit(benchmark::kMillisecond);
BENCHMARK(Timers_qobject)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
