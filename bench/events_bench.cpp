// The event list's sort by each of its 17 keys and one criteria search, on a table of 100,000
// events with realistic values (many equal Groups, Channels and directions; Times mostly in
// order, as window analysis leaves them). Each should stay well under 50 ms.
#include <benchmark/benchmark.h>

#include <random>

#include "core/session.h"
#include "events/criteria_search.h"
#include "events/event_list.h"

namespace {

constexpr int kEvents = 100000;

ardel::EventTable MakeTable() {
    ardel::EventTable table;
    std::mt19937 gen(1);
    for (int n = 0; n < kEvents; ++n) {
        ardel::EventRecord& e = table.Add();
        // Mostly ascending, with re-analysed stretches appended out of order.
        e.Time = float(n % 9000 == 0 ? gen() % 4000000 : n) * 37.5f;
        e.Amplitude = std::int32_t(gen() % 2000);
        e.Noise = std::int16_t(int(gen() % 41) - 20);
        e.Rise = std::int16_t(gen() % 40);
        e.Decay = std::int16_t(gen() % 400);
        e.Baseline = std::int16_t(int(gen() % 2000) - 1000);
        e.Area = float(gen() % 100000) / 7.0f;
        e.GroupNumber = std::uint8_t(gen() % 8 == 0 ? gen() % 4 : 0);
        e.Channel = 0;
        e.Rise1090 = float(gen() % 3000) / 1000.0f;
        e.HalfWidth = float(gen() % 9000) / 1000.0f;
        e.Rise50 = std::int16_t(gen() % 20);
        e.PeakDirection = -1;
        e.Slope1090 = -float(gen() % 5000) / 10.0f;
        e.RelativeTime = std::int32_t(gen() % 4096);
        e.PeakPoint = n;
    }
    return table;
}

void SortByKey(benchmark::State& state) {
    const int index = int(state.range(0));
    const ardel::EventTable original = MakeTable();
    for (auto _ : state) {
        state.PauseTiming();
        ardel::EventTable t = original;
        state.ResumeTiming();
        ardel::SortEvents(t, index, 1, t.EventCount());
        benchmark::DoNotOptimize(t[1]);
    }
    state.SetLabel(std::string(ardel::SortCaption(index)));
}

void CriteriaSearch(benchmark::State& state) {
    ardel::Session s;
    s.events = MakeTable();
    s.recording.header.fADCRange = 10;
    s.recording.header.lADCResolution = 32768;
    s.recording.ChannelGain = 0.005f;
    s.recording.SampleInterval = 50;
    ardel::SilentDialogs ui;
    ardel::CriteriaForm f;
    // Every criterion bounded, so that most rows run through all fifteen tests.
    for (int k = 0; k < ardel::kCriteriaCount; ++k) {
        f.Combo1[std::size_t(k)] = "-1000000";
        f.Combo2[std::size_t(k)] = "1000000";
    }
    f.Combo2[1] = "50";  // about half the amplitudes
    f.Combo3 = "3";
    f.Check1 = true;
    f.Combo4 = "0";
    for (auto _ : state) {
        ardel::Criteria_Command1(s, ui, f);
        benchmark::DoNotOptimize(s.events[1].GroupNumber);
    }
}

}  // namespace

BENCHMARK(SortByKey)->DenseRange(1, ardel::kSortColumnCount)->Unit(benchmark::kMillisecond);
BENCHMARK(CriteriaSearch)->Unit(benchmark::kMillisecond);
