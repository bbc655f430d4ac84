// The auto-correlogram of 20,000 event times with every pair inside the range (200 million
// pairs, bins of 1 ms up to 60 s), and the coastline of a 60-minute recording at 20 kHz in 1 s
// bins. The first has to stay under 1 s, the second under 0.5 s.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "core/recording.h"
#include "graph/coastline.h"
#include "graph/correlograms.h"

namespace {

std::uint32_t Next(std::uint32_t& seed) {
    seed = seed * 1664525u + 1013904223u;
    return seed >> 8;
}

void BM_AutoCorrelogramAllPairsInRange(benchmark::State& state) {
    const int n = 20'000;
    std::vector<float> times(n);
    std::uint32_t seed = 4711;
    // Sixty seconds of events in 0.1 ms steps, in no order.
    for (float& t : times) t = float(Next(seed) % 600'000) / 10.0f;
    for (auto _ : state) {
        const auto counts = ardel::AutoCorrelogramCounts(times, 1.0f, 59'999);
        benchmark::DoNotOptimize(counts.data());
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(n) * (n - 1) / 2);
}
BENCHMARK(BM_AutoCorrelogramAllPairsInRange)->Unit(benchmark::kMillisecond);

void BM_CoastlineOfAnHourAt20kHz(benchmark::State& state) {
    const std::int64_t points = 60LL * 60 * 20'000;
    std::vector<std::uint8_t> bytes(std::size_t(points) * 2);
    std::uint32_t seed = 99;
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = std::uint8_t(Next(seed));
    ardel::Recording r;
    r.header.nADCNumChannels = 1;
    r.header.lDataSectionPtr = 0;
    r.header.fADCRange = 10;
    r.header.lADCResolution = 32768;
    r.SampleInterval = 50;
    r.DimensionBuffers();
    r.source = std::make_shared<ardel::MemorySource>(std::move(bytes));
    for (auto _ : state) {
        const auto bins = ardel::CoastlineBins(r, 20'000);
        benchmark::DoNotOptimize(bins.data());
    }
    state.SetItemsProcessed(state.iterations() * points);
}
BENCHMARK(BM_CoastlineOfAnHourAt20kHz)->Unit(benchmark::kMillisecond);

}  // namespace
