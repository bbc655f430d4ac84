#include "detect/window_analysis.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "detect/detect_rig.h"
#include "support/scripted_dialogs.h"

namespace ardel::testing {
namespace {

using Trace = std::vector<std::int16_t>;

Trace Flat(std::size_t n, int value = 0) {
    return Trace(n, std::int16_t(value));
}

// The event of PutEvent with its peak at 105, worked out by hand (D = +1, 10-point chunks, the
// first chunk of the file at 20):
// - chunk 100..109: peak 105 (100); baseline = mean of 95..99 = 5/5 = 1; amplitude 99.
// - pre-peak: the largest of 100..105 is the peak itself, so nothing moves.
// - noise: the middle of the baseline window, 95 + 2.5, rounds (halves to even) to 98: 3 - 1 = 2.
// - rise walk 105,104,... stops at 101 (0 <= 0.99); Rise 4; area 99+79+39+9+0 = 226.
// - decay walk on 3-point means: 106 -> 86.67, 107 -> 70, 108 -> 50 (49 <= 49.5) stops; Decay 3;
//   area 226 + 85.67 -> 312, + 69 -> 381, + 49 -> 430; Area = 430 x 0.1 ms = 43.
// - 10-90: the 90% level 90.1 is crossed between 104 (80) and 105 (100): 104.505; the 10% level
//   10.9 between 102 (10) and 103 (40): 102.03; (104.505 - 102.03) x 0.1 = 0.2475 ms.
// - slope 99 x 0.8 / 0.2475 = 320; Rise50: 103 is the first point below 49.5 above baseline: 2.
// - half-width: left 50.5 between 103 and 104: 103.2625; right between 107 (70) and 108 (50):
//   107.975; 4.7125 points = 0.47125 ms.
void ExpectWorkedRecord(const EventRecord& e, float time, int direction, std::int32_t relative,
                        std::int32_t peakPoint) {
    EXPECT_FLOAT_EQ(e.Time, time);
    EXPECT_EQ(e.Amplitude, 99);
    EXPECT_EQ(e.Noise, 2 * direction);
    EXPECT_EQ(e.Rise, 4);
    EXPECT_EQ(e.Decay, 3);
    EXPECT_EQ(e.Baseline, direction);
    EXPECT_FLOAT_EQ(e.Area, 43.0f);
    EXPECT_EQ(e.GroupNumber, 0);
    EXPECT_EQ(e.Channel, 0);
    EXPECT_EQ(e.BaselineLead, 10);
    EXPECT_NEAR(e.Rise1090, 0.2475, 1e-6);
    EXPECT_NEAR(e.HalfWidth, 0.47125, 1e-6);
    EXPECT_EQ(e.Rise50, 2);
    EXPECT_EQ(e.PeakDirection, direction);
    EXPECT_EQ(e.BurstNumber, 0);
    EXPECT_EQ(e.BurstEventNumber, 0);
    EXPECT_NEAR(e.Slope1090, 320.0 * direction, 1e-3);
    EXPECT_EQ(e.RelativeTime, relative);
    EXPECT_EQ(e.PeakPoint, peakPoint);
}

TEST(WindowAnalysis, CleanEventGivesTheWorkedRecordInBothDirections) {
    for (int direction : {1, -1}) {
        SCOPED_TRACE(direction);
        Trace t = Flat(4096);
        PutEvent(t, 105, direction);
        PutEvent(t, 1024 + 105, direction);  // the same event on the second screen
        Rig rig(t, SmallParameters(direction));
        Command1(rig.s, rig.quiet);
        ASSERT_EQ(rig.Count(), 1);
        ExpectWorkedRecord(rig.Event(1), 10.5f, direction, 105, 105);
        EXPECT_EQ(rig.s.events.GridCurrentRow, 1);
        // Four marks: peak, baseline centre (105 - 10 + 2.5), rise start, decay end.
        const auto& marks = rig.s.display.transientMarks;
        ASSERT_EQ(marks.size(), 4u);
        EXPECT_EQ(marks[0].x, 105);
        EXPECT_EQ(marks[1].x, 97.5);
        EXPECT_EQ(marks[2].x, 101);
        EXPECT_EQ(marks[3].x, 108);

        Command2(rig.s, rig.quiet);
        ASSERT_EQ(rig.Count(), 2);
        // RelativeTime is the index on its own screen, PeakPoint counts from the file's start.
        ExpectWorkedRecord(rig.Event(2), 112.9f, direction, 105, 1129);
    }
}

TEST(WindowAnalysis, PeakSmoothingAveragesAnOddNumberButDividesByTheSetting) {
    Trace t = Flat(2048);
    PutEvent(t, 105);
    struct Case {
        std::int16_t points;
        std::int32_t amplitude;
    };
    // Around the peak: 80 100 90. Three points: 270 / 3 = 90. Two points: the same three
    // points (half width 1) divided by 2 = 135. Baseline 1 in both cases.
    for (Case c : {Case{3, 89}, Case{2, 134}, Case{1, 99}}) {
        SCOPED_TRACE(c.points);
        DetectionParameters p = SmallParameters();
        p.NumberPointsPeak = c.points;
        Rig rig(t, p);
        Command1(rig.s, rig.quiet);
        ASSERT_EQ(rig.Count(), 1);
        EXPECT_FLOAT_EQ(rig.Event(1).Time, 10.5f);
        EXPECT_EQ(rig.Event(1).Amplitude, c.amplitude);
        EXPECT_EQ(rig.Event(1).Baseline, 1);
    }
}

TEST(WindowAnalysis, FirstScreenStartsAfterOneBaselineLeadAndOneChunk) {
    // First chunk: 10 + 10 = 20..29. An event peaking at 7 is never looked at; one peaking at
    // 20 is found.
    Trace t = Flat(2048);
    Put(t, 5, {10, 50, 100, 50, 10});
    Put(t, 18, {10, 50, 100, 50, 10});
    Rig rig(t);
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 1);
    EXPECT_FLOAT_EQ(rig.Event(1).Time, 2.0f);
    EXPECT_EQ(rig.Event(1).RelativeTime, 20);
}

TEST(WindowAnalysis, LookBackAfterAJumpReadsTheScreenShownLast) {
    // The event of PutEvent at point 5 of the fourth screen: its baseline window lies on the
    // third screen. The first screen ends in a level of 500.
    Trace t = Flat(4096);
    Put(t, 1019, {500, 500, 500, 500, 500});
    PutEvent(t, 3072 + 5);

    Rig rig(t);
    rig.Show(3);  // straight from the first screen: the look-back sees 500 and refuses
    Command1(rig.s, rig.quiet);
    EXPECT_EQ(rig.Count(), 0);

    rig.Show(0);
    rig.Show(2);
    rig.Show(3);  // one screen forward: the look-back is adjacent
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 1);
    ExpectWorkedRecord(rig.Event(1), 307.7f, 1, 5, 3077);
}

TEST(WindowAnalysis, PeakJustPastTheScreenIsFoundOnceUnlessAnotherRecordCameBetween) {
    // The last chunk of a screen (1020..1029) reaches 6 points into the next screen.
    Trace t = Flat(4096);
    PutEvent(t, 1027);
    {
        Rig rig(t);
        Command1(rig.s, rig.quiet);
        ASSERT_EQ(rig.Count(), 1);
        ExpectWorkedRecord(rig.Event(1), 102.7f, 1, 1027, 1027);
        Command2(rig.s, rig.quiet);  // its twin at point 3 has exactly the same Time
        EXPECT_EQ(rig.Count(), 1);
    }
    {
        Rig rig(t);
        Command1(rig.s, rig.quiet);
        rig.s.events.Add().Time = 50;  // only the last record is compared
        Command2(rig.s, rig.quiet);
        ASSERT_EQ(rig.Count(), 3);
        ExpectWorkedRecord(rig.Event(3), 102.7f, 1, 3, 1027);
    }
}

TEST(WindowAnalysis, RunningTheSameScreenAgainComparesWithTheLastRecordOnly) {
    Trace one = Flat(2048);
    PutEvent(one, 105);
    Rig single(one);
    Command1(single.s, single.quiet);
    Command1(single.s, single.quiet);
    EXPECT_EQ(single.Count(), 1);  // the only event equals the last record

    Trace two = one;
    PutEvent(two, 505);
    Rig pair(two);
    Command1(pair.s, pair.quiet);
    Command1(pair.s, pair.quiet);
    ASSERT_EQ(pair.Count(), 4);
    const float times[] = {10.5f, 50.5f, 10.5f, 50.5f};
    for (int n = 1; n <= 4; ++n) EXPECT_FLOAT_EQ(pair.Event(n).Time, times[n - 1]) << n;
}

TEST(WindowAnalysis, ExtremesOnAChunkEdgeAreCandidatesAndOnlyOnePointChunksAreSkipped) {
    // Peaks on the first point of chunk 100..109 and on the last point of chunk 130..139.
    // The chunk after the second starts on its decay; re-centring brings that candidate back
    // to 139, which is then dropped as equal to the last record.
    Trace t = Flat(2048);
    PutEvent(t, 100);
    PutEvent(t, 139);
    Rig rig(t);
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 2);
    EXPECT_FLOAT_EQ(rig.Event(1).Time, 10.0f);
    EXPECT_FLOAT_EQ(rig.Event(2).Time, 13.9f);

    DetectionParameters onePoint = SmallParameters();
    onePoint.PeriodToSearchMax = 100;
    Rig single(t, onePoint);
    Command1(single.s, single.quiet);
    EXPECT_EQ(single.Count(), 0);
}

TEST(WindowAnalysis, ThresholdAndAreaAtTheirLimitsAreAccepted) {
    Trace t = Flat(2048);
    PutEvent(t, 105);  // amplitude 99, area 43
    struct Case {
        float threshold, area;
        int found;
    };
    for (Case c : {Case{99, 1, 1}, Case{99.01f, 1, 0}, Case{5, 43, 1}, Case{5, 43.01f, 0}}) {
        SCOPED_TRACE(::testing::Message() << c.threshold << " " << c.area);
        DetectionParameters p = SmallParameters();
        p.ThresholdAmplitude = c.threshold;
        p.AreaThreshold = c.area;
        Rig rig(t, p);
        Command1(rig.s, rig.quiet);
        EXPECT_EQ(rig.Count(), c.found);
    }
}

TEST(WindowAnalysis, WrongSignIsRefusedAndADecayThatNeverEndsCountsOnePastTheSearch) {
    // A step from 100 down to 0 at point 100.
    Trace t = Flat(2048, 0);
    for (int k = 0; k < 100; ++k) t[std::size_t(k)] = 100;
    {
        Rig up(t, SmallParameters(1));  // a peak below its baseline: never an event
        Command1(up.s, up.quiet);
        EXPECT_EQ(up.Count(), 0);
    }
    // Downward: peak 0 at 100 against a baseline of 100. The rise walk stops at 99 (Rise 1);
    // the 3-point means stay at 0, so the decay walk runs out: Decay = 20 + 1. Area: -100 for
    // the peak, 0 at 99, then 20 x -100: 2100 x 0.1 = 210. 10-90 crossings 99.9 and 99.1;
    // Rise50 1; half-width from 99.5 to 100 + 20: 2.05 ms.
    Rig down(t, SmallParameters(-1));
    Command1(down.s, down.quiet);
    ASSERT_EQ(down.Count(), 1);
    const EventRecord& e = down.Event(1);
    EXPECT_FLOAT_EQ(e.Time, 10.0f);
    EXPECT_EQ(e.Amplitude, 100);
    EXPECT_EQ(e.Baseline, 100);
    EXPECT_EQ(e.Noise, 0);
    EXPECT_EQ(e.Rise, 1);
    EXPECT_EQ(e.Decay, 21);
    EXPECT_FLOAT_EQ(e.Area, 210.0f);
    EXPECT_NEAR(e.Rise1090, 0.08, 1e-6);
    EXPECT_NEAR(e.Slope1090, -1000.0, 1e-2);
    EXPECT_EQ(e.Rise50, 1);
    EXPECT_NEAR(e.HalfWidth, 2.05, 1e-6);
}

TEST(WindowAnalysis, RiseThatNeverComesNearTheBaselineCountsOnePastTheLead) {
    // A baseline window longer than the lead (30 points from peak-10) takes in the deep
    // after the peak: ramp 50, 55 .. 100 on 95..105, then 0. Baseline 825 / 30 = 27.5 -> 28,
    // amplitude 72; no point of the ramp comes within 0.72 of it.
    Trace t = Flat(2048);
    for (int k = 0; k <= 10; ++k) t[std::size_t(95 + k)] = std::int16_t(50 + 5 * k);
    DetectionParameters p = SmallParameters();
    p.PeriodBaselineAverage = 3000;
    Rig rig(t, p);
    Command1(rig.s, rig.quiet);
    ASSERT_GE(rig.Count(), 1);
    const EventRecord& e = rig.Event(rig.Count());
    EXPECT_FLOAT_EQ(e.Time, 10.5f);
    EXPECT_EQ(e.Baseline, 28);
    EXPECT_EQ(e.Amplitude, 72);
    EXPECT_EQ(e.Rise, 11);
}

TEST(WindowAnalysis, ZeroRise1090KeepsTheSlopeOfTheCandidateBefore) {
    // Ramp 50 .. 100 on 495..505 after a 0 at 494, then -1700 to the end of the screen, with a
    // 30-point baseline window: the baseline lies so deep that every point from the peak back
    // to one past the lead stays above the 90% level. The 10-90 walks find no crossing at all,
    // Rise1090 is 0, and the slope cannot be divided out. The same holds for the candidate at
    // 500 that the chunk before finds and re-centres.
    Trace t = Flat(2048);
    PutEvent(t, 105);
    for (int k = 0; k <= 10; ++k) t[std::size_t(495 + k)] = std::int16_t(50 + 5 * k);
    for (int k = 506; k < 2048; ++k) t[std::size_t(k)] = -1700;
    DetectionParameters p = SmallParameters();
    p.PeriodBaselineAverage = 3000;
    Rig rig(t, p);
    Command1(rig.s, rig.quiet);
    ASSERT_EQ(rig.Count(), 3) << rig.Times();
    EXPECT_FLOAT_EQ(rig.Event(1).Time, 10.5f);
    ASSERT_NE(rig.Event(1).Rise1090, 0.0f);
    EXPECT_NEAR(rig.Event(1).Slope1090, 320.0, 1e-3);  // 83 x 0.8 / 0.2075
    for (int n : {2, 3}) {
        EXPECT_EQ(rig.Event(n).Rise1090, 0.0f) << n;
        EXPECT_EQ(rig.Event(n).Slope1090, rig.Event(1).Slope1090) << n;
    }
    EXPECT_FLOAT_EQ(rig.Event(3).Time, 50.5f);
    EXPECT_EQ(rig.Event(3).Rise, 11);  // the rise walk ran out as well
}

TEST(WindowAnalysis, PointCountsBeyond16BitsKeepWhatTheSlotHeld) {
    // A step to 100 that never decays, with 32766 or 32767 points of decay search on a screen
    // of 32768 points: the walk runs out, Decay = DecayPoints + 1. 32767 fits; 32768 does not,
    // and the field keeps what the slot held: the first add after a shrink cuts the array to
    // size and keeps slot 1 of the earlier, longer table, the second add makes a fresh slot.
    Trace t = Flat(70000);
    for (std::size_t k = 105; k < t.size(); ++k) t[k] = 100;
    for (std::int32_t points : {32766, 32767}) {
        SCOPED_TRACE(points);
        DetectionParameters p = SmallParameters();
        p.PeriodFindDecayTime = points * 100;
        Rig rig(t, p, 128);
        for (int n = 1; n <= 3; ++n) rig.s.events.Add().Decay = std::int16_t(1111 * n);
        rig.s.events.SetCount(0);
        Command1(rig.s, rig.quiet);
        ASSERT_GE(rig.Count(), 1);
        EXPECT_FLOAT_EQ(rig.Event(1).Time, 10.5f);
        EXPECT_EQ(rig.Event(1).Amplitude, 100);
        EXPECT_EQ(rig.Event(1).Rise, 1);
        for (std::int32_t n = 1; n <= rig.Count(); ++n)
            EXPECT_EQ(rig.Event(n).Decay, points == 32766 ? 32767 : n == 1 ? 1111 : 0) << n;
    }
}

TEST(WindowAnalysis, ImproperParametersShowTheMessageAndAnalyseNothing) {
    Trace t = Flat(2048);
    PutEvent(t, 105);
    const std::string text =
        "The analysis parameters are not set properly.  Please run 'Suggest Analysis "
        "Paramters' command under File menu.";
    // Each period below one sample interval (100 us), taken before rounding.
    for (int which = 0; which < 4; ++which) {
        SCOPED_TRACE(which);
        DetectionParameters p = SmallParameters();
        std::int32_t* periods[] = {&p.PeriodToSearchMax, &p.PeriodStartBaseline,
                                   &p.PeriodBaselineAverage, &p.PeriodFindDecayTime};
        *periods[which] = 99;
        Rig rig(t, p);
        ScriptedDialogs ui;
        ui.ExpectMessage("Improper Analysis Parameters", text);
        Command1(rig.s, ui);
        EXPECT_EQ(rig.Count(), 0);
        EXPECT_EQ(rig.s.events.GridVersion, 0u);
    }
    // Exactly one interval is enough: no message.
    DetectionParameters p = SmallParameters();
    p.PeriodBaselineAverage = 100;
    Rig rig(t, p);
    ScriptedDialogs ui;
    Command1(rig.s, ui);
    EXPECT_GE(rig.Count(), 1);
}

// Events on every screen of a file of 17 whole Blocks and a partial one (4396 points, four
// Blocks a screen): five screens, the last one partial, each event at point 105 of its screen
// and one more in the points beyond the last whole Block.
Trace FiveScreens() {
    Trace t = Flat(4396);
    for (int peak : {105, 1129, 2153, 3177, 4201, 4381}) PutEvent(t, peak);
    return t;
}

const float kFiveScreenTimes[] = {10.5f, 112.9f, 215.3f, 317.7f, 420.1f, 438.1f};

TEST(WindowAnalysis, NonStopRunsToTheLastPartialScreenAndStopsThere) {
    Rig rig(FiveScreens());
    ScriptedDialogs ui;
    Command1(rig.s, ui);
    Command3(rig.s, ui);
    const double first = rig.s.recording.header.lDataSectionPtr;
    EXPECT_EQ(ui.yields, 4);
    EXPECT_EQ(rig.s.recording.ScreenBlock, first + 16);
    EXPECT_FALSE(rig.s.display.NonStopRunning);
    ASSERT_EQ(rig.Count(), 6) << rig.Times();  // the tail beyond the last whole Block included
    for (int n = 1; n <= 6; ++n) EXPECT_FLOAT_EQ(rig.Event(n).Time, kFiveScreenTimes[n - 1]) << n;

    // On the last screen neither command loads or analyses anything.
    const int displays = rig.displays;
    const auto marks = rig.s.display.transientMarks.size();
    Command2(rig.s, ui);
    Command3(rig.s, ui);
    EXPECT_EQ(rig.s.recording.ScreenBlock, first + 16);
    EXPECT_EQ(rig.displays, displays);
    EXPECT_EQ(rig.s.display.transientMarks.size(), marks);
    EXPECT_EQ(ui.yields, 4);
    EXPECT_EQ(rig.Count(), 6);
}

TEST(WindowAnalysis, InterruptDuringTheYieldStopsBetweenScreens) {
    Rig rig(FiveScreens());
    ScriptedDialogs ui;
    ui.onYield = [&] { Command4(rig.s); };
    Command1(rig.s, ui);
    Command3(rig.s, ui);
    const double first = rig.s.recording.header.lDataSectionPtr;
    EXPECT_EQ(ui.yields, 1);
    EXPECT_EQ(rig.s.recording.ScreenBlock, first + 4);
    EXPECT_FALSE(rig.s.display.NonStopRunning);
    ASSERT_EQ(rig.Count(), 2);

    ui.onYield = nullptr;
    Command3(rig.s, ui);  // goes on with the next screen
    EXPECT_EQ(rig.s.recording.ScreenBlock, first + 16);
    ASSERT_EQ(rig.Count(), 6);
    for (int n = 1; n <= 6; ++n) EXPECT_FLOAT_EQ(rig.Event(n).Time, kFiveScreenTimes[n - 1]) << n;
}

TEST(WindowAnalysis, SecondChannelOfTwoGivesTheEventsOfTheSameTraceAlone) {
    const Trace trace = MakeTrace(6000, -40,
                                  {{300, -120, 8, 40},
                                   {1010, -60, 4, 20},
                                   {1500, -200, 12, 90},
                                   {1540, -90, 5, 30},
                                   {2300, -35, 3, 15},
                                   {4100, -150, 10, 60}},
                                  3.0, 7);
    const Trace other = MakeTrace(6000, 200, {{700, 300, 5, 30}, {2000, -400, 5, 50}}, 5.0, 9);
    DetectionParameters p = SmallParameters(-1);
    p.PeriodToSearchMax = 2000;
    p.PeriodStartBaseline = 1500;
    p.PeriodFindDecayTime = 4000;
    p.ThresholdAmplitude = 12;

    Rig alone;
    alone.OpenChannels({trace}, p, 4, UnitSpec(1, 100), alone.quiet);
    Command1(alone.s, alone.quiet);
    Command3(alone.s, alone.quiet);

    Rig both;
    ScriptedDialogs ui;
    ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
    both.OpenChannels({other, trace}, p, 4, UnitSpec(2, 50), ui);
    EXPECT_EQ(both.s.recording.SampleInterval, 100.0f);
    Command1(both.s, ui);
    Command3(both.s, ui);

    ASSERT_GE(alone.Count(), 5);
    ASSERT_EQ(both.Count(), alone.Count());
    for (std::int32_t n = 1; n <= alone.Count(); ++n) {
        EventRecord expected = alone.Event(n);
        expected.Channel = 1;
        EXPECT_EQ(both.Event(n), expected) << n;
    }
}

}  // namespace
}  // namespace ardel::testing

namespace ardel::testing {
namespace {

// The work of a screen is bounded by what the three buffers hold, whatever the header claims
// or the periods ask for, and the results are those of stepping through every point.
struct BoundedWork : ::testing::Test {
    TempDir dir;

    // Three events on a flat zero line, 3000 points at 100 us.
    static std::vector<std::int16_t> Trace3000() {
        std::vector<std::int16_t> t(3000, 0);
        PutEvent(t, 700);
        PutEvent(t, 1500);
        PutEvent(t, 2300);
        return t;
    }

    void Open(Session& s, const std::vector<std::int16_t>& trace, std::int32_t claimedSamples) {
        auto bytes = BuildAbfFile(UnitSpec(), trace);
        // lActualAcqLength at byte 10: the header may claim far more than the file holds.
        std::memcpy(bytes.data() + 10, &claimedSamples, 4);
        const auto file = dir / ("claim" + std::to_string(claimedSamples) + ".abf");
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        SilentDialogs ui;
        ASSERT_TRUE(OpenDataFile(s, ui, file));
    }
};

TEST_F(BoundedWork, AHeaderClaimingBillionsOfSamplesEndsWithTheSameEventsAtTheLastScreen) {
    SilentDialogs ui;
    Session truthful, claiming;
    truthful.params = claiming.params = SmallParameters();
    Open(truthful, Trace3000(), 3000);
    Open(claiming, Trace3000(), INT32_MAX);
    for (Session* s : {&truthful, &claiming}) {
        Command1(*s, ui);
        Command3(*s, ui);
    }
    ASSERT_GT(claiming.events.EventCount(), 0);
    ASSERT_EQ(claiming.events.EventCount(), truthful.events.EventCount());
    for (std::int32_t n = 1; n <= truthful.events.EventCount(); ++n) {
        EXPECT_EQ(claiming.events[n].Time, truthful.events[n].Time);
        EXPECT_EQ(claiming.events[n].Amplitude, truthful.events[n].Amplitude);
        EXPECT_EQ(claiming.events[n].Area, truthful.events[n].Area);
    }
    // The run stops where stepping screen by screen would have: the last whole screen of
    // the Blocks the header claims.
    const Recording& r = claiming.recording;
    EXPECT_EQ(r.TotalBlocks, INT32_MAX / 256);
    EXPECT_EQ(r.ScreenBlock - r.header.lDataSectionPtr, double(INT32_MAX / 256 / 4 * 4));
    EXPECT_TRUE(claiming.recording.CurrentScreen.empty());
}

TEST_F(BoundedWork, ABaselineLeadOfMillionsOfPointsMeasuresZerosBeyondTheBuffers) {
    SilentDialogs ui;
    Session s;
    s.params = SmallParameters();
    // 2^23 points of lead: the baseline window, the noise point and the pre-peak search lie
    // far outside the buffers, where every point reads 0.
    s.params.PeriodStartBaseline = 838860800;
    Open(s, Trace3000(), 3000);
    Command1(s, ui);  // on the first screen the scan starts past the lead: nothing
    EXPECT_EQ(s.events.EventCount(), 0);
    Command3(s, ui);
    ASSERT_GE(s.events.EventCount(), 2);
    bool at150 = false, at230 = false;
    for (std::int32_t n = 1; n <= s.events.EventCount(); ++n) {
        const EventRecord& e = s.events[n];
        EXPECT_EQ(e.Baseline, 0);
        EXPECT_EQ(e.Noise, 0);
        if (e.Time == 150.0f || e.Time == 230.0f) {
            (e.Time == 150.0f ? at150 : at230) = true;
            EXPECT_EQ(e.Amplitude, 100);
            EXPECT_EQ(e.Rise, 4);   // the walk back stops at the 1 four points before the peak
            EXPECT_EQ(e.Decay, 3);  // the three-point mean reaches half the amplitude
        }
    }
    EXPECT_TRUE(at150 && at230);
}

TEST_F(BoundedWork, AreaOverACountedStretchIsTheAreaOfEveryStepRounded) {
    // Halves round to even, so an area growing by 2.5 a step alternates between 2 and 3.
    for (double d : {2.5, -2.5, 0.5, -0.5, 1.25, 3.0, -7.75, 0.3}) {
        for (std::int64_t count : {1, 2, 5, 1000, 99999}) {
            std::int32_t stepped = 1, counted = 1;
            for (std::int64_t k = 0; k < count; ++k) AddToArea(stepped, d);
            AddToAreaTimes(counted, d, count);
            EXPECT_EQ(counted, stepped) << d << " x " << count;
        }
    }
    // At the 32-bit limit an overflowing step leaves the area as it is, for good.
    std::int32_t stepped = INT32_MAX - 100, counted = INT32_MAX - 100;
    for (int k = 0; k < 1000; ++k) AddToArea(stepped, 30000.5);
    AddToAreaTimes(counted, 30000.5, 1000);
    EXPECT_EQ(counted, stepped);
    counted = INT32_MIN + 7;
    AddToAreaTimes(counted, -1.5, std::int64_t(1) << 40);
    EXPECT_LE(counted, INT32_MIN + 2);
}

}  // namespace
}  // namespace ardel::testing
