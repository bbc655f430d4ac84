// The event grid converts only the cells it shows. Scrolling a table of 100,000 events costs
// one page of cell texts per step: this measures such a page (40 rows, all 18 columns) at
// random places in the table.
#include <benchmark/benchmark.h>

#include <random>

#include "core/event_table.h"
#include "core/recording.h"

namespace {

void GridPage(benchmark::State& state) {
    ardel::Recording rec;
    rec.header.fADCRange = 10;
    rec.header.lADCResolution = 32768;
    rec.ChannelGain = 0.005f;
    rec.SampleInterval = 50;
    ardel::EventTable table;
    std::mt19937 gen(1);
    for (int n = 0; n < 100000; ++n) {
        ardel::EventRecord& e = table.Add();
        e.Time = float(n) * 37.5f;
        e.Amplitude = std::int32_t(gen() % 2000);
        e.Rise = std::int16_t(gen() % 40);
        e.Decay = std::int16_t(gen() % 400);
        e.Area = float(gen() % 100000) / 7.0f;
        e.Rise1090 = 0.85f;
        e.HalfWidth = 3.25f;
    }
    std::size_t chars = 0;
    for (auto _ : state) {
        const std::int32_t top = std::int32_t(gen() % (100000 - 40)) + 1;
        for (std::int32_t row = top; row < top + 40; ++row)
            for (int c = 0; c < ardel::kGridColumns; ++c)
                chars += ardel::GridCellText(table, rec, row, c)->size();
    }
    benchmark::DoNotOptimize(chars);
}

}  // namespace

BENCHMARK(GridPage)->Unit(benchmark::kMicrosecond);
