#include "detect/complex_peaks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "detect/detect_rig.h"
#include "detect/window_analysis.h"
#include "support/scripted_dialogs.h"

namespace ardel::testing {
namespace {

using Trace = std::vector<std::int16_t>;

// 2000 us chunks (20 points, quarters of 5), lead 10, window 5, decay search 20 points.
DetectionParameters ComplexParameters() {
    DetectionParameters p = SmallParameters();
    p.PeriodToSearchMax = 2000;
    return p;
}

// A parent of 200 at `at` + 5 and, on its decay, a second event of 150 at `at` + 14; with
// `third`, one more hump at `at` + 22 on the decay of the second.
void PutPair(Trace& t, std::int64_t at, bool third = false) {
    Put(t, at, {0, 0, 20, 80, 160, 200, 160, 130, 105, 85, 70, 61, 80, 120, 150, 130, 100, 80});
    if (third)
        Put(t, at + 18, {65, 55, 70, 100, 120, 110, 90, 70, 50, 35, 25, 15, 10, 5});
    else
        Put(t, at + 18, {60, 45, 35, 25, 15, 10, 5});
}

// The second event of PutPair(t, 100), worked out by hand:
// - quarter 0: trough 70 at 110 after the seed 200 at 105; the highest point of 110..120 is 150
//   at 114; the 3-point means from 106 on reach their lowest, 70, at 111.
// - decay of the parent through 200 at 105 and 70 at 111: tau = -6 / ln(70/200) = 5.7 -> 6;
//   Base = 200 x exp(-9/6) = 44.6 -> 45; amplitude 150 - 45 = 105.
// - rise from 114 down: 111 (61) is within 5% of 80 above the trough: Rise 3; area from Base
//   105 + 75 + 35 + 16 = 231; raw decay 130, 100, 80 (35 <= 52.5): Decay 3; area 406 -> 40.6.
// - 10-90 against the trough: 90% (142) between 113 and 114 at 113.733, 10% (78) between 111
//   and 112 at 111.895: 0.18386 ms; slope 105 x 0.8 / 0.18386.
// - Rise50 walks from 114 down to 3 (the count, not the index): 112 is below 110: 2.
// - half-width against Base: 97.5 at 112.4375 and at 116.125: 0.36875 ms.
void ExpectSecondEvent(const EventRecord& e, std::int32_t relative, std::int32_t peakPoint) {
    EXPECT_FLOAT_EQ(e.Time, 11.4f);
    EXPECT_EQ(e.Amplitude, 105);
    EXPECT_EQ(e.Noise, 0);
    EXPECT_EQ(e.Rise, 3);
    EXPECT_EQ(e.Decay, 3);
    EXPECT_EQ(e.Baseline, 45);
    EXPECT_FLOAT_EQ(e.Area, 40.6f);
    EXPECT_EQ(e.Channel, 0);
    EXPECT_EQ(e.BaselineLead, 10);
    EXPECT_NEAR(e.Rise1090, 0.1838596, 1e-6);
    EXPECT_NEAR(e.Slope1090, 105 * 0.8 / 0.1838596, 1e-2);
    EXPECT_EQ(e.Rise50, 2);
    EXPECT_NEAR(e.HalfWidth, 0.36875, 1e-6);
    EXPECT_EQ(e.RelativeTime, relative);
    EXPECT_EQ(e.PeakPoint, peakPoint);
}

TEST(ComplexPeaks, SecondEventOnTheDecayIsFoundOnlyWithComplexPeaksOn) {
    Trace t(2048, 0);
    PutPair(t, 100);
    Rig plain(t, ComplexParameters());  // the second event's chunk sees it below its baseline
    Command1(plain.s, plain.quiet);
    ASSERT_EQ(plain.Count(), 1) << plain.Times();
    EXPECT_FLOAT_EQ(plain.Event(1).Time, 10.5f);

    Rig rig(t, ComplexParameters());
    rig.s.options.ComplexPeak = true;
    rig.s.options.SoundOn = true;
    ScriptedDialogs ui;
    Command1(rig.s, ui);
    ASSERT_EQ(rig.Count(), 2) << rig.Times();
    EXPECT_EQ(rig.Event(1), plain.Event(1));
    ExpectSecondEvent(rig.Event(2), 114, 114);
    EXPECT_EQ(rig.Event(2).GroupNumber, 0);
    EXPECT_EQ(rig.Event(2).PeakDirection, 1);
    EXPECT_EQ(ui.beeps, 2);
    ASSERT_EQ(rig.s.display.transientMarks.size(), 8u);
    EXPECT_EQ(rig.s.display.transientMarks[4].x, 114);
    EXPECT_EQ(rig.s.display.transientMarks[5].x, 114 - 10 + 2.5);
    EXPECT_EQ(rig.s.display.transientMarks[6].x, 111);
    EXPECT_EQ(rig.s.display.transientMarks[7].x, 117);
}

TEST(ComplexPeaks, ScanFollowsATrainPeakByPeak) {
    Trace t(2048, 0);
    PutPair(t, 100, true);
    Rig rig(t, ComplexParameters());
    rig.s.options.ComplexPeak = true;
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 3) << rig.Times();
    EXPECT_FLOAT_EQ(rig.Event(2).Time, 11.4f);
    EXPECT_FLOAT_EQ(rig.Event(3).Time, 12.2f);  // the second event is the third's parent
    EXPECT_EQ(rig.Event(3).Noise, rig.Event(2).Noise);
}

TEST(ComplexPeaks, ParentWithoutASecondHumpLeavesTheTableAsItWas) {
    Trace t(2048, 0);
    PutEvent(t, 105);
    Rig rig(t, ComplexParameters());
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 1);
    const EventRecord before = rig.Event(1);
    const auto marks = rig.s.display.transientMarks.size();
    EXPECT_FALSE(DetectMultiPeak(rig.s, rig.quiet, 1, false));
    EXPECT_FALSE(DetectMultiPeak(rig.s, rig.quiet, 1, true));
    rig.s.events.CurrentEvent = 0;  // clamped to 1
    menu_DoublePeak_Click(rig.s, rig.quiet);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    ASSERT_EQ(rig.Count(), 1);
    EXPECT_EQ(rig.Event(1), before);
    EXPECT_EQ(rig.s.display.transientMarks.size(), marks);
}

TEST(ComplexPeaks, SecondPressOnTheSameEventOverwritesItsRecordInPlace) {
    Trace t(2048, 0);
    PutPair(t, 100);
    Rig rig(t, ComplexParameters());
    rig.s.options.SoundOn = true;
    ScriptedDialogs ui;
    Command1(rig.s, ui);
    ASSERT_EQ(rig.Count(), 1);
    rig.s.events.CurrentEvent = 1;
    menu_DoublePeak_Click(rig.s, ui);
    ASSERT_EQ(rig.Count(), 2);
    ExpectSecondEvent(rig.Event(2), 114, 114);
    EXPECT_EQ(rig.s.events.GridCurrentRow, 2);
    EXPECT_EQ(ui.beeps, 2);

    rig.s.events.CurrentEvent = 5;  // clamped to the last event, behind which is nothing
    menu_DoublePeak_Click(rig.s, ui);
    EXPECT_EQ(rig.s.events.CurrentEvent, 2);
    ASSERT_EQ(rig.Count(), 2);

    // Group and direction of the record survive; the measured fields are written again.
    EventRecord& second = rig.s.events[2];
    second.GroupNumber = 7;
    second.PeakDirection = -1;
    second.Amplitude = 1;
    second.Decay = 99;
    second.BurstNumber = 4;
    const auto marks = rig.s.display.transientMarks.size();

    rig.s.events.CurrentEvent = 1;
    menu_DoublePeak_Click(rig.s, ui);
    ASSERT_EQ(rig.Count(), 2);
    ExpectSecondEvent(rig.Event(2), 114, 114);
    EXPECT_EQ(rig.Event(2).GroupNumber, 7);
    EXPECT_EQ(rig.Event(2).PeakDirection, -1);
    EXPECT_EQ(rig.Event(2).BurstNumber, 4);
    EXPECT_EQ(ui.beeps, 2);  // no sound and no marks for an overwrite
    EXPECT_EQ(rig.s.display.transientMarks.size(), marks);
}

TEST(ComplexPeaks, TroughBeyondTheParentsBaselineBecomesTheBase) {
    // The parent's decay overshoots to -30 before the second hump: r falls back to 1, the
    // extrapolated decay is about the parent's baseline (0), and the base, which never stands
    // above the trough, is the trough itself.
    Trace t(2048, 0);
    Put(t, 100, {0, 0, 20, 80, 160, 200, 120, 40, -10, -25, -30, -31, -20, 20, 60, 40, 10, 0});
    Rig rig(t, ComplexParameters());
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 1);
    ASSERT_TRUE(DetectMultiPeak(rig.s, rig.quiet, 1, false));
    ASSERT_EQ(rig.Count(), 2);
    EXPECT_FLOAT_EQ(rig.Event(2).Time, 11.4f);
    // Lowest 3-point mean: (-31 - 25 - 30) / 3 = -28.67 at 110, whose integer part is -29.
    EXPECT_EQ(rig.Event(2).Baseline, -29);
    EXPECT_EQ(rig.Event(2).Amplitude, 89);
    EXPECT_EQ(rig.Event(2).Rise, 3);   // 111 lies within 5% of 89 above the trough
    EXPECT_EQ(rig.Event(2).Decay, 2);  // 10 - (-29) <= 44.5 at 116
    EXPECT_FLOAT_EQ(rig.Event(2).Area, 25.3f);
}

// Two parents, each with a train of two further peaks behind it, one on the first screen and
// one that the scan reaches from a screen starting two Blocks later.
Trace TwoTrains() {
    Trace t(4096, 0);
    PutPair(t, 100, true);
    PutPair(t, 600, true);
    return t;
}

TEST(ComplexPeaks, ScanVisitsTheEventsItStartedWithOnly) {
    Rig rig(TwoTrains(), ComplexParameters());
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 2) << rig.Times();
    ScriptedDialogs ui;
    menu_ScanDoublePeak(rig.s, ui);
    EXPECT_EQ(ui.yields, 2);
    EXPECT_FALSE(rig.s.display.NonStopRunning);
    // The peaks found are appended and not scanned themselves: the third peak of each train
    // stays unfound.
    ASSERT_EQ(rig.Count(), 4) << rig.Times();
    ExpectSecondEvent(rig.Event(3), 114, 114);
    // The second parent (60.5 ms) is analysed on the screen that starts at the Block holding
    // its baseline window: (60500 - 1000) / 100 / 256 = 2.3 -> Block 2, point 512.
    EXPECT_EQ(rig.s.recording.ScreenBlock, rig.s.recording.header.lDataSectionPtr + 2);
    EXPECT_FLOAT_EQ(rig.Event(4).Time, 61.4f);
    EXPECT_EQ(rig.Event(4).RelativeTime, 614 - 512);
    EXPECT_EQ(rig.Event(4).PeakPoint, 614);
    EXPECT_EQ(rig.Event(4).Amplitude, rig.Event(3).Amplitude);
}

TEST(ComplexPeaks, InterruptStopsTheScanBetweenEvents) {
    Rig rig(TwoTrains(), ComplexParameters());
    Command1(rig.s, rig.quiet);
    ScriptedDialogs ui;
    ui.onYield = [&] { Command4(rig.s); };
    menu_ScanDoublePeak(rig.s, ui);
    EXPECT_EQ(ui.yields, 1);
    EXPECT_FALSE(rig.s.display.NonStopRunning);
    ASSERT_EQ(rig.Count(), 3) << rig.Times();
    EXPECT_FLOAT_EQ(rig.Event(3).Time, 11.4f);
}

// The peak loop of the scan must end even where the newest record leads back to a state the
// scan was in before.
TEST(ComplexPeaks, ScanEndsWhenTheSamePeakIsFoundAgainBehindItself) {
    // With two points of peak smoothing each further "peak" on the plain decay of one event is
    // measured against a trough of its own, and the peak found behind the one at 11.0 ms is
    // that peak itself, with the same measures. The train ends with that one copy, and the
    // scan goes on behind it.
    Trace t(2048, 0);
    PutEvent(t, 105);
    DetectionParameters p = ComplexParameters();
    p.NumberPointsPeak = 2;
    Rig rig(t, p);
    rig.s.options.ComplexPeak = true;
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 4) << rig.Times();
    EXPECT_FLOAT_EQ(rig.Event(1).Time, 10.5f);
    EXPECT_FLOAT_EQ(rig.Event(2).Time, 10.8f);
    EXPECT_FLOAT_EQ(rig.Event(3).Time, 11.0f);
    EXPECT_EQ(rig.Event(4), rig.Event(3));
}

TEST(ComplexPeaks, ScanEndsWhenTwoPeaksLeadBackToEachOther) {
    // A peak of 200 at 100 and one of 150 at 109 on its decay, short chunks (4 points) and a
    // long lead (30). The complex search finds the second peak behind the first; the scan goes
    // on at 117, whose candidate reaches back to the first peak, whose complex search finds
    // the second again, and the scan is back at 117 with the same newest record. It then goes
    // on one chunk further.
    Trace t(2048, 0);
    Put(t, 100,
        {200, 170, 140, 120, 105, 95, 100, 120, 140, 150, 120, 90, 70, 50, 40, 30, 20, 15, 10, 5});
    DetectionParameters p = SmallParameters();
    p.PeriodToSearchMax = 400;
    p.PeriodStartBaseline = 3000;
    p.PeriodFindDecayTime = 1000;
    Rig rig(t, p);
    rig.s.options.ComplexPeak = true;
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 4) << rig.Times();
    const float times[] = {10.0f, 10.9f, 10.0f, 10.9f};
    for (int n = 1; n <= 4; ++n) EXPECT_FLOAT_EQ(rig.Event(n).Time, times[n - 1]) << n;
    EXPECT_EQ(rig.Event(3), rig.Event(1));
    EXPECT_EQ(rig.Event(4), rig.Event(2));
}

TEST(ComplexPeaks, AnAverageBeyondTheBuffersLeavesTheLastOneTakenInTheComparison) {
    // One Block a screen: the buffers end at 511. A parent of 200 at 497 decays to 7 at 511;
    // beyond, every point reads 0 and no average can be taken.
    // Quarters 0 and 1 fail, the last average they took being 8 (at 510). Quarter 2: trough 0
    // at 512, where the peak search takes no average at all, so 8 stands against the trough:
    // V = 8 at 512. 3-point means down to 512: (7 + 0 + 0) / 3 -> 2; 8 - 2 passes. The base:
    // tau = -15 / ln(2 / 200) -> 3, 200 x exp(-5) = 1.35 -> 1; amplitude 7; area -1 at 512 and
    // -1 at 513 (within half the amplitude): 0.2.
    Trace t(2048, 0);
    Put(t, 497, {200, 150, 110, 80, 60, 45, 35, 28, 22, 18, 15, 12, 10, 8, 7});
    DetectionParameters p = ComplexParameters();
    p.AreaThreshold = 0.1f;
    Rig rig(t, p, 1);
    EventRecord& parent = rig.s.events.Add();
    parent.Time = 49.7f;
    parent.Amplitude = 200;
    parent.Baseline = 0;
    ASSERT_TRUE(DetectMultiPeak(rig.s, rig.quiet, 1, false));
    ASSERT_EQ(rig.Count(), 2);
    const EventRecord& e = rig.Event(2);
    EXPECT_FLOAT_EQ(e.Time, 51.2f);
    EXPECT_EQ(e.Amplitude, 7);
    EXPECT_EQ(e.Baseline, 1);
    EXPECT_EQ(e.Rise, 0);
    EXPECT_EQ(e.Decay, 1);
    EXPECT_FLOAT_EQ(e.Area, 0.2f);
}

TEST(ComplexPeaks, ParentFarOffTheScreenEndsTheSearchWithoutAPeak) {
    // A damaged time some 2^31 points either side of the screen: every point of the search
    // reads 0.
    Trace t(2048, 0);
    PutPair(t, 100);
    DetectionParameters p = ComplexParameters();
    p.PeriodToSearchMax = 100000;  // quarters of 250 points reach past the 32-bit range
    Rig rig(t, p);
    for (float time : {214748352.0f, -214748352.0f}) {
        SCOPED_TRACE(time);
        rig.s.events.SetCount(0);
        EventRecord& parent = rig.s.events.Add();
        parent.Time = time;
        parent.Amplitude = 200;
        EXPECT_FALSE(DetectMultiPeak(rig.s, rig.quiet, 1, false));
        EXPECT_EQ(rig.Count(), 1);
    }
}

}  // namespace
}  // namespace ardel::testing
