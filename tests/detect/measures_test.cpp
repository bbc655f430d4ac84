// The measuring routines on their own, on hand-placed samples of the first screen.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "detect/detect_rig.h"
#include "detect/window_analysis.h"

namespace ardel::testing {
namespace {

using Trace = std::vector<std::int16_t>;

DetectContext ContextOf(const Rig& rig) {
    return DetectContext{rig.s.recording, rig.s.params,
                         *ComputePointCounts(rig.s.recording, rig.s.params),
                         rig.s.params.PeakDirection == 1 ? 1 : -1};
}

// A peak of 200 at 17, before the first chunk of the file (20..29), and a smaller one of 90 at
// 25 in its tail. Baseline window of one point, 10 points before the peak.
Trace HiddenPeak() {
    Trace t(2048, 0);
    Put(t, 16, {100, 200, 120, 60, 30, 20, 30, 60, 80, 90, 50, 20, 5});
    return t;
}

DetectionParameters OnePointBaseline() {
    DetectionParameters p = SmallParameters();
    p.PeriodBaselineAverage = 100;
    return p;
}

TEST(DetectPrepeak, LargerPeakInTheRisingPhaseMovesThePeakBack) {
    // From 25: the highest of 20..25 is 90 at 25; of 15..20 it is 200 at 17, higher. Its own
    // baseline (point 7) is 0, amplitude 200; area back to 15 (0 <= 5% of 200): 300, on to 19
    // (60 <= half of 200): 480, 48 units x ms.
    Rig rig(HiddenPeak(), OnePointBaseline());
    const DetectContext c = ContextOf(rig);
    EXPECT_EQ(DetectPrepeak(c, 25), 17);
    EXPECT_EQ(DetectPrepeak(c, 17), 17);  // nothing higher before it

    struct Case {
        float threshold, area;
        std::int32_t result;
    };
    for (Case k : {Case{200, 1, 17}, Case{200.01f, 1, 25}, Case{5, 48, 17}, Case{5, 48.01f, 25}}) {
        SCOPED_TRACE(::testing::Message() << k.threshold << " " << k.area);
        rig.s.params.ThresholdAmplitude = k.threshold;
        rig.s.params.AreaThreshold = k.area;
        EXPECT_EQ(DetectPrepeak(ContextOf(rig), 25), k.result);
    }
}

TEST(DetectPrepeak, ScanRecordsTheHiddenPeakInsteadOfTheOneItsChunkFound) {
    // The peak at 17 lies before the first chunk; the chunk's own peak at 25 hands it over.
    // Measured at 17: rise back to 15 (Rise 2), 3-point means 126.67, 70 (<= 100): Decay 2,
    // area 200 + 100 + 0 + 126.67 + 70 -> 497, 49.7; 10-90 crossings 16.8 and 15.2: 0.16 ms,
    // slope 200 x 0.8 / 0.16; half-width from 16 to 18.333.
    Rig rig(HiddenPeak(), OnePointBaseline());
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 1) << rig.Times();
    const EventRecord& e = rig.Event(1);
    EXPECT_FLOAT_EQ(e.Time, 1.7f);
    EXPECT_EQ(e.RelativeTime, 17);
    EXPECT_EQ(e.Amplitude, 200);
    EXPECT_EQ(e.Baseline, 0);
    EXPECT_EQ(e.Noise, 0);
    EXPECT_EQ(e.Rise, 2);
    EXPECT_EQ(e.Decay, 2);
    EXPECT_FLOAT_EQ(e.Area, 49.7f);
    EXPECT_NEAR(e.Rise1090, 0.16, 1e-6);
    EXPECT_NEAR(e.Slope1090, 1000.0, 1e-2);
    EXPECT_EQ(e.Rise50, 2);
    EXPECT_NEAR(e.HalfWidth, 0.23333333, 1e-6);
}

TEST(StandAloneMeasures, AreaAndRiseStartOfTheWorkedEvent) {
    Trace t(2048, 0);
    PutEvent(t, 105);
    Rig rig(t);
    const DetectContext c = ContextOf(rig);
    // Raw samples minus 1 over 101..108: 0 9 39 79 99 89 69 49.
    EXPECT_EQ(FindArea(c, 101, 108, 1), 433);
    EXPECT_EQ(FindArea(c, 101, 108, 0.4), 441);  // rounded at every step: each .6 goes up
    EXPECT_EQ(FindTimetoPeak(c, 105, 10, 1), 101);
    // No point within 1% of 100 above -50: the walk ends one below its limit.
    EXPECT_EQ(FindTimetoPeak(c, 105, 10, -50), 94);
    EXPECT_EQ(FindBaseline(c, 105, 10, 5), 1);
    EXPECT_EQ(FindBaseline(c, 108, 10, 2), 2);  // (3 + 2) / 2 = 2.5 -> 2, halves to even
    EXPECT_EQ(FindBaseline(c, 109, 10, 2), 2);  // (2 + 1) / 2 = 1.5 -> 2

    const Peak pk = FindMax(c, 100, 10, 0);
    EXPECT_EQ(pk.index, 105);
    EXPECT_EQ(pk.value, 100);
    // Equal extremes: the first wins.
    rig.s.recording.CurrentScreen[107] = 100;
    EXPECT_EQ(FindMax(c, 100, 10, 0).index, 105);
}

}  // namespace
}  // namespace ardel::testing
