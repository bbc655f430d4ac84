// Fitting the decays of 1,000 individual traces of 4 Blocks with two exponentials, one after
// the other and spread over threads: the window's default tolerance and iteration limit.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "core/number_text.h"
#include "group/fit_run.h"

namespace {

using namespace ardel;

struct Bench {
    Session s;
    group::GroupWindow w;
    std::vector<std::int32_t> traces;
    group::FitSettings settings;
    Bench() {
        Recording& r = s.recording;
        r.header.fADCRange = 10;
        r.header.lADCResolution = 32768;
        r.ChannelGain = 1;
        r.SampleInterval = 100;
        const std::int32_t count = 1000, points = 1024, peak = 60;
        w.store.Dimension(count, points);
        std::mt19937 gen(3);
        std::normal_distribution<double> noise(0, 8);
        for (std::int32_t t = 1; t <= count; ++t) {
            const double a1 = -600 - t % 50, tau1 = 2 + 0.002 * t, a2 = -400, tau2 = 20;
            for (std::int32_t i = 0; i < points; ++i) {
                double y = noise(gen);
                if (i >= peak) {
                    const double ms = (i - peak) * 0.1;
                    y += a1 * std::exp(-ms / tau1) + a2 * std::exp(-ms / tau2);
                }
                w.store.At(t, i) = std::int16_t(RoundHalfEven(y));
            }
            traces.push_back(t);
        }
        w.form.Combo9 = "2";
        w.form.Combo2 = "Superimpose";
        settings = group::ReadFitSettings(s, w.form);
    }
};

void BM_FitThousandTraces(benchmark::State& state) {
    static Bench b;
    for (auto _ : state) {
        auto fits = group::FitTraces(b.w.store, b.traces, b.settings, b.s.recording, int(state.range(0)));
        benchmark::DoNotOptimize(fits.data());
    }
}
BENCHMARK(BM_FitThousandTraces)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
