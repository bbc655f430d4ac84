// A frequency histogram of 1,000,000 values in Data Array #1 (bins of 1 over 0..1000), from the
// menu's command to the opened graph. Has to stay under 50 ms.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "graph/histograms.h"

namespace {

void BM_FrequencyHistogramOfArray1(benchmark::State& state) {
    ardel::Session s;
    const std::int32_t n = 1'000'000;
    s.dataArray1.Redim(n);
    std::uint32_t seed = 12345;
    for (std::int32_t i = 1; i <= n; ++i) {
        seed = seed * 1664525u + 1013904223u;
        s.dataArray1(i) = float(seed >> 8) / float(1u << 24) * 1000.0f;
    }
    // The bin-size question takes its default of 1.
    ardel::SilentDialogs ui;
    for (auto _ : state) {
        ardel::Histogram(s, ui, ardel::kFieldArray1, [](ardel::Session&) {});
        benchmark::DoNotOptimize(s.graphs.back().get());
        s.graphs.clear();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_FrequencyHistogramOfArray1)->Unit(benchmark::kMillisecond);

}  // namespace
