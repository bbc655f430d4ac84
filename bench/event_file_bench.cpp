// Saving and reloading a large event table: the byte codec alone, and the whole round trip
// through menu_SaveEvent (writing over the file in place) and OpenEventFile.
#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "core/abf_build.h"
#include "core/event_files.h"
#include "core/session.h"
#include "core/user_dialogs.h"

namespace {

using namespace ardel;

constexpr int kEvents = 100000;

std::vector<EventRecord> MakeTable() {
    std::mt19937 gen(42);
    std::uniform_real_distribution<float> u(-1000.0f, 1000.0f);
    std::vector<EventRecord> t(kEvents);
    for (int i = 0; i < kEvents; ++i) {
        EventRecord& e = t[std::size_t(i)];
        e.Time = float(i) * 12.345f + u(gen) * 1e-3f;
        e.Amplitude = std::int32_t(gen() % 5000);
        e.Noise = std::int16_t(gen());
        e.Rise = std::int16_t(gen());
        e.Decay = std::int16_t(gen());
        e.Baseline = std::int16_t(gen());
        e.Area = u(gen);
        e.GroupNumber = std::uint8_t(gen());
        e.Channel = std::uint8_t(gen() % 16);
        e.BaselineLead = std::int16_t(gen());
        e.Rise1090 = u(gen);
        e.HalfWidth = u(gen);
        e.Rise50 = std::int16_t(gen());
        e.PeakDirection = gen() % 2 ? 1 : -1;
        e.BurstNumber = std::int16_t(gen());
        e.BurstEventNumber = std::int16_t(gen());
        e.Slope1090 = u(gen);
        for (char& c : e.EventText) c = char(gen());
        e.RelativeTime = std::int32_t(gen());
        e.PeakPoint = std::int32_t(gen());
    }
    return t;
}

// Field by field through the codec, so that padding bytes of the struct do not count.
bool SameBits(const std::vector<EventRecord>& a, const std::vector<EventRecord>& b) {
    if (a.size() != b.size()) return false;
    std::array<std::uint8_t, kEventRecordSize> x{}, y{};
    for (std::size_t i = 0; i < a.size(); ++i) {
        EncodeEventRecord(a[i], x);
        EncodeEventRecord(b[i], y);
        if (x != y) return false;
    }
    return true;
}

class ReplaceYes : public SilentDialogs {
  public:
    Answer Ask(std::string_view, std::string_view, Buttons, Answer) override { return Answer::Yes; }
};

void BM_EventFileCodec(benchmark::State& state) {
    const auto table = MakeTable();
    const AbfHeader h = MakeAbfHeader(AbfBuildSpec{}, 1 << 20);
    const DetectionParameters p;
    for (auto _ : state) {
        auto bytes = EncodeEventFile(h, p, "comment", "bench.dat", table);
        auto back = DecodeEventFile(bytes);
        benchmark::DoNotOptimize(back.records.data());
        if (!SameBits(back.records, table)) state.SkipWithError("round trip is not bit-exact");
    }
    state.SetItemsProcessed(state.iterations() * kEvents);
}
BENCHMARK(BM_EventFileCodec)->Unit(benchmark::kMillisecond);

void BM_SaveAndReloadEventFile(benchmark::State& state) {
    const auto table = MakeTable();
    const auto folder = std::filesystem::temp_directory_path() /
                        ("ardel-bench-" + std::to_string(std::random_device{}()));
    std::filesystem::create_directories(folder);

    Session s;
    s.recording.header = MakeAbfHeader(AbfBuildSpec{}, 1 << 20);
    s.recording.FileIsOpen = true;  // no samples are needed: only the header is written
    s.recording.DataFilePath = folder / "bench.dat";
    s.Label11 = "bench.dat";
    s.display.BatchRunning = true;  // no save dialog
    ReplaceYes ui;
    Session loaded;

    for (auto _ : state) {
        s.events.Resize(kEvents);
        for (int i = 1; i <= kEvents; ++i) s.events[i] = table[std::size_t(i - 1)];
        if (!menu_SaveEvent(s, ui) || !OpenEventFile(loaded, ui, BatchEventFilePath(s))) {
            state.SkipWithError("save or load failed");
            break;
        }
        benchmark::DoNotOptimize(loaded.events.EventCount());
    }
    std::vector<EventRecord> back;
    for (int i = 1; i <= loaded.events.EventCount(); ++i) back.push_back(loaded.events[i]);
    if (!SameBits(back, table)) state.SkipWithError("reloaded table is not bit-exact");
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
    state.SetItemsProcessed(state.iterations() * kEvents);
}
BENCHMARK(BM_SaveAndReloadEventFile)->Unit(benchmark::kMillisecond);

}  // namespace
