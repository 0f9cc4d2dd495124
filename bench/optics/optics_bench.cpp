// What decoding the memory of one transceiver module costs, by family and calibration.
#include "optics/cmis.h"
#include "optics/level.h"
#include "optics/sff8472.h"
#include "optics/sff8636.h"
#include "tests/optics/memories.h"

#include <benchmark/benchmark.h>

namespace {

using namespace optics;

void decodeSfp(benchmark::State& state) {
    const auto identity = tests::sfpIdentity(), diagnostics = tests::sfpDiagnostics();
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeSff8472(identity, diagnostics));
}
BENCHMARK(decodeSfp);

void decodeSfpCalibratedOutside(benchmark::State& state) {
    auto identity = tests::sfpIdentity();
    identity[92] = 0x58;
    tests::putChecksum(identity, 64, 95);
    const auto diagnostics = tests::sfpDiagnostics();
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeSff8472(identity, diagnostics));
}
BENCHMARK(decodeSfpCalibratedOutside);

void decodeFourLanesAndTakeTheWorst(benchmark::State& state) {
    const auto memory = tests::qsfp28Memory();
    for (auto _ : state)
        benchmark::DoNotOptimize(worstLane(decodeSff8636(memory)));
}
BENCHMARK(decodeFourLanesAndTakeTheWorst);

void decodeEightLanesAndTakeTheWorst(benchmark::State& state) {
    const auto memory = tests::qsfpDdMemory();
    for (auto _ : state)
        benchmark::DoNotOptimize(worstLane(decodeCmis(memory)));
}
BENCHMARK(decodeEightLanesAndTakeTheWorst);

} // namespace

BENCHMARK_MAIN();
