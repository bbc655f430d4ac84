// The mouse on the trace and the one-event commands, on synthetic recordings: a click measures
// as the scan does, refusals, the tenth thresholds, delete and reject, the cursors and
// readouts, recalculation and the baseline moved to a spike's threshold.
#include "detect/manual_edit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/open_file.h"
#include "detect/window_analysis.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedDialogs;
using testing::SynthEvent;
using testing::TempDir;

// Sample interval 50 us and 4 Blocks a screen: 1024 points; with the default periods a search
// period is 200 points, the baseline lead 120, its window 40 and the decay search 400.
class ManualEditTest : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;
    ScriptedDialogs ui;

    void Open(const std::vector<std::int16_t>& trace, AbfBuildSpec spec = {}) {
        const fs::path file = testing::WriteAbf(dir / "rec.abf", spec, {trace});
        ASSERT_TRUE(OpenDataFile(s, ui, file));
    }
    // One raw bit is two amplitude units exactly.
    static AbfBuildSpec TwoUnitsABit() {
        AbfBuildSpec spec;
        spec.scaleFactors = {10.0f / 65536.0f};
        return spec;
    }
    void NextScreen() {
        s.recording.ScreenBlock += s.recording.BlocksPerScreen;
        Display(s);
    }
    void Click(double x, int mask = 0, double y = 30000) {
        PictureMouseDown(s, ui, cursors, x, y, mask, 3.0);
    }
    CursorState cursors;
};

TEST_F(ManualEditTest, AClickOnAPeakGivesTheScansRecord) {
    Open(testing::MakeTrace(8192, 20, {{500, -150.0, 8, 60}, {850, -90.0, 5, 40}}, 2.0));
    Command1(s, ui);
    ASSERT_EQ(s.events.EventCount(), 2);
    const EventRecord first = s.events[1], second = s.events[2];

    s.events.Resize(0);  // fresh slots, so that every field must be written to match
    s.display.transientMarks.clear();
    s.options.SoundOn = true;
    Click(first.RelativeTime + 7);  // a few points off: the search finds the same peak
    Click(second.RelativeTime - 30);
    ASSERT_EQ(s.events.EventCount(), 2);
    EXPECT_EQ(s.events[1], first);
    EXPECT_EQ(s.events[2], second);
    EXPECT_EQ(s.events.GridCurrentRow, 2);
    EXPECT_EQ(ui.beeps, 2);
    EXPECT_EQ(s.display.transientMarks.size(), 8u);
}

TEST_F(ManualEditTest, RefusalsAreSilent) {
    Open(testing::MakeTrace(8192, 0,
                            {{100, -150.0, 8, 60}, {600, -150.0, 8, 60}, {1124, -150.0, 8, 60}}));
    // The same peak twice: by exact time, whichever record holds it.
    Click(600);
    ASSERT_EQ(s.events.EventCount(), 1);
    s.events.Add().Time = 1.0f;  // the duplicate is not the last record any more
    Click(600);
    Click(604);
    EXPECT_EQ(s.events.EventCount(), 2);

    // First screen: the baseline window of the peak at 100 would start before the data.
    Click(100);
    EXPECT_EQ(s.events.EventCount(), 2);
    // On the next screen the same look-back reaches into the previous screen's buffer.
    NextScreen();
    Click(100);
    ASSERT_EQ(s.events.EventCount(), 3);
    EXPECT_FLOAT_EQ(s.events[3].Time, 1124 * 0.05f);

    // Parameters too short for the sampling interval: the one message.
    s.params.PeriodBaselineAverage = 40;
    ui.ExpectMessage("Improper Analysis Parameters",
                     "The analysis parameters are not set properly.  Please run 'Suggest Analysis "
                     "Paramters' command under File menu.");
    Click(500);
    EXPECT_TRUE(ui.Done());
}

TEST_F(ManualEditTest, CtrlAltDetectsAtATenthOfBothThresholdsAndRecalculationKeepsTheFullOnes) {
    // 6 bits are 3.7 units: below the threshold of 5 and above its tenth; the area is below
    // 50 and above 5.
    Open(testing::MakeTrace(8192, 0, {{500, -6.0, 8, 60}, {800, -150.0, 8, 60}}));
    Click(500);
    Click(500, kAltMask | kShiftMask);
    EXPECT_EQ(s.events.EventCount(), 0);
    Click(500, kCtrlMask | kAltMask);
    ASSERT_EQ(s.events.EventCount(), 1);
    EXPECT_EQ(s.events[1].Amplitude, 6);
    EXPECT_LT(s.events[1].Area, 50.0f);

    // Shift+click: recalculated with the full threshold, which refuses it; the record stays.
    const EventRecord small = s.events[1];
    s.events[1].Time += 0.15f;  // three points off, to see that nothing was written
    const EventRecord shifted = s.events[1];
    Click(503, kShiftMask);
    EXPECT_EQ(s.events[1], shifted);
    EXPECT_NE(s.events[1], small);

    // Alt+Shift and all three modifiers act as a plain click.
    Click(800, kAltMask | kShiftMask | kCtrlMask);
    EXPECT_EQ(s.events.EventCount(), 2);
}

TEST_F(ManualEditTest, DeleteAndRejectKeepTheTableInOrder) {
    Open(testing::MakeTrace(8192, 0,
                            {{400, -150.0, 8, 60}, {650, -150.0, 8, 60}, {900, -150.0, 8, 60}}));
    Command1(s, ui);
    ASSERT_EQ(s.events.EventCount(), 3);
    const EventRecord e1 = s.events[1], e3 = s.events[3];

    // Ctrl+Shift+click rejects without marking the table unsaved; Shift+click on nothing only
    // clears the selection.
    s.events.EventsSaved = true;
    Click(e3.RelativeTime, kCtrlMask | kShiftMask);
    EXPECT_EQ(s.events[3].GroupNumber, kGroupRejected);
    EXPECT_EQ(s.events.CurrentEvent, 3);
    EXPECT_TRUE(s.events.EventsSaved);
    Click(300, kShiftMask);
    EXPECT_EQ(s.events.CurrentEvent, 0);
    EXPECT_EQ(s.events.EventCount(), 3);

    // Rejection clamps a selection below 1 and ignores one beyond the table.
    s.events[3].GroupNumber = 0;
    menu_RejectThisEvent(s, ui);
    EXPECT_EQ(s.events.CurrentEvent, 1);
    EXPECT_EQ(s.events[1].GroupNumber, kGroupRejected);
    s.events[1].GroupNumber = 0;
    s.events.CurrentEvent = 4;
    menu_RejectThisEvent(s, ui);
    for (std::int32_t n = 1; n <= 3; ++n) EXPECT_EQ(s.events[n].GroupNumber, 0);

    // Ctrl+click deletes the second; the first becomes current.
    Click(s.events[2].RelativeTime + 1, kCtrlMask);
    ASSERT_EQ(s.events.EventCount(), 2);
    EXPECT_EQ(s.events[1], e1);
    EXPECT_EQ(s.events[2], e3);
    EXPECT_EQ(s.events.CurrentEvent, 1);
    EXPECT_FALSE(s.events.EventsSaved);
    // The array was cut: a record added now starts empty.
    EXPECT_EQ(s.events.Add(), EventRecord{});
    s.events.SetCount(2);

    // A selection beyond the table deletes the last; deleting the only event leaves
    // nothing selected.
    s.events.CurrentEvent = 9;
    menu_DeletEvent(s, ui);
    EXPECT_EQ(s.events.EventCount(), 1);
    EXPECT_EQ(s.events.CurrentEvent, 1);
    menu_DeletEvent(s, ui);
    EXPECT_EQ(s.events.EventCount(), 0);
    EXPECT_EQ(s.events.CurrentEvent, 0);
}

TEST_F(ManualEditTest, TheEventAtAPointIsTheFirstStoredWithinTheWidthOfAnX) {
    Open(testing::MakeTrace(4096, 0, {}));
    // Point 100 is 5 ms; the width of an X is 3 points, 0.15 ms, each side.
    for (float t : {5.20f, 5.10f, 4.95f, 4.85f}) s.events.Add().Time = t;
    EXPECT_EQ(EventAtPoint(s, 100, 3), 2);  // 5.10 and 4.95 lie inside; 5.10 is stored first
    EXPECT_EQ(EventAtPoint(s, 104, 3), 1);
    EXPECT_EQ(EventAtPoint(s, 95, 3), 4);
    EXPECT_EQ(EventAtPoint(s, 94, 3), 0);  // 4.85 lies on the limit, which does not count
    EXPECT_EQ(EventAtPoint(s, 80, 3), 0);

    s.events.CurrentEvent = 3;
    EXPECT_EQ(PictureMouseUpRight(s, 80, 3), TracePopup::None);
    EXPECT_EQ(s.events.CurrentEvent, 3);
    EXPECT_EQ(PictureMouseUpRight(s, 100, 3), TracePopup::EventEdit);
    EXPECT_EQ(s.events.CurrentEvent, 2);
    EXPECT_EQ(s.events.GridCurrentRow, 2);
}

TEST_F(ManualEditTest, CursorsAreTakenAndPutDownByClicksAndReadOut) {
    std::vector<std::int16_t> ramp(8192);
    for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = std::int16_t(i % 1000);
    // A downward event in the ramp at 520, for the clicks that also detect.
    for (int k = 0; k < 60; ++k)
        ramp[std::size_t(500 + k)] =
            std::int16_t(ramp[std::size_t(500 + k)] - 300 * std::exp(-std::abs(k - 20) / 6.0));
    Open(ramp, TwoUnitsABit());

    EXPECT_FALSE(PictureMouseMove(s, cursors, 400, 100));  // nothing held
    cursors.ckCursors = true;
    PlaceCursors(cursors, 1024);  // vertical at 341 and 682, horizontal at a third and two
    Click(353, 0, 30000);         // within 1 + 1024/80 of cursor 0
    EXPECT_EQ(cursors.DraggedCursor, 0);
    EXPECT_EQ(s.events.EventCount(), 0);
    EXPECT_TRUE(PictureMouseMove(s, cursors, 5000, 1000));  // held on the screen
    EXPECT_EQ(cursors.Line1[0].X1, 1023);
    PictureMouseMove(s, cursors, 400.7, 1000);
    EXPECT_EQ(cursors.Line1[0].X1, 400.7);
    EXPECT_EQ(cursors.Line1[0].X2, 400.7);
    EXPECT_EQ(cursors.lbCursor,
              "x1:20.000  y1:800.000\nx2:34.100  y2:1364.000\n\xCE\x94x:14.100  \xCE\x94y:564.000");
    // The second click puts it down and does nothing else, though it lies on the event.
    Click(520);
    EXPECT_EQ(cursors.DraggedCursor, kNoCursor);
    EXPECT_EQ(s.events.EventCount(), 0);

    // A horizontal cursor, taken near its height, follows in y only.
    Click(560, 0, 21845 + 800);
    EXPECT_EQ(cursors.DraggedCursor, 2);
    PictureMouseMove(s, cursors, 10, 5000);
    EXPECT_EQ(cursors.Line1[2].Y1, 5000);
    EXPECT_EQ(cursors.Line1[2].X2, 1024);
    // Putting it down is a click that acts too.
    Click(520, 0, 5000);
    EXPECT_EQ(cursors.DraggedCursor, kNoCursor);
    EXPECT_EQ(s.events.EventCount(), 1);

    // A click that misses every line detects; a click with a modifier never takes a cursor.
    Click(341, kCtrlMask);
    EXPECT_EQ(cursors.DraggedCursor, kNoCursor);
    EXPECT_EQ(s.events.EventCount(), 1);
    Click(400);
    EXPECT_EQ(cursors.DraggedCursor, 0);
    Click(520, kCtrlMask);  // drops the held cursor and deletes the event
    EXPECT_EQ(cursors.DraggedCursor, kNoCursor);
    EXPECT_EQ(s.events.EventCount(), 0);
}

// A positive action potential at P: flat at 0 with a one-sample blip at A-5, a slow ramp of 4
// bits a sample from A to T, an upstroke of 200 a sample from T to the peak P (T = P-5,
// A = T-40), and a fall of 50 a sample back to 0.
std::vector<std::int16_t> ActionPotentials(const std::vector<std::int32_t>& peaks) {
    std::vector<std::int16_t> x(8192, 0);
    for (std::int32_t P : peaks) {
        const std::int32_t T = P - 5, A = T - 40;
        x[std::size_t(A - 5)] = 3;
        for (std::int32_t k = A; k <= T; ++k) x[std::size_t(k)] = std::int16_t(4 * (k - A));
        for (std::int32_t k = T + 1; k <= P; ++k)
            x[std::size_t(k)] = std::int16_t(160 + 200 * (k - T));
        for (std::int32_t j = 1; 1160 - 50 * j > 0; ++j)
            x[std::size_t(P + j)] = std::int16_t(1160 - 50 * j);
    }
    return x;
}

TEST_F(ManualEditTest, RecalculationTakesFivePercentInAmplitudeUnitsAndRawDecaySamples) {
    // A spike of 1000 bits, linear 10-sample rise, exponential fall, and one low sample in the
    // fall that the scan's three-point mean passes over.
    auto x = testing::MakeTrace(8192, 0, {{500, 1000.0, 10, 20}});
    x[505] = 200;
    Open(x, TwoUnitsABit());
    s.params.PeakDirection = 1;
    Click(500);
    ASSERT_EQ(s.events.EventCount(), 1);
    EXPECT_EQ(s.events[1].Rise, 10);   // back to 1% of the amplitude: the foot at 490
    EXPECT_EQ(s.events[1].Decay, 23);  // smoothed fall down to 32%

    EventRecord& e = s.events[1];
    e.Time += 0.2f;  // four points late
    e.GroupNumber = 7;
    e.BaselineLead = 99;
    e.Noise = 5;
    s.params.AreaThreshold = 1e9f;  // recalculation has no area test
    Click(504, kShiftMask);
    EXPECT_FLOAT_EQ(e.Time, 25.0f);
    EXPECT_EQ(e.RelativeTime, 500);
    EXPECT_EQ(e.Amplitude, 1000);
    EXPECT_EQ(e.Baseline, 0);
    EXPECT_EQ(e.Noise, 0);
    // 5% of 2000 units held against bits: the walk stops at 100 bits, one point up the rise.
    EXPECT_EQ(e.Rise, 9);
    EXPECT_EQ(e.Decay, 5);  // the low raw sample ends the fall
    EXPECT_EQ(e.GroupNumber, 7);
    EXPECT_EQ(e.BaselineLead, 99);
    EXPECT_EQ(e.PeakDirection, 1);
    EXPECT_EQ(s.events.GridCurrentRow, 1);

    // Below the threshold it leaves the record as it was.
    const EventRecord before = e;
    s.params.ThresholdAmplitude = 2001;
    s.events.CurrentEvent = 1;
    menu_RecalculatePeak(s, ui);
    EXPECT_EQ(e, before);
}

TEST_F(ManualEditTest, BaselineMovesToTheSpikesThresholdFoundByTheDifferentials) {
    Open(ActionPotentials({600}));
    s.params.PeakDirection = 1;
    Click(600);
    ASSERT_EQ(s.events.EventCount(), 1);
    EventRecord& e = s.events[1];
    EXPECT_EQ(e.Baseline, 0);
    EXPECT_EQ(e.Rise, 43);  // the 1% foot of the ramp
    const std::int16_t noise = e.Noise;
    e.GroupNumber = 3;

    s.events.CurrentEvent = 1;
    menu_BaselineThreshold(s, ui);
    // The third differential peaks three points before the kink at T = 595: the threshold is
    // the ramp's value at 592.
    EXPECT_EQ(e.Baseline, 148);
    EXPECT_EQ(e.Amplitude, 1160 - 148);
    EXPECT_EQ(e.Rise, 8);
    // The fall reaches 32% of 1012 above the threshold 14 points after the peak.
    EXPECT_EQ(e.Decay, 14);
    EXPECT_EQ(e.Noise, noise);
    EXPECT_EQ(e.GroupNumber, 3);
    EXPECT_FLOAT_EQ(e.Time, 30.0f);
    EXPECT_EQ(e.BaselineLead, 120);
    EXPECT_GT(e.Rise1090, 0.0f);
}

TEST_F(ManualEditTest, ScanAdjustsEveryEventScreenByScreenUntilInterrupted) {
    Open(ActionPotentials({600, 4600}));
    s.params.PeakDirection = 1;
    Click(600);
    for (int k = 0; k < 4; ++k) NextScreen();
    Click(4600 - 4096);
    ASSERT_EQ(s.events.EventCount(), 2);
    const EventRecord second = s.events[2];

    ui.onYield = [&] { s.display.NonStopRunning = false; };
    menu_ScanAdjustBaseline(s, ui);
    EXPECT_EQ(s.events[1].Baseline, 148);
    EXPECT_EQ(s.events[2], second);
    EXPECT_EQ(ui.yields, 1);
    EXPECT_FALSE(s.display.NonStopRunning);

    // The whole table; the first event is measured again from its new rise start.
    ui.onYield = nullptr;
    menu_ScanAdjustBaseline(s, ui);
    EXPECT_EQ(ui.yields, 3);
    EXPECT_EQ(s.events[2].Baseline, 148);
    EXPECT_EQ(s.events[2].Rise, 8);
    EXPECT_EQ(s.events.CurrentEvent, 3);  // stepped past the last
}

TEST_F(ManualEditTest, OddParametersAreTakenAsTheScanTakesThem) {
    // A direction that is neither +1 nor -1 (a parameter file may carry 0) looks downward,
    // by click as by the scan.
    Open(testing::MakeTrace(8192, 0, {{500, -150.0, 8, 60}}));
    s.params.PeakDirection = 0;
    Command1(s, ui);
    ASSERT_EQ(s.events.EventCount(), 1);
    const EventRecord scanned = s.events[1];
    s.events.Resize(0);
    Click(scanned.RelativeTime);
    ASSERT_EQ(s.events.EventCount(), 1);
    EXPECT_EQ(s.events[1], scanned);
    EXPECT_EQ(s.events[1].PeakDirection, -1);
}

TEST_F(ManualEditTest, OnlyAClickLimitsTheBaselineLeadTo16Bits) {
    // 40000 points of lead: beyond the field. Off the first screen the look-back is allowed
    // and finds zeros outside the buffers.
    Open(ActionPotentials({4696}));
    s.params.PeakDirection = 1;
    s.params.PeriodStartBaseline = 2000000;
    for (int k = 0; k < 4; ++k) NextScreen();
    Click(600);
    ASSERT_EQ(s.events.EventCount(), 1);
    EventRecord& e = s.events[1];
    EXPECT_EQ(e.BaselineLead, 32767);

    // Moving the baseline to the threshold writes the lead without the limit, so the
    // overflowing statement leaves the field as it was.
    e.BaselineLead = 99;
    s.events.CurrentEvent = 1;
    menu_BaselineThreshold(s, ui);
    EXPECT_EQ(e.Baseline, 148);
    EXPECT_EQ(e.BaselineLead, 99);
}

}  // namespace
}  // namespace ardel
