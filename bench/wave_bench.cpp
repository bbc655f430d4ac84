// The group window's waveform analyses on realistic stores: the AP wave analysis (both
// routines) over 1,000 superimposed traces of 4 Blocks, and the non-stationary noise analysis
// of 500 traces of 4 Blocks. Each should stay under 1 s.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <random>

#include "core/session.h"
#include "group/ap_wave.h"
#include "group/nonstationary_noise.h"

namespace {

using namespace ardel;
using namespace ardel::group;

constexpr int kPoints = 1024;

void Scale(Session& s) {
    s.recording.header.fADCRange = 10;
    s.recording.header.lADCResolution = 1000;
    s.recording.SampleInterval = 20;
    s.recording.ADCUnits = "mV";
}

// An action potential at point 300 with some noise and jitter per trace (0.01 mV a sample).
void FillAps(TraceStore& store, int traces) {
    store.Dimension(traces, kPoints);
    std::mt19937 gen(3);
    std::normal_distribution<double> noise(0, 20);
    for (int t = 0; t <= traces; ++t) {
        const double jitter = t ? double(gen() % 5) : 0;
        for (int i = 0; i < kPoints; ++i) {
            const double x = i - 275 - jitter;
            double v = 0;
            if (x >= 0 && x <= 25) v = 5000 * (1 - std::cos(std::numbers::pi * x / 25));
            else if (x > 25 && x <= 75) v = 10000 - 5500 * (1 - std::cos(std::numbers::pi * (x - 25) / 50));
            else if (x > 75) v = -1000 * std::exp(-(x - 75) / 100);
            store.At(t, i) = std::int16_t(std::lround(v + (t ? noise(gen) : 0)));
        }
    }
}

void BM_ApWaveAnalysis(benchmark::State& state) {
    Session s;
    Scale(s);
    s.params.PeakDirection = 1;
    GroupWindow w;
    w.form.Combo2 = "Superimpose";
    w.form.Text6 = "5";
    FillAps(w.store, 1000);
    SilentDialogs ui;
    const ApRoutine routine = state.range(0) ? ApRoutine::HeavyFiltering : ApRoutine::ThirdDifferential;
    for (auto _ : state) {
        s.results.rows.clear();
        ApWaveAnalysis(s, ui, w, routine);
        benchmark::DoNotOptimize(s.results.rows.data());
    }
}
BENCHMARK(BM_ApWaveAnalysis)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_NoiseAnalysis(benchmark::State& state) {
    Session s;
    Scale(s);
    s.recording.SampleInterval = 100;
    GroupWindow w;
    w.form.Combo21 = "Macroscopic Currents";
    w.form.Combo18 = "All";
    const int traces = 500;
    w.store.Dimension(traces, kPoints);
    std::mt19937 gen(5);
    for (int t = 1; t <= traces; ++t) {
        for (int k = 0; k < kPoints; ++k) {
            const double p = k < 100 ? 0 : 0.8 * std::exp(-(k - 100) / 200.0) * (1 - std::exp(-(k - 100) / 5.0));
            std::binomial_distribution<int> open(60, p);
            w.store.At(t, k) = std::int16_t(-200 * open(gen));
        }
    }
    for (int k = 0; k < kPoints; ++k) {
        std::int64_t sum = 0;
        for (int t = 1; t <= traces; ++t) sum += w.store.At(t, k);
        w.store.At(0, k) = std::int16_t(sum / traces);
    }
    SilentDialogs ui;
    for (auto _ : state) {
        s.results.rows.clear();
        s.graphs.clear();
        NonStationaryNoiseAnalysis(s, ui, w);
        benchmark::DoNotOptimize(s.results.rows.data());
    }
}
BENCHMARK(BM_NoiseAnalysis)->Unit(benchmark::kMillisecond);

}  // namespace
