// The t-test and the two-sample Kolmogorov-Smirnov test of the Data Analysis form on two
// arrays of a million values each, as the Test button runs them (the sort included).
#include <benchmark/benchmark.h>

#include <random>

#include "arrays/statistical_tests.h"
#include "core/user_dialogs.h"

namespace {

void FillArrays(ardel::Session& s, std::size_t n) {
    std::mt19937 rng(7);
    std::normal_distribution<float> a(10.0f, 2.0f), b(10.2f, 2.5f);
    s.dataArray1.values.resize(n + 1);
    s.dataArray2.values.resize(n + 1);
    for (std::size_t i = 1; i <= n; ++i) {
        s.dataArray1.values[i] = a(rng);
        s.dataArray2.values[i] = b(rng);
    }
}

void RunTest(benchmark::State& state, std::string_view caption) {
    ardel::Session s;
    FillArrays(s, 1000000);
    ardel::SilentDialogs ui;
    ardel::DataAnalysisForm f;
    ardel::ChooseTest(f, caption);
    for (auto _ : state) {
        ardel::DataAnalysis_Command1(s, ui, f);
        benchmark::DoNotOptimize(f.Grid1.data());
    }
}

void BM_PairedTTestMillion(benchmark::State& state) { RunTest(state, ardel::kCaptionPaired); }
void BM_KsTestMillion(benchmark::State& state) { RunTest(state, ardel::kCaptionKStest); }

BENCHMARK(BM_PairedTTestMillion)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KsTestMillion)->Unit(benchmark::kMillisecond);

}  // namespace
