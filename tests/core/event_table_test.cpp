// The event table as the grid shows it: captions, cell texts through the recording's scale,
// Reset Events, selection from the grid, and the slots that a shrunken table keeps.
#include "core/event_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "abf_files.h"
#include "core/event_commands.h"
#include "core/open_file.h"
#include "core/session.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

using testing::AbfFileBuilder;
using testing::Ramp;
using testing::ScriptedDialogs;
using testing::TempDir;

// A two-channel recording, 50 us per point of a channel. fADCRange 16 with gain 0.5 makes
// one bit of channel 0 exactly 1/1024 of its unit; its two offsets add up to 2.5. Channel 1
// has gain 0.25 and no offset.
class GridTest : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;

    void SetUp() override {
        AbfBuildSpec spec;
        spec.sampleIntervalUs = 25;
        spec.adcRange = 16;
        spec.units = {"pA", "mV"};
        spec.scaleFactors = {0.5f, 0.25f};
        AbfFileBuilder b(spec, {Ramp(100000), Ramp(100000, 0)});
        b.header.fSignalOffset[0] = 2;
        b.header.fInstrumentOffset[0] = 0.5f;
        ScriptedDialogs ui;
        ui.ExpectInput("Enter Channel Number", std::nullopt, "0");
        ASSERT_TRUE(OpenDataFile(s, ui, b.Write(dir / "grid.abf")));
        ASSERT_FLOAT_EQ(s.recording.ChannelOffset, 2.5f);
        ASSERT_FLOAT_EQ(s.recording.SampleInterval, 50);
    }

    EventRecord& AddSample() {
        EventRecord& e = s.events.Add();
        e.Time = 1234.567f;
        e.Amplitude = 1024;
        e.Noise = -512;
        e.Rise = 3;
        e.Decay = 40;
        e.Baseline = 2048;
        e.Area = 12.5f;
        e.GroupNumber = 254;
        e.Channel = 1;
        e.Rise1090 = 0.25f;
        e.HalfWidth = 1.5f;
        e.Rise50 = 1;
        e.PeakDirection = -1;
        e.BurstNumber = 2;
        e.BurstEventNumber = 3;
        e.Slope1090 = -3.75f;
        e.RelativeTime = 30000;
        return e;
    }

    std::string Cell(std::int32_t row, int column) {
        auto t = GridCellText(s.events, s.recording, row, column);
        return t ? *t : "<Null>";
    }
};

TEST_F(GridTest, CaptionsWithTheEventCountInColumn0) {
    const char* captions[] = {"Time (ms)",  "Amplitude", "Rise (ms)", "Decay (ms)", "Area",
                              "Baseline",   "Noise",     "Group",     "Channel",    "10-90Rise",
                              "HalfWidth",  "Rise50",    "Peak Dir",  "Burst#",     "BurstE#",
                              "10-90Slope", "Rel Time"};
    for (int c = 1; c < kGridColumns; ++c) EXPECT_EQ(GridCaption(s.events, c), captions[c - 1]);
    EXPECT_EQ(GridCaption(s.events, 0), "0");
    for (int k = 0; k < 1234; ++k) s.events.Add();
    EXPECT_EQ(GridCaption(s.events, 0), "1,234");
    s.events.SetCount(999);
    EXPECT_EQ(GridCaption(s.events, 0), "999");
    // After ClearGrid the next event is number 1 again.
    ClearGrid(s);
    EXPECT_EQ(GridCaption(s.events, 0), "0");
    s.events.Add();
    EXPECT_EQ(GridCaption(s.events, 0), "1");
    EXPECT_EQ(Cell(1, 0), "1");
}

TEST_F(GridTest, CellTextsConvertStoredUnitsWithTheActiveChannel) {
    AddSample();
    EXPECT_EQ(Cell(1, 0), "1");
    EXPECT_EQ(Cell(1, 1), "1,234.57");
    EXPECT_EQ(Cell(1, 2), "1");     // Bit2pA2: 1024 bits, no offset
    EXPECT_EQ(Cell(1, 3), "0.15");  // 3 points of 50 us
    EXPECT_EQ(Cell(1, 4), "2.00");
    EXPECT_EQ(Cell(1, 5), "12.50");
    EXPECT_EQ(Cell(1, 6), "4.5");   // Bit2pA: 2048 bits plus the offset 2.5
    EXPECT_EQ(Cell(1, 7), "-0.5");  // Bit2pA2: no offset
    EXPECT_EQ(Cell(1, 8), "254");
    EXPECT_EQ(Cell(1, 9), "1");
    EXPECT_EQ(Cell(1, 10), "0.25");
    EXPECT_EQ(Cell(1, 11), "1.50");
    EXPECT_EQ(Cell(1, 12), "0.05");
    EXPECT_EQ(Cell(1, 13), "-1");
    EXPECT_EQ(Cell(1, 14), "2");
    EXPECT_EQ(Cell(1, 15), "3");
    EXPECT_EQ(Cell(1, 16), "-3.75");
    EXPECT_EQ(Cell(1, 17), "1,500.00");  // 30000 points of 50 us

    // The same rows through channel 1's scale: gain 0.25 instead of 0.5, offset 0.
    SelectChannel(s, 1);
    EXPECT_EQ(Cell(1, 2), "2");
    EXPECT_EQ(Cell(1, 6), "4");
    EXPECT_EQ(Cell(1, 7), "-1");
    // With no offset, Baseline and Amplitude convert alike.
    s.events[1].Baseline = 1024;
    EXPECT_EQ(Cell(1, 6), Cell(1, 2));
}

TEST_F(GridTest, OutsideTheTableTheGridGetsNull) {
    AddSample();
    AddSample();
    for (auto [row, col] : {std::pair{0, 1}, {-1, 1}, {3, 1}, {1, -1}, {1, 18}, {2, 99}})
        EXPECT_EQ(Cell(row, col), "<Null>") << row << "," << col;
    EXPECT_EQ(Cell(2, 17), "1,500.00");
    s.events.SetCount(1);
    EXPECT_EQ(Cell(2, 1), "<Null>");
}

TEST_F(GridTest, ResetEventsAsksFirstWithCancelAsTheDefault) {
    {
        // Nothing to lose: cleared at once.
        ScriptedDialogs ui;
        Command5(s, ui);
        EXPECT_EQ(s.events.EventCount(), 0);
    }
    for (int k = 0; k < 5; ++k) AddSample();
    {
        ScriptedDialogs ui;
        ui.ExpectAsk("Confrim Reset",
                     "5 events analysed.  Are you sure you want to erase the event data?",
                     Answer::Cancel);
        Command5(s, ui);
        EXPECT_EQ(ui.lastButtons, Buttons::OKCancel);
        EXPECT_EQ(ui.lastDefault, Answer::Cancel);
        EXPECT_EQ(s.events.EventCount(), 5);
    }
    {
        ScriptedDialogs ui;
        ui.ExpectAsk("Confrim Reset", std::nullopt, Answer::OK);
        Command5(s, ui);
        EXPECT_EQ(s.events.EventCount(), 0);
        EXPECT_EQ(GridCaption(s.events, 0), "0");
    }
}

TEST_F(GridTest, ClearedSlotsKeepTheirContentsUntilTheNextAddReusesThem) {
    for (int k = 1; k <= 3; ++k) {
        EventRecord& e = AddSample();
        e.Amplitude = 100 * k;
        e.EventText[0] = char('a' + k);
    }
    const EventRecord first = s.events[1];
    ClearGrid(s);
    EXPECT_EQ(s.events.EventCount(), 0);
    // A new event starts from what the old one left in its slot; only the fields the caller
    // writes change.
    EventRecord& again = s.events.Add();
    EXPECT_EQ(again, first);
    // That add cut the array to the new count, so the slots of events 2 and 3 are gone and
    // the next add starts from an empty record.
    EXPECT_EQ(s.events.SlotCount(), 2u);
    EXPECT_EQ(s.events.Add(), EventRecord{});
}

TEST_F(GridTest, EveryGridUpdateClearsTheSavedFlag) {
    s.events.EventsSaved = true;
    UpdateTDBGrid(s.events);
    EXPECT_FALSE(s.events.EventsSaved);
    s.events.EventsSaved = true;
    ClearGrid(s);
    EXPECT_FALSE(s.events.EventsSaved);
}

TEST_F(GridTest, SelectingARowShowsTheScreenOfTheEventsBaselineWindow) {
    s.params.PeriodStartBaseline = 6000;
    // Nothing to select in an empty table.
    const double start = s.recording.ScreenBlock;
    SelectEventFromGrid(s, 1);
    EXPECT_EQ(s.events.CurrentEvent, 0);
    EXPECT_EQ(s.recording.ScreenBlock, start);

    for (float t : {123.4f, 5.0f, 3000.0f}) s.events.Add().Time = t;
    SelectEventFromGrid(s, 1);
    EXPECT_EQ(s.events.CurrentEvent, 1);
    // (123400 us - 6000 us) / 50 us / 256 = 9.17: Block 9 after the data section's start.
    EXPECT_EQ(s.recording.ScreenBlock, s.recording.header.lDataSectionPtr + 9);
    EXPECT_EQ(s.display.SelectedEvent, 1);
    // The screen was loaded there.
    EXPECT_EQ(s.recording.GetSampleValue(0), Ramp(100000)[9 * 256]);

    // An event within the first baseline window: the screen starts before the recording.
    SelectEventFromGrid(s, 2.4);
    EXPECT_EQ(s.events.CurrentEvent, 2);
    EXPECT_EQ(s.recording.ScreenBlock, s.recording.header.lDataSectionPtr - 1);

    SelectEventFromGrid(s, 0);  // a bookmark below 1 selects event 1
    EXPECT_EQ(s.events.CurrentEvent, 1);
    SelectEventFromGrid(s, 2.5);  // rounded, halves to even
    EXPECT_EQ(s.events.CurrentEvent, 2);
    SelectEventFromGrid(s, 2.6);
    EXPECT_EQ(s.events.CurrentEvent, 3);
    EXPECT_EQ(s.recording.ScreenBlock, s.recording.header.lDataSectionPtr + 233);
}

TEST(EventCsv, OneLineOfAllStoredFieldsThatReadsBackExactly) {
    EXPECT_EQ(kEventFieldNames.size(), 20u);
    EXPECT_STREQ(kEventFieldNames.front(), "Time");
    EXPECT_STREQ(kEventFieldNames.back(), "PeakPoint");
    EventRecord e;
    e.Time = 0.1f;
    e.Amplitude = 70000;
    e.Noise = -3;
    e.Slope1090 = -1.0f / 3.0f;
    e.RelativeTime = -5;
    e.PeakPoint = 123456789;
    const std::string text = "a,\"b";
    std::copy(text.begin(), text.end(), e.EventText.begin());
    const std::string line = EventCsvLine(e);
    EXPECT_EQ(line.substr(0, 20), "0.100000001,70000,-3");
    EXPECT_NE(line.find(",\"a,\"\"b\","), std::string::npos) << line;
    EXPECT_EQ(line.substr(line.size() - 13), ",-5,123456789");
    // 32-bit floats come back bit for bit.
    const std::size_t at = line.find(",-0.");
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(std::strtof(line.c_str() + at + 1, nullptr), e.Slope1090);
}

}  // namespace
}  // namespace ardel
