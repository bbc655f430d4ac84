// The graph model and its window menu: the value text of several sets, the copy's colour and
// symbol marks, Add a Plot, values to the arrays, the axis prompts, saving without a screen.
#include "graph/graph_menu.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

#include <gtest/gtest.h>

#include "graph/graph_sink.h"
#include "support/scripted_dialogs.h"

namespace ardel {
namespace {

using testing::ScriptedDialogs;
namespace fs = std::filesystem;

GraphModel TwoSetGraph() {
    GraphModel g;
    g.GraphTitle = "Amplitude Frequency Histogram";
    g.BottomTitle = "Amplitude (pA)";
    g.LeftTitle = "Number of Events";
    g.SetPointCount(2);
    g.AddPoint(0, 3);
    g.AddPoint(0.5f, -1.25f);
    g.SetSetCount(2);
    g.CurrentSet = 2;
    g.CurrentPoint = 1;
    g.AddPoint(10, 1e7f);
    g.AddPoint(20, 0);
    return g;
}

std::string ReadFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

TEST(GraphValueText, SetsFollowEachOtherUnderAHeaderThatAnnouncesTwoColumnsPerSet) {
    GraphModel g = TwoSetGraph();
    EXPECT_EQ(GraphValueText(g),
              "ATF\t1.0\r\n3\t 4\r\n\"Amplitude Frequency Histogram\"\r\n\r\n\r\n"
              "\"Amplitude (pA)\"\t\"Number of Events\"\t\r\n"
              " 0\t 3\t\r\n .5\t-1.25\t\r\n"
              " 10\t 1E+07\t\r\n 20\t 0\t\r\n");
    g.ErrorStyle = kErrorStyleOn;
    g.Point(1, 1).high = 0.25f;
    const std::string t = GraphValueText(g);
    EXPECT_NE(t.find("\"Number of Events\"\t\"Std Error\"\r\n 0\t 3\t .25\t\r\n"), std::string::npos);
}

TEST(GraphMenu, CopyingValuesMarksEverySetAndLeavesTheLastOneCurrent) {
    GraphModel g = TwoSetGraph();
    g.CurrentSet = 1;
    ScriptedDialogs ui;
    menu_copydata(ui, g);
    EXPECT_EQ(ui.clipboard, GraphValueText(g));
    for (int set = 1; set <= 2; ++set) {
        EXPECT_EQ(g.SetColor(set), 9);
        EXPECT_EQ(g.SetSymbol(set), 3);
    }
    EXPECT_EQ(g.CurrentSet, 2);
}

TEST(GraphMenu, AddAPlotGrowsEverySetAndStopsAtAShorterArray2) {
    Session s;
    menu_BlankGraph(s);
    ASSERT_EQ(s.graphs.size(), 1u);
    GraphModel& g = *s.graphs[0];
    EXPECT_EQ(g.Caption, "Blank Graph");
    s.dataArray1.Redim(3);
    s.dataArray2.Redim(3);
    for (int i = 1; i <= 3; ++i) {
        s.dataArray1(i) = float(i);
        s.dataArray2(i) = float(10 * i);
    }
    ScriptedDialogs ui;
    menu_AddPlot1(s, ui, g);
    // The control's empty first set and the added one, sharing the point count.
    ASSERT_EQ(g.SetCount(), 2);
    EXPECT_EQ(g.PointCount(), 3);
    EXPECT_EQ(g.Point(1, 3).y, 0.0f);
    EXPECT_EQ(g.Point(2, 3).x, 3.0f);
    EXPECT_EQ(g.Point(2, 3).y, 30.0f);
    EXPECT_EQ(g.SetColor(2), 3);

    s.dataArray1.Redim(5);
    for (int i = 1; i <= 5; ++i) s.dataArray1(i) = float(i);
    ui.ExpectMessage("Ardelvantine", "Subscript out of range");
    menu_AddPlot1(s, ui, g);
    EXPECT_EQ(g.SetCount(), 3);
    EXPECT_EQ(g.PointCount(), 5);
    EXPECT_EQ(g.Points(1).size(), 5u);
    EXPECT_EQ(g.Point(3, 3).y, 30.0f);
    EXPECT_EQ(g.Point(3, 4).x, 0.0f);

    // The current set's values go to the arrays.
    g.CurrentSet = 2;
    ui.ExpectMessage("Done Filling Array #1 and Array #2",
                     "All of  5 graph data are safely put into Array #1 and Array #2 for further "
                     "data analysis.");
    menu_Array1(s, ui, g);
    EXPECT_EQ(s.dataArray1.UpperBound(), 5);
    EXPECT_EQ(s.dataArray2(2), 20.0f);
    EXPECT_EQ(s.dataArray2(5), 0.0f);
}

TEST(GraphMenu, AxisAndTitlePrompts) {
    GraphModel g = TwoSetGraph();
    const auto before = g.DrawCount();
    ScriptedDialogs ui;
    ui.ExpectInput("X Max", "Please enter the new value for X maximum.", "2");
    ui.ExpectInput("Y Max", "Please enter the new value for Y maximum.", "2");
    ui.ExpectInput("X Axis Ticks", "Please enter a new value for number of ticks on x-axis.", "");
    ui.ExpectInput("Y Axis Ticks", std::nullopt, "8");
    ui.ExpectInput("Graph Title", "Please edit the graph titile.", "");
    ui.ExpectInput("X Axis Title", "Please edit the X axis title.", "Time (s)");
    menu_changeXMax(ui, g);
    menu_changeYMax(ui, g);
    menu_XTicks(ui, g);
    menu_YTicks(ui, g);
    menu_EditTitle(ui, g);
    menu_XTitle(ui, g);
    // The floor of 5 holds for x only.
    EXPECT_EQ(g.XAxisMaximum, 5.0);
    EXPECT_EQ(g.YAxisMaximum, 2.0);
    EXPECT_EQ(g.XAxisStyleFlag, kAxisUserDefined);
    EXPECT_EQ(g.XAxisTicks, 5);
    EXPECT_EQ(g.YAxisTicks, 8);
    EXPECT_EQ(g.GraphTitle, "Amplitude Frequency Histogram");
    EXPECT_EQ(g.BottomTitle, "Time (s)");
    EXPECT_EQ(g.DrawCount(), before + 4);
}

TEST(GraphMenu, SavingValuesAsksBeforeReplacingAndReportsAFolderItCannotWrite) {
    const fs::path dir = fs::temp_directory_path() / ("ardel_graph_" + std::to_string(::getpid()));
    fs::create_directories(dir);
    Session s;
    s.Label11 = "cell.abf";
    GraphModel g = TwoSetGraph();
    ScriptedDialogs ui;
    ui.ExpectSaveFile(dir / "values");
    menu_CopyDataASCII(s, ui, g);
    EXPECT_EQ(ReadFile(dir / "values.txt"), GraphValueText(g));
    EXPECT_EQ(ui.fileDialogs.back().fileName, "cell");

    ui.ExpectSaveFile(dir / "values.txt");
    ui.ExpectAsk("Replace File", "File already exist.  Do you want to replace this file?",
                 Answer::No);
    g.GraphTitle = "changed";
    menu_CopyDataASCII(s, ui, g);
    EXPECT_EQ(ReadFile(dir / "values.txt").find("changed"), std::string::npos);

    ui.ExpectSaveFile(dir / "missing" / "values.txt");
    ui.ExpectMessage("Ardelvantine");
    menu_CopyDataASCII(s, ui, g);
    EXPECT_FALSE(fs::exists(dir / "missing"));

    // Without a screen a picture cannot be drawn: the user is told, nothing is written.
    ui.ExpectSaveFile(dir / "picture.png");
    ui.ExpectMessage(std::string(kNeedsDesktopTitle), std::string(kNeedsDesktopText));
    ui.ExpectSaveFile(dir / "picture.wmf");
    ui.ExpectMessage("Save Graph as Picture");
    menu_Copy2BMP(s, ui, g);
    menu_Copy2BMP(s, ui, g);
    EXPECT_FALSE(fs::exists(dir / "picture.png"));
    fs::remove_all(dir);
}

}  // namespace
}  // namespace ardel
