// Non-stop detection over a long synthetic recording: 60 minutes at 20 kHz, one channel,
// default parameters, as F9 then F11 would run it, without and with the digital filter. Reports samples per second and the peak
// resident memory, which must not grow with the recording's length.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <filesystem>
#include <map>

#include "core/number_text.h"
#include "core/open_file.h"
#include "detect/digital_filter.h"
#include "detect/filter_lanes.h"
#include "detect/window_analysis.h"
#include "tools/demo_synth.h"

namespace {

std::filesystem::path Recording(int minutes) {
    static std::map<int, std::filesystem::path> made;
    auto& p = made[minutes];
    if (p.empty()) {
        p = std::filesystem::temp_directory_path() /
            ("ardel-bench-" + std::to_string(minutes) + "min.abf");
        ardel::synth::RecordingSpec spec;
        spec.seconds = minutes * 60.0;
        spec.sampleRateHz = 20000;
        spec.eventRateHz = 5;
        ardel::synth::WriteRecording(p, spec);
    }
    return p;
}

long PeakRssKb() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

void Detect(benchmark::State& state, bool filter) {
    const auto file = Recording(int(state.range(0)));
    std::int64_t samples = 0;
    std::int32_t events = 0;
    for (auto _ : state) {
        ardel::Session s;
        ardel::SilentDialogs ui;
        if (filter) {
            // The default filter of the settings: the order-8 low-pass inverse Chebyshev.
            s.options.FilterOn = true;
            s.options.FilterType = 4;
            s.options.FilterFreq = "2000";
            ardel::InstallDigitalFilter(s, ui);
        }
        if (!ardel::OpenDataFile(s, ui, file)) {
            state.SkipWithError("cannot open the recording");
            return;
        }
        ardel::Command1(s, ui);
        ardel::Command3(s, ui);
        samples += s.recording.header.lActualAcqLength;
        events = s.events.EventCount();
    }
    state.counters["samples_per_s"] =
        benchmark::Counter(double(samples), benchmark::Counter::kIsRate);
    state.counters["events"] = events;
    state.counters["peak_rss_MiB"] = double(PeakRssKb()) / 1024.0;
}

void NonStopDetection(benchmark::State& state) { Detect(state, false); }
// As with --filter: every screen is filtered before it is analysed.
void NonStopDetectionFiltered(benchmark::State& state) { Detect(state, true); }

// One run of the default filter over three screens of 4 Blocks, in the vector unit's lanes.
void FilterRunInLanes(benchmark::State& state) {
    const auto filter = ardel::DesignDigitalFilter(4, 20000, 2000);
    const std::size_t n = std::size_t(state.range(0));
    auto lanes = ardel::LaneFilter::Make(*filter, n);
    if (!lanes) {
        state.SkipWithError("no vector unit for the lanes on this machine");
        return;
    }
    std::vector<std::int16_t> in(n), out(n);
    for (std::size_t i = 0; i < n; ++i) in[i] = std::int16_t((i * 7919) % 2001) - 1000;
    std::int64_t refused = 0;
    for (auto _ : state) {
        refused += !lanes->Run(in, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["points_per_s"] =
        benchmark::Counter(double(state.iterations()) * double(n), benchmark::Counter::kIsRate);
    state.counters["lanes"] = lanes->Lanes();
    state.counters["refused"] = double(refused);
}

// The same run the plain way, a point at a time through the four sections, as the screens get
// it where the lanes are not used.
void FilterRunPlain(benchmark::State& state) {
    const auto filter = ardel::DesignDigitalFilter(4, 20000, 2000);
    std::array<ardel::Biquad, 4> q;
    std::copy(filter->sections.begin(), filter->sections.end(), q.begin());
    const std::size_t n = std::size_t(state.range(0));
    std::vector<std::int16_t> in(n), out(n);
    for (std::size_t i = 0; i < n; ++i) in[i] = std::int16_t((i * 7919) % 2001) - 1000;
    for (auto _ : state) {
        std::array<double, 8> st{};
        for (std::size_t i = 0; i < n; ++i)
            out[i] = ardel::ToInt16(ardel::CascadePoint(q, st, in[i])).value_or(in[i]);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["points_per_s"] =
        benchmark::Counter(double(state.iterations()) * double(n), benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK(FilterRunInLanes)->Arg(3 * 1024)->Arg(3 * 16384);
BENCHMARK(FilterRunPlain)->Arg(3 * 1024);
BENCHMARK(NonStopDetection)->Arg(10)->Arg(60)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(NonStopDetectionFiltered)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();
