// Start Display on a long recording: 1,000 events of one group spread over 60 minutes at
// 10 kHz (72 MB of samples), each cut as a trace of 4 Blocks and averaged. One press of the
// button must stay under 100 ms.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "core/open_file.h"
#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/group_display.h"
#include "tools/demo_synth.h"

namespace {

const std::filesystem::path& RecordingFile() {
    static const std::filesystem::path p = [] {
        auto file = std::filesystem::temp_directory_path() / "ardel-bench-group-store.abf";
        ardel::synth::RecordingSpec spec;
        spec.seconds = 3600;
        spec.sampleRateHz = 10000;
        spec.eventRateHz = 1;
        ardel::synth::WriteRecording(file, spec);
        return file;
    }();
    return p;
}

void CutAndAverage(benchmark::State& state) {
    ardel::Session s;
    ardel::SilentDialogs ui;
    if (!ardel::OpenDataFile(s, ui, RecordingFile())) {
        state.SkipWithError("cannot open the recording");
        return;
    }
    // A thousand events of group 2 among as many of group 0, over the whole hour.
    for (int k = 0; k < 2000; ++k) {
        ardel::EventRecord& e = s.events.Add();
        e = ardel::EventRecord{};
        e.Time = float(3600000.0 * k / 2000.0 + 5.0);
        e.Amplitude = -300;
        e.Baseline = -100;
        e.GroupNumber = k % 2 == 0 ? 2 : 0;
    }
    ardel::group::GroupWindow w;
    w.form.Option2_0 = false;
    w.form.Option2_1 = true;
    w.form.Combo1 = "2";
    w.form.Combo4 = "4";
    w.form.Combo2 = "Superimpose";
    for (auto _ : state) {
        if (!ardel::group::StartDisplay(s, ui, w)) {
            state.SkipWithError("no traces");
            return;
        }
        benchmark::DoNotOptimize(w.store.Traces.data());
    }
    state.counters["traces"] = w.store.TraceCount;
}
BENCHMARK(CutAndAverage)->Unit(benchmark::kMillisecond);

}  // namespace
