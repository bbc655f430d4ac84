// The results table: its file written and read back byte for byte, damaged files, the .Fit
// text that never replaces a file, row deletions and the hand-over of columns to the arrays.
#include "group/results_table.h"

#include <cmath>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "graph/graph_model.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel::group {
namespace {

using ardel::testing::ScriptedDialogs;
using ardel::testing::TempDir;

ResultRow Row(std::string id, float first, float a1 = 0, float a2 = 0) {
    ResultRow r;
    r.Identifier = std::move(id);
    r.Values[0] = first;
    r.Values[7] = a1;
    r.Values[9] = a2;
    return r;
}

std::string ReadFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(ResultsFile, RoundTripIsBitExactAndTheIdentifierIsCut) {
    ResultTable table;
    ResultsGrid grid;
    AppendResult(table, grid, Row(std::string(70, 'x'), 1.5f));
    ResultRow odd = Row("cell.abf G1 T3 Average Peak to End", -0.0f);
    odd.Values[39] = std::numeric_limits<float>::denorm_min();
    odd.Values[5] = std::numeric_limits<float>::infinity();
    AppendResult(table, grid, odd);
    EXPECT_EQ(table.rows[0].Identifier.size(), kIdentifierLength);
    EXPECT_EQ(grid.row, 1);

    const std::string bytes = RslBytes(table.rows);
    ASSERT_EQ(bytes.size(), kRslHeaderSize + 2 * kRslRowSize);
    EXPECT_EQ(bytes.substr(0, 32), "Ardelvantine Results File.      ");
    // Little-endian singles after the 60 identifier bytes: 1.5f is 0x3FC00000.
    EXPECT_EQ(bytes.substr(32 + 60, 4), std::string("\x00\x00\xC0\x3F", 4));
    const auto back = ReadRsl(bytes);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->size(), 2u);
    EXPECT_EQ(RslBytes(*back), bytes);
    EXPECT_TRUE(std::signbit((*back)[1].Values[0]));
}

TEST(ResultsFile, DamagedFiles) {
    std::vector<ResultRow> rows{Row("a", 1), Row("b", 2)};
    rows[1].Values[39] = 9;
    const std::string bytes = RslBytes(rows);
    // No mark: nothing.
    EXPECT_FALSE(ReadRsl("Some other file of 32 bytes......" + bytes.substr(32)));
    EXPECT_FALSE(ReadRsl(""));
    // The mark alone: no rows.
    EXPECT_EQ(ReadRsl(std::string(kRslMark))->size(), 0u);
    // The count is rounded to nearest: a row cut before its half is not counted, one cut after
    // it is, with what is missing read as 0.
    EXPECT_EQ(ReadRsl(bytes.substr(0, 32 + 220 + 109))->size(), 1u);
    const auto partial = ReadRsl(bytes.substr(0, 32 + 220 + 120));
    ASSERT_EQ(partial->size(), 2u);
    EXPECT_EQ((*partial)[1].Identifier, "b");
    EXPECT_EQ((*partial)[1].Values[0], 2.0f);
    EXPECT_EQ((*partial)[1].Values[39], 0.0f);
    // A header that claims nothing can ask for more than the file's length.
    std::string longFile = std::string(kRslMark) + std::string(6 + 220 * 1000, '\0');
    EXPECT_EQ(ReadRsl(longFile)->size(), 1000u);
}

TEST(ResultsFile, SaveAsksBeforeReplacingAndLoadAppendsOnNo) {
    TempDir dir;
    Session s;
    s.recording.FileIsOpen = true;
    ResultsGrid grid;
    s.results.rows = {Row("first", 1), Row("second", 2)};
    ScriptedDialogs ui;
    // The name is cut at its first dot.
    ui.ExpectSaveFile(dir / "cell.v2.txt");
    menu_SaveResults(s, ui);
    ASSERT_TRUE(std::filesystem::exists(dir / "cell.RSL"));
    ui.ExpectSaveFile(dir / "cell.RSL").ExpectAsk("Replace", "File already exist.  Do you want to replace?", Answer::No);
    s.results.rows.push_back(Row("third", 3));
    menu_SaveResults(s, ui);
    EXPECT_EQ(ReadFile(dir / "cell.RSL").size(), 32u + 2 * 220);

    ui.ExpectOpenFile(dir / "cell.RSL")
        .ExpectAsk("Clear results?",
                   "There are 3 previous results.  Would you like to clear the previous results before loading?",
                   Answer::No);
    menu_LoadResults(s, ui, grid);
    ASSERT_EQ(s.results.rows.size(), 5u);
    EXPECT_EQ(s.results.rows[2].Identifier, "third");
    EXPECT_EQ(s.results.rows[3].Identifier, "first");
    EXPECT_EQ(grid.row, 4);

    // An empty table or no recording: nothing, no question.
    Session empty;
    empty.recording.FileIsOpen = true;
    menu_SaveResults(empty, ui);
    EXPECT_TRUE(ui.Done());
}

TEST(ResultsFile, FitTextRefusesAnExistingFile) {
    TempDir dir;
    Session s;
    ResultsGrid grid;
    s.results.rows = {Row("cell G1 T0", 2.5f)};
    ScriptedDialogs ui;
    ui.ExpectSaveFile(dir / "r.Fit");
    menu_copyasciifile(s, ui, grid);
    const std::string text = ReadFile(dir / "r.Fit");
    EXPECT_EQ(text.substr(0, text.find("\r\n")).substr(0, 21), "Identifier\tAmplitude\t");
    EXPECT_NE(text.find("\r\ncell G1 T0\t2.5\t0\t"), std::string::npos);

    s.results.rows.push_back(Row("more", 1));
    ui.ExpectSaveFile(dir / "r.Fit").ExpectMessage("File Exist", "File already exist.  Try again with different file name.");
    menu_copyasciifile(s, ui, grid);
    EXPECT_EQ(ReadFile(dir / "r.Fit"), text);
}

TEST(ResultsTable, RowDeletions) {
    ResultTable t;
    ResultsGrid g;
    auto ids = [&] {
        std::string s;
        for (const auto& r : t.rows) s += r.Identifier;
        return s;
    };
    // An empty table: every deletion does nothing.
    menu_LastResult(t, g);
    menu_DeleteSelected(t, g);
    menu_DeleteEven(t, g);
    menu_DeleteOdd(t, g);
    EXPECT_TRUE(t.rows.empty());

    auto fill = [&] {
        t.rows.clear();
        for (char c : std::string("abcde")) t.rows.push_back(Row(std::string(1, c), 0));
    };
    fill();
    menu_DeleteEven(t, g);
    EXPECT_EQ(ids(), "ace");
    // Odd keeps b and d, but the count is still Int(5 / 2 + 0.5) = 3: the third row is what
    // compacting left there.
    fill();
    menu_DeleteOdd(t, g);
    EXPECT_EQ(ids(), "bdc");
    fill();
    g.row = 1;
    menu_DeleteSelected(t, g);
    EXPECT_EQ(ids(), "acde");
    g.row = 3;
    menu_DeleteSelected(t, g);
    EXPECT_EQ(ids(), "acd");
    EXPECT_EQ(g.row, 2);
    menu_LastResult(t, g);
    EXPECT_EQ(ids(), "ac");
    menu_ClearResults(t, g);
    EXPECT_TRUE(t.rows.empty());
    EXPECT_EQ(g.row, -1);
}

TEST(ResultsTable, ColumnsIntoTheArrays) {
    Session s;
    s.results.rows = {Row("a", 1, 3, 1), Row("b", 2), Row("c", 4, 0, 2)};
    ScriptedDialogs ui;
    ui.ExpectMessage("Done Filling Array #2",
                     "All of  3 results are safely put into Array #2 for further statistical data analysis.");
    menu_Put2Array(s, ui, 2, 1);
    ASSERT_EQ(s.dataArray2.UpperBound(), 3);
    EXPECT_EQ(s.dataArray2(3), 4.0f);
    // The array holds data now: the question, and No appends.
    ui.ExpectAsk("Append data or clear Data before adding", std::nullopt, Answer::No)
        .ExpectMessage("Done Filling Array #1");
    AoverSum(s, ui, 1, 1);
    ASSERT_EQ(s.dataArray2.UpperBound(), 6);
    // A1 / (A1 + A2): 0.75; a row without a fit gives 0; A1 of 0 gives 0.
    EXPECT_EQ(s.dataArray2(4), 0.75f);
    EXPECT_EQ(s.dataArray2(5), 0.0f);
    EXPECT_EQ(s.dataArray2(6), 0.0f);
}

TEST(ResultsTable, TabCaptionsAndColumnStatistics) {
    Session s;
    s.recording.ADCUnits = "mV";
    ResultsGrid g;
    SetResultTab(g, s.results, kTabMultiPeak, s.recording);
    EXPECT_EQ(g.captions[18], "Peak9");
    EXPECT_EQ(g.captions[19], "Time9");
    SetResultTab(g, s.results, kTabFieldEpsp, s.recording);
    EXPECT_EQ(g.captions[16], "Peak8");  // a caption the tab doesn't name stays
    EXPECT_EQ(s.results.columns[4].unit, "mV/ms");
    SetResultTab(g, s.results, kTabFitting, s.recording);
    EXPECT_EQ(s.results.columns[3].name, "10-90 Rise");
    SetFittingRunCaptions(g);
    EXPECT_EQ(g.captions[16], "Diff Area");

    s.results.rows = {Row("a", 1), Row("b", 3)};
    CStatForm form;
    menu_ColumnStat(s, g, form);
    ASSERT_EQ(form.ColumnTitles.size(), 16u);
    EXPECT_EQ(form.ColumnTitles[0], "Amplitude");
    EXPECT_EQ(form.Rows[0][0], "Average");
    EXPECT_EQ(form.Rows[0][1], "2.000");
}

TEST(ResultsTable, HistogramAndTimeCourseOfAColumn) {
    Session s;
    s.recording.ADCUnits = "pA";
    s.Label11 = "cell.abf";
    ResultsGrid g;
    SetResultTab(g, s.results, kTabFitting, s.recording);
    s.results.rows = {Row("a", 0.5f), Row("b", 1.5f), Row("c", 1.7f), Row("d", 3.0f)};
    ScriptedDialogs ui;
    ui.ExpectInput("Bin Size", "Please enter the bin size for Amplitude in pA.", "1");
    ResultsHistogram(s, ui, g, ResultPlot::Frequency, 1);
    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& h = *s.graphs[0];
    EXPECT_EQ(h.BottomTitle, "Amplitude (pA)");
    // Bins from 0 (the range always holds 0) to 3: 1, 2, 0, 1.
    ASSERT_EQ(h.PointCount(), 4);
    EXPECT_EQ(h.Point(1, 2).y, 2.0f);
    EXPECT_EQ(h.Point(1, 4).x, 3.0f);

    // Normalised to the mean of the first two rows (1.0), in percent, against the row number.
    ui.ExpectInput("Number of points to normalize", std::nullopt, "2");
    ResultsHistogram(s, ui, g, ResultPlot::TimeCourse, 1);
    const GraphModel& t = *s.graphs[1];
    EXPECT_EQ(t.BottomTitle, "Event #");
    EXPECT_NE(t.Caption.find("(Normalized)"), std::string::npos);
    EXPECT_EQ(t.Point(1, 4).x, 4.0f);
    EXPECT_FLOAT_EQ(t.Point(1, 4).y, 300.0f);

    // An empty answer, or an array that holds nothing, draws nothing.
    ui.ExpectInput("Bin Size", std::nullopt, "");
    ResultsHistogram(s, ui, g, ResultPlot::Cumulative, 1);
    ResultsHistogram(s, ui, g, ResultPlot::Frequency, kPlotArray1);
    EXPECT_EQ(s.graphs.size(), 2u);
}

}  // namespace
}  // namespace ardel::group
