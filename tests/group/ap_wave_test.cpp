#include "group/ap_wave.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "analysis_fixture.h"
#include "support/scripted_dialogs.h"

namespace ardel::group {
namespace {

using ardel::testing::ScriptedDialogs;

// A synthetic action potential at 20 us a point (mV): rest at 0, a slow depolarising ramp of
// 0.5 mV/ms from point 150 to the threshold at point 275 (1.25 mV), a half-cosine upstroke to
// 100 mV at point 300, a half-cosine repolarisation to the AHP of -10 mV at point 350, and an
// exponential recovery (tau 100 points). Every level of the rule can be worked out by hand.
constexpr double kInterval = 20;
constexpr int kPoints = 1024;
constexpr int kThreshold = 275, kPeak = 300, kAhp = 350;
constexpr double kVth = 1.25, kVpeak = 100, kVahp = -10;
const double kPi = std::numbers::pi;

double Ap(int i, double ahpTau = 100) {
    if (i < 150) return 0;
    if (i < kThreshold) return 0.01 * (i - 150);
    if (i <= kPeak) return kVth + (kVpeak - kVth) * (1 - std::cos(kPi * (i - kThreshold) / 25.0)) / 2;
    if (i <= kAhp) return kVpeak - (kVpeak - kVahp) * (1 - std::cos(kPi * (i - kPeak) / 50.0)) / 2;
    return kVahp * std::exp(-(i - kAhp) / ahpTau);
}

std::vector<std::int16_t> ApTrace(double ahpTau = 100) {
    std::vector<std::int16_t> t(kPoints);
    for (int i = 0; i < kPoints; ++i) t[std::size_t(i)] = ToSamples(Ap(i, ahpTau));
    return t;
}

// Time (points) after the threshold at which the upstroke reaches v, and after the peak at
// which the repolarisation falls to v.
double UpAt(double v) { return 25.0 / kPi * std::acos(1 - 2 * (v - kVth) / (kVpeak - kVth)); }
double DownAt(double v) { return 50.0 / kPi * std::acos(1 - 2 * (kVpeak - v) / (kVpeak - kVahp)); }

class ApWaveTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ScaleRecording(s, float(kInterval));
        w.form.Combo4 = "4";
        w.form.Text6 = "5";
        s.params.PeakDirection = 1;
    }
    ApMeasurement Measure(ApRoutine routine, std::int32_t trace = 0) {
        const auto second = SharpenedSecondDifferential(
            std::span<const std::int16_t>(w.store.Row(w.store.CurrentTrace), std::size_t(kPoints)),
            5);
        return MeasureActionPotential(s, w.form, w.store, trace, routine, second);
    }
    Session s;
    GroupWindow w;
};

TEST_F(ApWaveTest, BothRoutinesMeasureTheKnownWaveform) {
    FillStore(w.store, {ApTrace()});
    for (ApRoutine routine : {ApRoutine::ThirdDifferential, ApRoutine::HeavyFiltering}) {
        SCOPED_TRACE(routine == ApRoutine::ThirdDifferential ? "third differential" : "filtering");
        const ApMeasurement m = Measure(routine);
        // Defined exactly by the rule: peak at PeriodStartBaseline, baseline of the flat start,
        // the AHP's lowest sample.
        EXPECT_EQ(m.IPeak, kPeak);
        EXPECT_EQ(m.Base, 0);
        EXPECT_EQ(m.Amp, 10000);
        EXPECT_EQ(m.AHPIndex, kAhp);
        EXPECT_EQ(m.AHPAmp, -1000);
        EXPECT_EQ(m.PeakToAHP, 11000);
        // Levels found at the first whole point past a crossing: one point (0.02 ms) each.
        EXPECT_NEAR(m.Rise, (UpAt(90) - UpAt(10)) * 0.02, 0.02 + 1e-6);
        EXPECT_NEAR(m.HalfWidth, (25 - UpAt(50) + DownAt(50)) * 0.02, 0.04 + 1e-6);
        EXPECT_NEAR(m.Decay, (DownAt(36.8) - DownAt(90)) * 0.02, 0.02 + 1e-6);
        // Interpolated crossings: the chord between two points of the upstroke's curved start
        // misplaces each crossing by under a tenth of a point over a run of 1.7 points.
        EXPECT_NEAR(m.Slope, 3.0 / ((UpAt(5) - UpAt(2)) * 0.02), 0.05 * m.Slope);
        // Peak to 90 % of the way down to the AHP: 0 mV.
        EXPECT_NEAR(m.PeakTo90AHP, DownAt(0) * 0.02, 0.02 + 1e-6);
    }
}

TEST_F(ApWaveTest, ThresholdWidthAndAhpAreaByRoutine) {
    FillStore(w.store, {ApTrace()});
    // The third differential peaks where the upstroke's curvature starts; its four-point
    // stencil puts the maximum within two points before the kink.
    const ApMeasurement old = Measure(ApRoutine::ThirdDifferential);
    EXPECT_GE(old.ThreshIndex, kThreshold - 2);
    EXPECT_LE(old.ThreshIndex, kThreshold);
    // The filtered copy is smeared by the Gaussian (sigma 1.3 points), the moving average
    // (2 points each side) and the sharpening: its curvature peak may lie up to 5 points either
    // side of the kink, where the trace is within 0.1 mV of the threshold on the ramp or
    // 0.5 mV into the upstroke.
    const ApMeasurement filtered = Measure(ApRoutine::HeavyFiltering);
    EXPECT_NEAR(filtered.ThreshIndex, kThreshold, 5);
    for (const ApMeasurement* m : {&old, &filtered}) {
        const double vth = Ap(m->ThreshIndex);
        EXPECT_NEAR(m->ThreshValue * 0.01, vth, 0.01);
        // Width at 20 mV above the threshold found: interpolated on both sides.
        const double up = kThreshold + UpAt(vth + 20), down = kPeak + DownAt(vth + 20);
        EXPECT_NEAR(m->Width, (down - up) * 0.02, 0.005);
    }
    // AHP area: the undershoot from where the trace falls to 0.1 % of the amplitude to the
    // trace's end, as a sum of points.
    double area = 0;
    for (int i = kPeak + old.D0; i < kPoints; ++i) area += std::min(0.0, std::round(Ap(i) * 100) / 100);
    EXPECT_NEAR(old.AHPArea, area * 0.02, 1e-3);
    EXPECT_LT(old.AHPArea, 0);
}

TEST_F(ApWaveTest, ThresholdAsBaselineChangesAmplitudeAndRise) {
    FillStore(w.store, {ApTrace()});
    const ApMeasurement plain = Measure(ApRoutine::ThirdDifferential);
    w.form.Check2 = true;
    const ApMeasurement atThreshold = Measure(ApRoutine::ThirdDifferential);
    EXPECT_EQ(atThreshold.Base, plain.ThreshValue);
    EXPECT_EQ(atThreshold.Amp, 10000 - plain.ThreshValue);
    // Fractions of a smaller amplitude on a base above rest: the 10 % level moves up the
    // upstroke, so the rise is shorter.
    EXPECT_LT(atThreshold.Rise, plain.Rise);
}

TEST_F(ApWaveTest, RunWritesRowsTextsAndStopsOnInterrupt) {
    FillStore(w.store, {ApTrace(), ApTrace(), ApTrace()});
    ScriptedDialogs ui;
    ApWaveAnalysis(s, ui, w, ApRoutine::ThirdDifferential);
    ASSERT_EQ(s.results.rows.size(), 1u);
    const ResultRow& row = s.results.rows[0];
    EXPECT_EQ(row.Identifier, "cell.abf G1 T0 AP");
    EXPECT_FLOAT_EQ(row.Values[0], 100.0f);
    EXPECT_FLOAT_EQ(row.Values[9], 100.0f);
    EXPECT_FLOAT_EQ(row.Values[14], -10.0f);
    EXPECT_NEAR(row.Values[11], kVth, 0.05);
    EXPECT_EQ(w.form.Command17, "AP Wave Analysis 1");
    ASSERT_EQ(w.overlay.text.size(), 7u);
    EXPECT_EQ(w.overlay.text[0], "Number of Traces Averaged : 3");
    EXPECT_EQ(w.overlay.text[2].substr(0, 32), "Peak Amplitude : 100.00mV    Pos");
    EXPECT_EQ(w.overlay.text[4].substr(0, 24), "AHP Peak : -10.00mV    A");

    // Superimposed: one row per trace, nothing printed (the redraw before the run, which needs
    // events in the table, loses the last text); a click on the button during the first
    // trace's yield stops the run after it.
    w.form.Combo2 = "Superimpose";
    if (s.events.Empty()) s.events.Add() = EventRecord{.Time = 1};
    ui.onYield = [&] { ApWaveButton(s, ui, w, ApRoutine::HeavyFiltering); };
    ApWaveAnalysis(s, ui, w, ApRoutine::HeavyFiltering);
    EXPECT_EQ(s.results.rows.size(), 2u);
    EXPECT_EQ(s.results.rows[1].Identifier, "cell.abf G1 T1 AP");
    EXPECT_TRUE(w.overlay.text.empty());
    EXPECT_EQ(w.form.Command4, "AP Wave Analysis 2");
}

TEST_F(ApWaveTest, AhpWindowEndsAtTheNextEvent) {
    // A slow AHP recovery, and the next event 3 ms (150 points) after this trace's event.
    FillStore(w.store, {ApTrace(1000), ApTrace(1000)});
    for (float time : {10.0f, 13.0f, 100.0f}) s.events.Add() = EventRecord{.Time = time};
    w.store.TraceEvent = {0, 1, 2, 0};
    const ApMeasurement first = Measure(ApRoutine::ThirdDifferential, 1);
    const ApMeasurement second = Measure(ApRoutine::ThirdDifferential, 2);
    EXPECT_EQ(first.WEnd, 150);
    // The last trace's next event lies beyond the trace: the window runs to its end.
    EXPECT_EQ(second.WEnd, kPoints - 1 - kPeak);
    EXPECT_GT(first.AHPArea, second.AHPArea);
}

TEST_F(ApWaveTest, BadInputGivesMessagesOrDefinedValues) {
    ScriptedDialogs ui;
    FillStore(w.store, {ApTrace()});
    // Yt not below Ym: the message and no row.
    w.form.Combo20 = "5";
    ui.ExpectMessage("Incorrect values",
                     "Yt cannot be larger or equal to Ym for slope measurement.  Please readjust "
                     "these values and try again.");
    ApWaveAnalysis(s, ui, w, ApRoutine::ThirdDifferential);
    EXPECT_TRUE(s.results.rows.empty());
    w.form.Combo20 = "2";

    // A flat trace and a peak period beyond the trace: finite numbers, no crash.
    FillStore(w.store, {std::vector<std::int16_t>(kPoints, 0)});
    s.params.PeriodStartBaseline = 1'000'000;
    for (ApRoutine routine : {ApRoutine::ThirdDifferential, ApRoutine::HeavyFiltering})
        ApWaveAnalysis(s, ui, w, routine);
    ASSERT_EQ(s.results.rows.size(), 2u);
    for (const ResultRow& row : s.results.rows)
        for (float v : row.Values) EXPECT_TRUE(std::isfinite(v));
    // An empty store: nothing.
    w.store = TraceStore{};
    ApWaveAnalysis(s, ui, w, ApRoutine::ThirdDifferential);
    EXPECT_EQ(s.results.rows.size(), 2u);
}

}  // namespace
}  // namespace ardel::group
