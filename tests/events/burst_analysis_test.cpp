// Burst analysis: runs with the inclusive limit, the row behind the last close interval, the
// marks and numbers, the arrays, the report's layout and the save question.
#include "events/burst_analysis.h"

#include <cmath>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "graph/graph_model.h"
#include "support/scripted_dialogs.h"
#include "view/view_rig.h"

namespace ardel::testing {
namespace {

constexpr const char* kMinimumMessage =
    "Minimum number of consecutive events to consider as a burst cannot be smaller than 2.  "
    "Please check the number and try again.";

std::string Grouped(int b) {
    return " " + std::to_string(b) +
           " bursts are grouped as number 254 and displayed as B.  The detailed reports are "
           "copied onto the clipboard.  Do you want to save the reports as ASCII file?";
}

struct BurstRig : ViewRig {
    ScriptedDialogs ui;
    CriteriaForm f;
    BurstRig() : ViewRig({Ramp(256 * 8)}) { s.Label11 = "cell.abf"; }

    void AddTimes(std::initializer_list<float> times, std::uint8_t group = 0) {
        for (const float t : times) {
            EventRecord& e = s.events.Add();
            e.Time = t;
            e.GroupNumber = group;
            e.PeakDirection = -1;
        }
    }
    void Run(const std::string& minEvents, const std::string& maxInterval, int expectBursts) {
        f.Text7 = minEvents;
        f.Text6 = maxInterval;
        ui.ExpectAsk("Save Reports", Grouped(expectBursts), Answer::No);
        Criteria_Command4(s, ui, f);
    }
    std::vector<std::vector<int>> Marks() const {
        std::vector<std::vector<int>> m;
        for (std::int32_t i = 1; i <= s.events.EventCount(); ++i)
            m.push_back({s.events[i].GroupNumber, s.events[i].BurstNumber,
                         s.events[i].BurstEventNumber});
        return m;
    }
};

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t at = 0;
    while (at < text.size()) {
        const auto end = text.find("\r\n", at);
        EXPECT_NE(end, std::string::npos) << "every line ends in CR LF";
        if (end == std::string::npos) break;
        lines.push_back(text.substr(at, end - at));
        at = end + 2;
    }
    return lines;
}

TEST(FindBursts, LimitIsInclusiveAndTheRowBehindTheLastCloseIntervalCounts) {
    // Intervals 10, 10: one run of three rows at a limit of 10.
    const std::vector<float> iv{0, 10, 10, NAN};
    ASSERT_EQ(FindBursts(iv, 10, 3).size(), 1u);
    EXPECT_EQ(FindBursts(iv, 10, 3)[0].first, 1);
    EXPECT_EQ(FindBursts(iv, 10, 3)[0].last, 3);  // reaches the last row
    EXPECT_TRUE(FindBursts(iv, 10, 4).empty());
    EXPECT_TRUE(FindBursts(iv, 9.99, 2).empty());
    // A limit of 0 (a box without a number) joins only rows of equal time.
    const std::vector<float> same{0, 0, 5, 0, NAN};
    const auto b = FindBursts(same, 0, 2);
    ASSERT_EQ(b.size(), 2u);
    EXPECT_EQ(b[0].first, 1);
    EXPECT_EQ(b[0].last, 2);
    EXPECT_EQ(b[1].first, 3);
    EXPECT_EQ(b[1].last, 4);
    EXPECT_TRUE(FindBursts({0.0f}, 10, 2).empty());  // an empty table
}

TEST(BurstAnalysis, MarksNumbersArraysAndGraphOfTwoBursts) {
    BurstRig r;
    // Unsorted on purpose: the command sorts by time without asking. The rejected row takes
    // part and is overwritten; the row of group 254 from an earlier run keeps its group.
    r.AddTimes({110, 0, 5});
    r.AddTimes({102}, 255);
    r.AddTimes({100, 9, 300});
    r.AddTimes({200}, kGroupBurst);
    r.Run("2", "5", 2);
    EXPECT_EQ(r.Marks(), (std::vector<std::vector<int>>{{254, 1, 1},
                                                         {254, 1, 2},
                                                         {254, 1, 3},
                                                         {254, 2, 1},
                                                         {254, 2, 2},
                                                         {0, 0, 0},
                                                         {254, 0, 0},
                                                         {0, 0, 0}}));
    EXPECT_EQ(r.s.dataArray1.values, (std::vector<float>{0, 0, 100}));
    EXPECT_EQ(r.s.dataArray2.values, (std::vector<float>{0, 3, 2}));
    ASSERT_EQ(r.s.graphs.size(), 1u);
    const GraphModel& g = *r.s.graphs[0];
    EXPECT_EQ(g.Caption, "  Burst Analysis: Number of Events vs. Time");
    EXPECT_EQ(g.GraphTitle, "  Number of Events vs. Time: n=2");
    EXPECT_EQ(g.BottomTitle, "Time (ms)");
    EXPECT_EQ(g.LeftTitle, "Number of Events");
    ASSERT_EQ(g.PointCount(), 2);
    EXPECT_EQ(g.Point(1, 2).x, 100.0f);
    EXPECT_EQ(g.Point(1, 2).y, 2.0f);
    EXPECT_GT(r.displays, 0);

    const auto lines = Lines(r.ui.clipboard);
    ASSERT_EQ(lines.size(), 4u + 5u);
    EXPECT_EQ(lines[0], "Burst Analysis for cell.abf");
    EXPECT_EQ(lines[1], "Minimum Number of Events 2");
    EXPECT_EQ(lines[2], "Maximum Inter-event Interval 5");
    EXPECT_TRUE(lines[3].starts_with("Burst#\tBurst Time(ms)\tEvents in Burst\t"));
    // First burst: no interburst interval; the burst's columns on its first line only.
    EXPECT_TRUE(lines[4].starts_with("1\t0.000\t3\t9.000\t\t1\t0.000\t")) << lines[4];
    EXPECT_TRUE(lines[5].starts_with("\t\t\t\t\t2\t5.000\t")) << lines[5];
    // Second burst: interburst interval from the first burst's last event (9) to 100.
    EXPECT_TRUE(lines[7].starts_with("2\t100.000\t2\t2.000\t91.000\t1\t0.000\t")) << lines[7];
    // The event interval is the one to the next row, also out of the burst.
    EXPECT_EQ(lines[8].substr(lines[8].rfind('\t')), "\t8.000");
}

TEST(BurstAnalysis, ReportColumnsOfOneEventInTheRecordingsUnits) {
    BurstRig r;
    r.AddTimes({10, 12});
    EventRecord& e = r.s.events[1];
    e.Amplitude = 30;  // one unit per raw step in the rig
    e.Baseline = 100;
    e.HalfWidth = 1.5f;
    e.Rise = 20;  // points of 0.1 ms
    e.Rise1090 = 0.25f;
    e.Decay = 40;
    r.Run("2", "2", 1);
    const auto lines = Lines(r.ui.clipboard);
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[4], "1\t10.000\t2\t2.000\t\t1\t0.000\t30.000\t70.000\t1.500\t2.000\t0.250\t4.000\t2.000");
    // The table's last row has no interval after it.
    EXPECT_EQ(lines[5].back(), '\t');
}

TEST(BurstAnalysis, TooSmallMinimumIsRefusedAndNoBurstChangesNothing) {
    BurstRig r;
    r.AddTimes({0, 10, 20}, 7);
    r.f.Text7 = "1.9";
    r.ui.ExpectMessage("", kMinimumMessage);
    Criteria_Command4(r.s, r.ui, r.f);
    EXPECT_EQ(r.f.Text7, "2");
    EXPECT_TRUE(r.s.graphs.empty());

    r.Run("4", "10", 0);
    EXPECT_EQ(r.Marks(), (std::vector<std::vector<int>>{{7, 0, 0}, {7, 0, 0}, {7, 0, 0}}));
    EXPECT_EQ(r.s.dataArray1.UpperBound(), 1);
    EXPECT_EQ(r.s.graphs.back()->GraphTitle, "  Number of Events vs. Time: n=0");
}

TEST(BurstAnalysis, SavesTheReportOnceAndRefusesAnExistingFile) {
    BurstRig r;
    r.AddTimes({0, 1});
    const auto file = r.dir / "cell Burst Report.ASC";
    r.f.Text6 = "1";
    r.f.Text7 = "2";
    r.ui.ExpectAsk("Save Reports", Grouped(1), Answer::Yes);
    r.ui.ExpectSaveFile(file);
    Criteria_Command4(r.s, r.ui, r.f);
    ASSERT_EQ(r.ui.fileDialogs.size(), 1u);
    EXPECT_EQ(r.ui.fileDialogs[0].fileName, "cell Burst Report");
    EXPECT_EQ(r.ui.fileDialogs[0].defaultExtension, "ASC");
    EXPECT_EQ(r.ui.fileDialogs[0].filter, "ASCII File (*.ASC)");
    std::ifstream in(file, std::ios::binary);
    std::stringstream written;
    written << in.rdbuf();
    EXPECT_EQ(written.str(), r.ui.clipboard);

    r.ui.ExpectAsk("Save Reports", Grouped(1), Answer::Yes);
    r.ui.ExpectSaveFile(file);
    r.ui.ExpectMessage("File Exist", "File already exist.  Try again with different file name.");
    Criteria_Command4(r.s, r.ui, r.f);
}

}  // namespace
}  // namespace ardel::testing
