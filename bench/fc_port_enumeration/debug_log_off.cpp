// What a debug log call costs while the log is off, beside a loop without one.
#include "log/log.h"

#include <benchmark/benchmark.h>

namespace {

void emptyLoop(benchmark::State& state) {
    int index = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(index);
        benchmark::ClobberMemory();
    }
}

void debugLogOff(benchmark::State& state) {
    merolt::gDebugLog = false;
    int index = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(index);
        // Whatever is in memory may have changed, the flag too.
        benchmark::ClobberMemory();
        DEBUG_LOG("Entering createFCPort, index = %d", index);
    }
}

} // namespace

BENCHMARK(emptyLoop);
BENCHMARK(debugLogOff);

BENCHMARK_MAIN();
