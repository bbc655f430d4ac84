// Both AP routines on the 20 action potentials of a real current-clamp sweep (channel 1, mV,
// 25 kHz), cut around their peaks as the group window would cut a group.
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "core/open_file.h"
#include "group/ap_wave.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel::group {
namespace {

using ardel::testing::ScriptedDialogs;

TEST(ApWaveRealRecording, TwentySpikesGivePlausibleMeasuresByBothRoutines) {
    Session s;
    ScriptedDialogs ui;
    ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
    ASSERT_TRUE(OpenDataFile(s, ui, ardel::testing::TestDataDir() / "18425108_abf1.abf"));
    const Recording& rec = s.recording;
    ASSERT_EQ(rec.SampleInterval, 40.0f);
    const std::int64_t offset = std::int64_t(rec.header.lDataSectionPtr) * 512;
    const std::size_t samples = std::size_t(rec.source->Size() - std::uint64_t(offset)) / 2;
    std::vector<std::uint8_t> bytes(samples * 2);
    rec.source->Read(offset, bytes);
    std::vector<std::int16_t> v(samples / 2);  // channel 1 of the two
    for (std::size_t i = 0; i < v.size(); ++i) std::memcpy(&v[i], &bytes[(2 * i + 1) * 2], 2);

    // Peaks above 0 mV, at least 2 ms (50 points) apart.
    std::vector<std::int64_t> peaks;
    for (std::size_t i = 1; i + 1 < v.size(); ++i) {
        if (rec.Bit2pA(v[i]) <= 0 || v[i] < v[i - 1] || v[i] <= v[i + 1]) continue;
        if (!peaks.empty() && std::int64_t(i) - peaks.back() < 50) {
            if (v[i] > v[std::size_t(peaks.back())]) peaks.back() = std::int64_t(i);
            continue;
        }
        peaks.push_back(std::int64_t(i));
    }
    ASSERT_EQ(peaks.size(), 20u);

    // Traces of 512 points with the peak 100 points (4 ms) in, the baseline over the 25 points
    // (1 ms) that start there.
    s.params.PeakDirection = 1;
    s.params.PeriodStartBaseline = 4000;
    s.params.PeriodBaselineAverage = 1000;
    GroupWindow w;
    w.form.Combo2 = "Superimpose";
    w.form.Text6 = "3";
    // Slope between -30 and -10 mV: on the upstroke of every spike.
    w.form.Combo20 = "-30";
    w.form.Combo19 = "-10";
    w.store.Dimension(20, 512);
    for (std::int32_t t = 1; t <= 20; ++t) {
        const std::int64_t from = peaks[std::size_t(t - 1)] - 100;
        s.events.Add() = EventRecord{.Time = float(double(peaks[std::size_t(t - 1)]) * 0.04), .GroupNumber = 1};
        w.store.TraceEvent[std::size_t(t)] = std::int16_t(t);
        for (std::int32_t k = 0; k < 512; ++k) w.store.At(t, k) = v[std::size_t(from + k)];
    }
    // Row 0, the average: the second routine finds every threshold on it (CurrentTrace 0).
    for (std::int32_t k = 0; k < 512; ++k) {
        std::int32_t sum = 0;
        for (std::int32_t t = 1; t <= 20; ++t) sum += w.store.At(t, k);
        w.store.At(0, k) = std::int16_t(std::lround(sum / 20.0));
    }
    ApWaveAnalysis(s, ui, w, ApRoutine::ThirdDifferential);
    ApWaveAnalysis(s, ui, w, ApRoutine::HeavyFiltering);
    ASSERT_EQ(s.results.rows.size(), 40u);
    for (std::size_t r = 0; r < 40; ++r) {
        SCOPED_TRACE(r);
        const auto& x = s.results.rows[r].Values;
        const float peak = x[9], threshold = x[11];
        // What a cortical spike looks like: a peak above 0 mV, a threshold between rest and
        // -20 mV well below it, a 10-90 % rise and a width of a fraction of a millisecond
        // to a few, a fast upstroke, the AHP below the threshold.
        EXPECT_GT(peak, 0);
        EXPECT_LT(peak, 80);
        EXPECT_GT(threshold, -80);
        EXPECT_LT(threshold, -20);
        EXPECT_GT(peak - threshold, 40);
        EXPECT_GT(x[3], 0.03f);
        EXPECT_LT(x[3], 1.5f);
        EXPECT_GT(x[12], 0.2f);
        EXPECT_LT(x[12], 4.0f);
        EXPECT_GT(x[8], 20.0f);
        EXPECT_LT(x[2] + x[14], threshold);  // the AHP's trough: baseline + AHP peak
    }
    // The peak is the sample at the alignment point, exactly. The spikes are fired straight
    // from rest by a brief stimulus, so both routines put the onset within a few points of
    // rest; the second takes it from the filtered average and lands up to two points (some
    // 10 mV on this rise) from each trace's own.
    for (std::size_t r = 0; r < 20; ++r) {
        SCOPED_TRACE(r);
        EXPECT_EQ(s.results.rows[r].Values[9], rec.Bit2pA(v[std::size_t(peaks[r])]));
        EXPECT_NEAR(s.results.rows[r].Values[11], s.results.rows[r].Values[2], 5.0);
        EXPECT_NEAR(s.results.rows[r].Values[11], s.results.rows[r + 20].Values[11], 10.0);
    }
}

}  // namespace
}  // namespace ardel::group
