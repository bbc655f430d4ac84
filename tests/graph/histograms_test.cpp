// Histograms and running averages on hand-made tables and arrays: bin edges, negative values,
// the bin limit, the uneven range rule and its subscript error, the interval's leading zero.
#include "graph/histograms.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "graph/graph_model.h"
#include "support/scripted_dialogs.h"

namespace ardel {
namespace {

using testing::ScriptedDialogs;

void SortByTimeForTest(Session& s) {
    std::vector<EventRecord> rows;
    for (std::int32_t i = 1; i <= s.events.EventCount(); ++i) rows.push_back(s.events[i]);
    std::sort(rows.begin(), rows.end(), [](auto& a, auto& b) { return a.Time < b.Time; });
    for (std::int32_t i = 1; i <= s.events.EventCount(); ++i) s.events[i] = rows[std::size_t(i - 1)];
}

void FillArray1(Session& s, std::vector<float> v) {
    s.dataArray1.Redim(std::int32_t(v.size()));
    for (std::size_t i = 0; i < v.size(); ++i) s.dataArray1(std::int32_t(i + 1)) = v[i];
}

EventRecord& AddEvent(Session& s, float time, std::uint8_t group = 0) {
    EventRecord& e = s.events.Add();
    e.Time = time;
    e.GroupNumber = group;
    return e;
}

std::vector<float> Ys(const GraphModel& g) {
    std::vector<float> y;
    for (const GraphPoint& p : g.Points(1)) y.push_back(p.y);
    return y;
}
std::vector<float> Xs(const GraphModel& g) {
    std::vector<float> x;
    for (const GraphPoint& p : g.Points(1)) x.push_back(p.x);
    return x;
}

TEST(CountBins, EdgesBelongToTheBinAboveAndNegativeValuesFloorAwayFromZero) {
    const std::vector<float> v = {0.0f, 0.5f, 1.0f, 1.999f, 2.0f, -0.5f, -1.0f, -1.5f};
    BinCounts b;
    ASSERT_EQ(CountBins(v, -1.5f, 2.0f, 1.0f, b), BinResult::Ok);
    EXPECT_EQ(b.lower, -2);
    EXPECT_EQ(b.upper, 2);
    EXPECT_EQ(b.counts, (std::vector<std::int32_t>{1, 2, 2, 2, 1}));

    // Single-precision bins: 3 / 0.1 is bin 30, as a user reads it.
    ASSERT_EQ(CountBins(std::vector<float>{3.0f, 0.3f}, 0, 3.0f, 0.1f, b), BinResult::Ok);
    EXPECT_EQ(b.counts[30], 1);
    EXPECT_EQ(b.counts[3], 1);

    // The limit is 60000 bins exactly; a value outside the range is reported before it.
    EXPECT_EQ(CountBins(std::vector<float>{59999.5f}, 0, 59999.5f, 1, b), BinResult::Ok);
    EXPECT_EQ(b.counts.size(), 60000u);
    EXPECT_EQ(CountBins(std::vector<float>{60000}, 0, 60000, 1, b), BinResult::TooManyBins);
    EXPECT_EQ(CountBins(std::vector<float>{-1, 1e9f}, 0, 1e9f, 1, b), BinResult::SubscriptError);
    // A negative bin size swaps the bounds; 3e38 / 1e-9 does not fit a bin number.
    EXPECT_EQ(CountBins(std::vector<float>{5}, 0, 5, -1, b), BinResult::SubscriptError);
    EXPECT_EQ(CountBins(std::vector<float>{3e38f}, 0, 3e38f, 1e-9f, b), BinResult::Overflow);
}

TEST(Histogram, FrequencyOfAnArrayStartsAtZeroAndDrawsTouchingBars) {
    Session s;
    s.Label11 = "cell1.abf";
    FillArray1(s, {100, 101, 101.5f, 110});
    ScriptedDialogs ui;
    ui.ExpectInput("Bin Size", "Please enter the bin size for Data Array#1 in x-axis unit.", "2");
    Histogram(s, ui, kFieldArray1, SortByTimeForTest);
    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& g = *s.graphs[0];
    // All-positive data: bins from 0, the range always holds zero.
    ASSERT_EQ(g.PointCount(), 56);
    EXPECT_EQ(g.Points(1)[0].x, 0.0f);
    EXPECT_EQ(g.Points(1)[50].x, 100.0f);
    EXPECT_EQ(g.Points(1)[50].y, 3.0f);
    EXPECT_EQ(g.Points(1)[55].y, 1.0f);
    EXPECT_EQ(g.GraphStyle, kStyleBars);
    EXPECT_EQ(g.BarWidth, 2.0);
    EXPECT_EQ(g.Caption, "Data Array#1 Frequency Histogram  cell1.abf");
    EXPECT_EQ(g.GraphTitle, "Data Array#1 Frequency Histogram cell1.abf bin size=2");
    EXPECT_EQ(g.LeftTitle, "Number of Events");
    EXPECT_EQ(g.BottomTitle, "Data Array#1 (x-axis unit)");
    EXPECT_EQ(s.HistogramData, (std::vector<float>{0, 100, 101, 101.5f, 110}));
}

TEST(Histogram, NegativeArrayValuesGetBinsBelowZeroAndLongTitlesAreCut) {
    Session s;
    s.Label11 = std::string(100, 'f');
    FillArray1(s, {-0.5f, 1});
    ScriptedDialogs ui;
    ui.ExpectInput("Bin Size", std::nullopt, "1");
    Histogram(s, ui, kCumulativeKind + kFieldArray1, SortByTimeForTest);
    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& g = *s.graphs[0];
    // Bins -1, 0, 1 and the top edge: the curve reaches 1 there.
    EXPECT_EQ(Xs(g), (std::vector<float>{-1, 0, 1, 2}));
    EXPECT_EQ(Ys(g), (std::vector<float>{0, 0.5f, 0.5f, 1}));
    EXPECT_EQ(g.LeftTitle, "Cumulative Fraction");
    EXPECT_EQ(g.GraphStyle, kStyleLines);
    EXPECT_EQ(g.GraphTitle.size(), 80u);
}

TEST(Histogram, BinSizeRepliesAndTheLimit) {
    Session s;
    FillArray1(s, {0, 60000});
    ScriptedDialogs ui;
    ui.ExpectInput("Bin Size", std::nullopt, "0");           // ends silently
    ui.ExpectInput("Bin Size", std::nullopt, std::nullopt);  // Cancel too
    ui.ExpectInput("Bin Size", std::nullopt, "1");
    ui.ExpectMessage("Too many bins", "Too many bins!  Please readjust the bin size and try again.");
    ui.ExpectInput("Bin Size", std::nullopt, "1.00001");  // 60000 bins pass
    for (int i = 0; i < 4; ++i) Histogram(s, ui, kFieldArray1, SortByTimeForTest);
    ASSERT_EQ(s.graphs.size(), 1u);
    EXPECT_EQ(s.graphs[0]->PointCount(), 60000);

    // An empty array ends the command before any question.
    s.dataArray2.Redim(1);
    Histogram(s, ui, kFieldArray2, SortByTimeForTest);
    EXPECT_EQ(s.graphs.size(), 1u);
}

TEST(Histogram, GroupFilterAndTheUnevenRangeRule) {
    Session s;
    AddEvent(s, 10, 2).Slope1090 = -3;
    AddEvent(s, 20, 0).Slope1090 = 4;
    AddEvent(s, 30, 2).Slope1090 = 2;
    ScriptedDialogs ui;
    // All events: both ends tracked, bins -3 .. 4.
    ui.ExpectInput("Group Number",
                   "Please enter group number to plot grouped events only.  Entering zero will "
                   "plot all events.",
                   "0");
    ui.ExpectInput("Bin Size", "Please enter the bin size for Slope10-90 in /msec.", "1");
    Histogram(s, ui, 11, SortByTimeForTest);
    ASSERT_EQ(s.graphs.size(), 1u);
    EXPECT_EQ(s.graphs[0]->PointCount(), 8);

    // With a group only the lowest end is tracked: the positive slope lies above the bins, the
    // runtime's subscript error, and no graph.
    ui.ExpectInput("Group Number", std::nullopt, "2");
    ui.ExpectInput("Bin Size", std::nullopt, "1");
    ui.ExpectMessage("Ardelvantine", "Subscript out of range");
    Histogram(s, ui, 11, SortByTimeForTest);
    EXPECT_EQ(s.graphs.size(), 1u);
    EXPECT_EQ(s.HistogramData, (std::vector<float>{0, -3, 2}));

    ui.ExpectInput("Group Number", std::nullopt, "7");
    ui.ExpectMessage("", "There is no events with group number 7.  Try another group.");
    ui.ExpectInput("Group Number", std::nullopt, std::nullopt);
    Histogram(s, ui, 5, SortByTimeForTest);
    Histogram(s, ui, 5, SortByTimeForTest);
    EXPECT_EQ(s.graphs.size(), 1u);
}

TEST(Histogram, IntervalsSortTheTableAndKeepTheLeadingZero) {
    Session s;
    AddEvent(s, 300, 1);
    AddEvent(s, 100, 1);
    AddEvent(s, 150, 0);
    AddEvent(s, 200, 1);
    ScriptedDialogs ui;
    ui.ExpectInput("Group Number", std::nullopt, "0");
    Histogram(s, ui, kCumulativeNoBinKind + kFieldInterval, SortByTimeForTest);
    EXPECT_EQ(s.events[1].Time, 100);
    // Sorted and kept: the zero counts in the total.
    EXPECT_EQ(s.HistogramData, (std::vector<float>{0, 0, 50, 50, 100}));
    ASSERT_EQ(s.graphs.size(), 1u);
    EXPECT_EQ(Ys(*s.graphs[0]), (std::vector<float>{0.25f, 0.5f, 0.75f, 1}));
    EXPECT_EQ(s.graphs[0]->GraphTitle, "Cumulative Inter-event Interval Histogram ");

    // A group: each selected event after the first, in its running place.
    ui.ExpectInput("Group Number", std::nullopt, "1");
    Histogram(s, ui, kInverseCumulativeKind + kFieldInterval, SortByTimeForTest);
    EXPECT_EQ(s.HistogramData, (std::vector<float>{0, 0, 100, 100}));
    const auto inverse = Ys(*s.graphs[1]);
    ASSERT_EQ(inverse.size(), 3u);
    EXPECT_FLOAT_EQ(inverse[0], 2 / 3.0f);
    EXPECT_FLOAT_EQ(inverse[1], 1 / 3.0f);
    EXPECT_EQ(inverse[2], 0.0f);
    EXPECT_EQ(s.graphs[1]->LeftTitle, "Fraction");
}

TEST(RunningAverage, MeanAndSemPerTimeBin) {
    Session s;
    AddEvent(s, 0);  // the check for events stands first, also for the arrays
    FillArray1(s, {0, 1000, 2000, 10000, 11000});  // msec
    s.dataArray2.Redim(5);
    const float v[] = {1, 2, 3, 10, 20};
    for (int i = 0; i < 5; ++i) s.dataArray2(i + 1) = v[i];
    ScriptedDialogs ui;
    ui.ExpectInput("Bin Size for running average plot.",
                   "Please enter the bin size for Time in second.", "10");
    RunningAveragePlot(s, ui, kFieldArray1, SortByTimeForTest);
    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& g = *s.graphs[0];
    EXPECT_EQ(g.ErrorStyle, kErrorStyleOn);
    EXPECT_EQ(Xs(g), (std::vector<float>{0, 10}));
    EXPECT_EQ(Ys(g), (std::vector<float>{2, 15}));
    // Three values: sqrt(2 / 2) / sqrt(3); two values give no SEM.
    EXPECT_FLOAT_EQ(g.Points(1)[0].high, float(1 / std::sqrt(3.0)));
    EXPECT_EQ(g.Points(1)[0].low, g.Points(1)[0].high);
    EXPECT_EQ(g.Points(1)[1].high, 0.0f);
    EXPECT_EQ(g.BottomTitle, "Time (sec)");

    s.dataArray2.Redim(4);
    ui.ExpectMessage("Try Again");
    RunningAveragePlot(s, ui, kFieldArray1, SortByTimeForTest);
    EXPECT_EQ(s.graphs.size(), 1u);
}

TEST(ScatterPlot, NeedsArraysOfEqualLength) {
    Session s;
    FillArray1(s, {1, 2, 3});
    s.dataArray2.Redim(2);
    ScriptedDialogs ui;
    ui.ExpectMessage("Uneven Array#1 and Array#2");
    menu_plotscatterXY(s, ui);
    s.dataArray2.Redim(3);
    s.dataArray2(3) = 7;
    menu_plotscatterXY(s, ui);
    ASSERT_EQ(s.graphs.size(), 1u);
    EXPECT_EQ(s.graphs[0]->GraphTitle, "Array #1 vs. Array #2: n=3");
    EXPECT_EQ(s.graphs[0]->Points(1)[2].y, 7.0f);
}

}  // namespace
}  // namespace ardel
