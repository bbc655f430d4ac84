// All time-domain measures of a day of heart beats (100,000 beats, about 0.8 s apart with a
// slow modulation), as "Start Analysis" computes them over the whole record and in segments
// of a minute at 1 kHz. The spectrum of the same beats is measured beside it; together they
// are to stay well under 200 ms.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "hrv/time_domain.h"

namespace {

ardel::EventTable DayOfBeats(int n) {
    ardel::EventTable t;
    std::mt19937 rng(3);
    std::normal_distribution<double> jitter(0.0, 25.0);
    double time = 0;
    for (int i = 0; i < n; ++i) {
        t.Add().Time = float(time);
        time += 800 + 60 * std::sin(i * 0.05) + jitter(rng);
    }
    return t;
}

void BM_TimeDomainMeasures(benchmark::State& state) {
    const ardel::EventTable beats = DayOfBeats(int(state.range(0)));
    ardel::hrv::TimeDomainInput in;
    in.bounds = {2000, 300};
    in.pointsPerSegment = 60000;
    in.sampleIntervalUs = 1000;
    in.totalPoints = double(beats[beats.EventCount()].Time) + 1;
    for (auto _ : state) {
        auto result = ardel::hrv::ComputeTimeDomain(beats, in);
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(BM_TimeDomainMeasures)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
