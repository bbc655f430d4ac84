#include "view/trace_scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "core/event_commands.h"
#include "support/scripted_dialogs.h"
#include "view/view_rig.h"

namespace ardel::testing {
namespace {

const SceneText* FindText(const TraceScene& scene, const std::string& text) {
    for (const auto& t : scene.texts)
        if (t.text == text) return &t;
    return nullptr;
}

TEST(TraceScene, TimeTextsAndScaleOfTheScreen) {
    ViewRig rig({std::vector<std::int16_t>(256 * 60, 0)});
    TraceScene scene = BuildTraceScene(rig.s, 800);
    EXPECT_EQ(scene.width, 1024);
    // The first screen starts at 0, which the format writes without a leading digit.
    ASSERT_GE(scene.texts.size(), 3u);
    EXPECT_EQ(scene.texts[0].text, ".00 ms");
    EXPECT_EQ(scene.texts[1].text, "102.40 ms");
    EXPECT_EQ(scene.texts[1].anchor, TextAnchor::TopRight);
    EXPECT_EQ(scene.texts[1].x, 1024);

    rig.s.recording.ScreenBlock = rig.s.recording.header.lDataSectionPtr + 40;
    Display(rig.s);
    scene = BuildTraceScene(rig.s, 800);
    EXPECT_EQ(scene.texts[0].text, "1,024.00 ms");
    EXPECT_EQ(scene.texts[1].text, "1,126.40 ms");

    // One tenth of the height is 6553.6 raw steps of one unit each, divided by the gain.
    const SceneText* scale = FindText(scene, "6,553.60pA");
    ASSERT_NE(scale, nullptr);
    EXPECT_EQ(scale->color, (Rgb{0, 0, 255}));
    rig.s.display.DisplayGain[0] = 2;
    EXPECT_NE(FindText(BuildTraceScene(rig.s, 800), "3,276.80pA"), nullptr);
}

TEST(TraceScene, ReducedTraceKeepsEveryColumnsExtremesAndEnds) {
    std::vector<std::int16_t> trace(4096);
    std::mt19937 gen(7);
    std::uniform_int_distribution<int> dist(-3000, 3000);
    for (auto& v : trace) v = std::int16_t(dist(gen));
    ViewRig rig({trace});  // 1024 points on the screen
    const double top = 32786.0;

    for (int pixels : {100, 333, 1023}) {
        SCOPED_TRACE(pixels);
        const TraceScene scene = BuildTraceScene(rig.s, pixels);
        ASSERT_EQ(scene.traces.size(), 1u);
        const auto& pts = scene.traces[0].points;
        ASSERT_LE(pts.size(), std::size_t(pixels) * 4);
        for (std::size_t k = 1; k < pts.size(); ++k) ASSERT_LT(pts[k - 1].x, pts[k].x);
        for (const auto& p : pts) ASSERT_EQ(p.y, top - trace[std::size_t(p.x)]) << "x " << p.x;

        // Every column: its first and last point are there, and the points kept span exactly
        // the samples' range, so the lines draw what all the points would.
        for (int col = 0; col < pixels; ++col) {
            int first = -1, last = -1;
            int lo = 99999, hi = -99999;
            for (int i = 0; i < 1024; ++i) {
                if (i * pixels / 1024 != col) continue;
                if (first < 0) first = i;
                last = i;
                lo = std::min<int>(lo, trace[std::size_t(i)]);
                hi = std::max<int>(hi, trace[std::size_t(i)]);
            }
            if (first < 0) continue;
            int keptLo = 99999, keptHi = -99999;
            bool hasFirst = false, hasLast = false;
            for (const auto& p : pts) {
                const int i = int(p.x);
                if (i < first || i > last) continue;
                hasFirst |= i == first;
                hasLast |= i == last;
                keptLo = std::min<int>(keptLo, trace[std::size_t(i)]);
                keptHi = std::max<int>(keptHi, trace[std::size_t(i)]);
            }
            ASSERT_TRUE(hasFirst && hasLast) << "column " << col;
            ASSERT_EQ(keptLo, lo) << "column " << col;
            ASSERT_EQ(keptHi, hi) << "column " << col;
        }
    }

    // A picture as wide as the screen or wider draws every point.
    EXPECT_EQ(BuildTraceScene(rig.s, 1024).traces[0].points.size(), 1024u);
    EXPECT_EQ(BuildTraceScene(rig.s, 1600).traces[0].points.size(), 1024u);
}

TEST(TraceScene, EveryChannelIsDrawnFromItsOwnSamplesWithItsOwnGainAndColour) {
    std::vector<std::int16_t> a(2048, 100), b(2048, -50);
    b[10] = 700;
    ViewRig rig({a, b}, 1);  // 256 points
    rig.s.display.DisplayGain[1] = 2;
    rig.s.display.DisplayOffset[1] = 1000;
    Display(rig.s);
    const TraceScene scene = BuildTraceScene(rig.s, 1000);
    ASSERT_EQ(scene.traces.size(), 2u);
    EXPECT_EQ(scene.traces[0].color, (Rgb{0, 0, 0}));
    EXPECT_NE(scene.traces[1].color, scene.traces[0].color);
    ASSERT_EQ(scene.traces[1].points.size(), 256u);
    EXPECT_EQ(scene.traces[0].points[10].y, 32786.0 - 100);
    EXPECT_EQ(scene.traces[1].points[9].y, 32786.0 - 1000 + 100);
    EXPECT_EQ(scene.traces[1].points[10].y, 32786.0 - 1000 - 1400);
}

TEST(TraceScene, EventMarksWithGroupTextsOnTheEventsChannel) {
    std::vector<std::int16_t> trace = Ramp(4096);
    ViewRig rig({trace});
    rig.s.params.PeriodBaselineAverage = 2000;  // 20 points: the green X sits 10 past the lead
    EventRecord& burst = rig.AddEvent(500, kGroupBurst);
    burst.Amplitude = 100;
    burst.Baseline = 10;
    burst.BaselineLead = 30;
    burst.Rise = 5;
    burst.Decay = 20;
    burst.BurstNumber = 3;
    burst.BurstEventNumber = 2;
    EventRecord& up = rig.AddEvent(3, 7);  // its rise start lies before the screen
    up.PeakDirection = 1;
    up.Amplitude = 40;
    up.Rise = 5;
    up.Decay = 1;
    rig.AddEvent(1500, 1);  // on the next screen
    rig.AddEvent(800, 0);   // ungrouped
    const TraceScene scene = BuildTraceScene(rig.s, 800, 1000);

    // Four marks for each event on the screen, less the yellow point before the screen's start.
    ASSERT_EQ(scene.marks.size(), 4u + 3u + 4u);
    const SceneMark& peak = scene.marks[0];
    EXPECT_EQ(peak.kind, SceneMark::Kind::Cross);
    EXPECT_EQ(peak.color, (Rgb{255, 0, 0}));
    EXPECT_EQ(peak.x, 500);
    EXPECT_EQ(peak.y, 32786 + 90);  // peak value -100 + 10
    EXPECT_EQ(peak.label, "B3.2");
    EXPECT_EQ(peak.labelDy, 2000);  // below a downward event
    const SceneMark& base = scene.marks[1];
    EXPECT_EQ(base.color, (Rgb{0, 255, 0}));
    EXPECT_EQ(base.x, 500 - 30 + 10);
    EXPECT_EQ(base.y, 32786 - 10);
    const SceneMark& rise = scene.marks[2];
    EXPECT_EQ(rise.kind, SceneMark::Kind::Point);
    EXPECT_EQ(rise.color, (Rgb{255, 255, 0}));
    EXPECT_EQ(rise.penWidth, 4);
    EXPECT_EQ(rise.x, 495);
    EXPECT_EQ(rise.y, 32786 - trace[495]);
    EXPECT_EQ(scene.marks[3].color, (Rgb{255, 0, 255}));
    EXPECT_EQ(scene.marks[3].x, 520);
    EXPECT_EQ(scene.marks[3].y, 32786 - trace[520]);

    EXPECT_EQ(scene.marks[4].label, "7");
    EXPECT_EQ(scene.marks[4].labelDy, -2000);             // above an upward event
    EXPECT_EQ(scene.marks[6].color, (Rgb{255, 0, 255}));  // no yellow point at -2
    EXPECT_EQ(scene.marks[7].x, 800);
    EXPECT_EQ(scene.marks[7].label, "");

    // A non-stop run leaves the table's marks out.
    rig.s.display.NonStopRunning = true;
    EXPECT_TRUE(BuildTraceScene(rig.s, 800).marks.empty());
}

TEST(TraceScene, NonStopRunWithoutTraceKeepsTimesAndTheScansMarks) {
    ViewRig rig({Ramp(4096)});
    rig.AddEvent(100);
    rig.s.display.NonStopRunning = true;
    rig.s.display.DisplayTrace = false;
    rig.s.display.transientMarks.push_back({TraceMark::Kind::Point, 255, 255, 0, 12, 300, 4});
    const TraceScene scene = BuildTraceScene(rig.s, 800);
    EXPECT_TRUE(scene.traceHidden);
    EXPECT_TRUE(scene.traces.empty());
    EXPECT_EQ(scene.texts.size(), 2u);
    ASSERT_EQ(scene.marks.size(), 1u);
    EXPECT_EQ(scene.marks[0].x, 12);
    EXPECT_EQ(scene.marks[0].penWidth, 4);

    rig.s.display.DisplayTrace = true;
    EXPECT_FALSE(BuildTraceScene(rig.s, 800).traceHidden);
    // The next redraw loses the scan's marks.
    Display(rig.s);
    rig.s.display.NonStopRunning = false;
    EXPECT_EQ(BuildTraceScene(rig.s, 800).marks.size(), 4u);  // the event's own four
}

TEST(TraceScene, VoiceTagsOnTheScreen) {
    ViewRig rig({Ramp(4096)});
    Recording& r = rig.s.recording;
    r.TagRecords.resize(2);
    r.TagRecords[0].lTagTime = 300;
    std::memcpy(r.TagRecords[0].sComment.data(), "drug on\0old", 11);
    r.TagRecords[1].lTagTime = 2000;  // on a later screen
    const TraceScene scene = BuildTraceScene(rig.s, 800, 1000);
    const SceneText* v = FindText(scene, "V");
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->x, 300);
    EXPECT_EQ(v->anchor, TextAnchor::Center);
    const SceneText* line = FindText(scene, "1 drug onV Tag");
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->color, (Rgb{255, 0, 255}));
    EXPECT_EQ(FindText(scene, "2 V Tag"), nullptr);
}

TEST(TraceScene, SelectedEventIsMarkedAtItsPeak) {
    ViewRig rig({Ramp(4096)});
    EventRecord& e = rig.AddEvent(200);
    e.Amplitude = 50;
    e.Baseline = 5;
    rig.s.events.CurrentEvent = 1;
    PlotSelected(rig.s);
    const TraceScene scene = BuildTraceScene(rig.s, 800);
    ASSERT_FALSE(scene.marks.empty());
    const SceneMark& m = scene.marks.back();
    EXPECT_TRUE(m.selected);
    EXPECT_EQ(m.x, 200);
    EXPECT_EQ(m.y, 32786 + 45);
    EXPECT_EQ(SelectionBlinkColor(0), (Rgb{0, 0, 255}));
    EXPECT_EQ(SelectionBlinkColor(1), (Rgb{255, 0, 0}));
}

TEST(TraceScene, LockBaseMovesTheOffsetFromScreenToScreen) {
    std::vector<std::int16_t> trace(4096, 0);
    trace[0] = 1000;
    trace[1024] = -2000;
    ViewRig rig({trace});
    rig.s.display.LockBase = true;
    rig.s.display.FractionWindow = 0.25f;
    Display(rig.s);
    EXPECT_EQ(rig.s.display.DisplayOffset[0], 32786 - 16384 - 1000);
    // The first point then sits a quarter of the height from the picture's edge.
    EXPECT_EQ(BuildTraceScene(rig.s, 800).traces[0].points[0].y, 16384);

    rig.s.recording.ScreenBlock += 4;
    Display(rig.s);
    EXPECT_EQ(rig.s.display.DisplayOffset[0], 32786 - 16384 + 2000);
    EXPECT_EQ(BuildTraceScene(rig.s, 800).traces[0].points[0].y, 16384);
}

TEST(TraceScene, PointerReadoutInvertsWith32768) {
    ViewRig rig({Ramp(4096)});
    rig.s.display.DisplayOffset[0] = 100;
    rig.s.display.DisplayGain[0] = 2;
    // (32768 - 32468 - 100) / 2 = 100 raw steps = 100 pA.
    EXPECT_FLOAT_EQ(CalculateAmplitude(rig.s, 32468), 100.0f);
    // The x is limited to the screen: point 1023 is 102.3 ms.
    EXPECT_EQ(Label4Text(rig.s, 5000, 32468), "102.30ms  100.000pA");
    // (32768 - 32663 - 100) / 2 = 2.5 rounds to 2; the time 0 is written without a digit.
    EXPECT_EQ(Label4Text(rig.s, -3, 32663), ".00ms  2.000pA");
}

TEST(TraceScene, GainAndScreenLengthBoxesKeepTheirLimits) {
    ViewRig rig({Ramp(4096)});
    EXPECT_EQ(SetDisplayGainText(rig.s, "0"), "0.001");
    EXPECT_FLOAT_EQ(rig.s.display.DisplayGain[0], 0.001f);
    EXPECT_EQ(SetDisplayGainText(rig.s, "5000"), "1000");
    EXPECT_FLOAT_EQ(rig.s.display.DisplayGain[0], 1000.0f);
    EXPECT_EQ(SetDisplayGainText(rig.s, "2.5"), "2.5");
    EXPECT_FLOAT_EQ(rig.s.display.DisplayGain[0], 2.5f);
    EXPECT_EQ(rig.displays, 3);
    StepDisplayGain(rig.s, 1);
    EXPECT_EQ(DisplayGainText(rig.s), "5");
    rig.s.display.DisplayGain[0] = 700;
    StepDisplayGain(rig.s, 1);
    EXPECT_FLOAT_EQ(rig.s.display.DisplayGain[0], 1000.0f);

    EXPECT_EQ(SetBlocksPerScreenText(rig.s, "0"), "1");
    EXPECT_EQ(rig.s.recording.ScreenPoints(), 256);
    EXPECT_EQ(BuildTraceScene(rig.s, 100).width, 256);
    EXPECT_EQ(SetBlocksPerScreenText(rig.s, "2.5"), "2.5");
    EXPECT_EQ(rig.s.recording.ScreenPoints(), 640);
    EXPECT_EQ(SetBlocksPerScreenText(rig.s, "100000"), "32767");
    EXPECT_FLOAT_EQ(rig.s.recording.BlocksPerScreen, 32767.0f);
    EXPECT_EQ(rig.s.recording.ScreenPoints(), 32767 * 256);
    EXPECT_EQ(BlocksPerScreenText(rig.s), "32767");
}

TEST(TraceScene, SlidersAndTimedDisplay) {
    ViewRig rig({Ramp(256 * 10)});  // TotalBlocks 10
    const double ptr = rig.s.recording.header.lDataSectionPtr;
    SetScreenFromSlider(rig.s, ptr - 3);
    EXPECT_EQ(rig.s.recording.ScreenBlock, ptr);
    SetScreenFromSlider(rig.s, ptr + 4.5);
    EXPECT_EQ(rig.s.recording.ScreenBlock, ptr + 4.5);
    SetDisplayOffset(rig.s, -500);
    EXPECT_EQ(rig.s.display.DisplayOffset[0], -500);

    ScriptedDialogs ui;
    const std::string prompt =
        "How fast do you want to display the data trace? Please enter time interval for each "
        "display in msec.";
    ui.ExpectInput("Display Interval", prompt, "");
    EXPECT_EQ(StartTimedDisplay(rig.s, ui), std::nullopt);
    EXPECT_FALSE(rig.s.display.NonStopRunning);

    rig.s.recording.ScreenBlock = ptr;
    ui.ExpectInput("Display Interval", prompt, "250");
    EXPECT_EQ(StartTimedDisplay(rig.s, ui), 250);
    EXPECT_TRUE(rig.s.display.NonStopRunning);
    // Screens at +4, +8; +12 passes the end (+10), so the run ends where it was.
    EXPECT_TRUE(TimedDisplayTick(rig.s));
    EXPECT_TRUE(TimedDisplayTick(rig.s));
    EXPECT_EQ(rig.s.recording.ScreenBlock, ptr + 8);
    const int before = rig.displays;
    EXPECT_FALSE(TimedDisplayTick(rig.s));
    EXPECT_EQ(rig.s.recording.ScreenBlock, ptr + 8);
    EXPECT_FALSE(rig.s.display.NonStopRunning);
    EXPECT_EQ(rig.displays, before + 1);
    EXPECT_FALSE(TimedDisplayTick(rig.s));
    EXPECT_EQ(rig.displays, before + 1);
}

}  // namespace
}  // namespace ardel::testing
