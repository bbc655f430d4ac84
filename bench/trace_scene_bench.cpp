// A full redraw of a long screen: 256 Blocks (65,536 points, one channel) loaded from the file
// and turned into the scene of a 1600-pixel-wide picture, with an event table of 20,000 events
// over the recording. A redraw has to fit well within one frame (16 ms).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>

#include "core/open_file.h"
#include "core/session.h"
#include "core/user_dialogs.h"
#include "tools/demo_synth.h"
#include "view/trace_scene.h"

namespace {

constexpr int kPixels = 1600;

const std::filesystem::path& RecordingFile() {
    static const std::filesystem::path p = [] {
        auto file = std::filesystem::temp_directory_path() / "ardel-bench-trace-scene.abf";
        ardel::synth::RecordingSpec spec;
        spec.seconds = 120;
        spec.sampleRateHz = 20000;
        spec.eventRateHz = 5;
        ardel::synth::WriteRecording(file, spec);
        return file;
    }();
    return p;
}

bool OpenLongScreen(ardel::Session& s) {
    ardel::SilentDialogs ui;
    s.recording.BlocksPerScreen = 256;
    if (!ardel::OpenDataFile(s, ui, RecordingFile())) return false;
    // Events every 6 ms over the whole recording, every tenth one grouped.
    const double duration = 120000.0;
    for (int k = 0; k < 20000; ++k) {
        ardel::EventRecord& e = s.events.Add();
        e.Time = float(duration * k / 20000.0);
        e.Amplitude = 400;
        e.Baseline = -200;
        e.PeakDirection = -1;
        e.BaselineLead = 120;
        e.Rise = 16;
        e.Decay = 100;
        e.GroupNumber = k % 10 == 0 ? 3 : 0;
    }
    return true;
}

void DisplayAndScene(benchmark::State& state) {
    ardel::Session s;
    if (!OpenLongScreen(s)) {
        state.SkipWithError("cannot open the recording");
        return;
    }
    const double first = s.recording.header.lDataSectionPtr;
    const double screens = std::max(1.0, double(s.recording.TotalBlocks) / 256.0 - 1.0);
    std::size_t points = 0, marks = 0;
    int k = 0;
    for (auto _ : state) {
        s.recording.ScreenBlock = first + 256.0 * double(k++ % int(screens));
        ardel::Display(s);
        ardel::TraceScene scene = ardel::BuildTraceScene(s, kPixels);
        points = scene.traces[0].points.size();
        marks = scene.marks.size();
        benchmark::DoNotOptimize(scene);
    }
    state.counters["scene_points"] = double(points);
    state.counters["marks"] = double(marks);
}

void SceneOnly(benchmark::State& state) {
    ardel::Session s;
    if (!OpenLongScreen(s)) {
        state.SkipWithError("cannot open the recording");
        return;
    }
    for (auto _ : state) {
        ardel::TraceScene scene = ardel::BuildTraceScene(s, kPixels);
        benchmark::DoNotOptimize(scene);
    }
}

}  // namespace

BENCHMARK(DisplayAndScene)->Unit(benchmark::kMillisecond);
BENCHMARK(SceneOnly)->Unit(benchmark::kMillisecond);
