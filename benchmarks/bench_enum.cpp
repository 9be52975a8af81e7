// The table of icon names, as it is built before main. The peer only fills two std::map with the
// same pairs, without even copying them.

#include "core_enum.h"

#include <benchmark/benchmark.h>
#include <map>
#include <string>

namespace {

struct Pair {
    const char* name;
    int32_t value;
};
constexpr Pair kPairs[] = {
#define QT_ICON_TYPE(name, value) {"QT_IconFactory::" #name, value},
#include "qt_icontypes.inc"
#undef QT_ICON_TYPE
};

core::EnumNames makeNames() {
    return core::EnumNames("IconType", 0, "Unknown").reserve(std::size(kPairs))
#define QT_ICON_TYPE(name, value) .add("QT_IconFactory::" #name, value)
#include "qt_icontypes.inc"
#undef QT_ICON_TYPE
        ;
}

void IconTable_core(benchmark::State& state) {
    for (auto _ : state) {
        const core::EnumNames names = makeNames();
        benchmark::DoNotOptimize(names.size());
    }
}

void IconTable_twoMaps(benchmark::State& state) {
    for (auto _ : state) {
        std::map<std::string, int32_t> byName;
        std::map<int32_t, std::string> byValue;
        for (const Pair& pair : kPairs) {
            byName.emplace(pair.name, pair.value);
            byValue.emplace(pair.value, pair.name);
        }
        benchmark::DoNotOptimize(byName.size() + byValue.size());
    }
}

BENCHMARK(IconTable_core);
BENCHMARK(IconTable_twoMaps);

} // namespace

BENCHMARK_MAIN();
