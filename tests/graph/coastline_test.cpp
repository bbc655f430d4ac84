// The coastline: whole bins only, no difference across a bin boundary, the active channel of a
// multiplexed file, the time course's graph and the display window's message.
#include "graph/coastline.h"

#include <gtest/gtest.h>

#include "graph/graph_model.h"
#include "support/scripted_dialogs.h"
#include "view/view_rig.h"

namespace ardel::testing {
namespace {

// 0, 10, 0, 10 ...: every difference is 10 units.
std::vector<std::int16_t> Saw(std::size_t n) {
    std::vector<std::int16_t> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = std::int16_t(i % 2 ? 10 : 0);
    return v;
}

TEST(Coastline, WholeBinsOfTheActiveChannelWithoutTheBoundaryDifference) {
    std::vector<std::int16_t> steps{0, 3, 1, 1, -2, 5, 7, 7};  // a last partial bin of 2 points
    ViewRig r({steps, Saw(steps.size())});
    // Bins of 3 points: |3-0| + |1-3| and |-2-1| + |5+2|; the step 1 -> 1 across the boundary
    // and the last two points belong to no bin.
    EXPECT_EQ(CoastlineBins(r.s.recording, 3), (std::vector<double>{5, 10}));
    r.s.recording.ChannelIndex = 1;
    EXPECT_EQ(CoastlineBins(r.s.recording, 4), (std::vector<double>{30, 30}));
    EXPECT_TRUE(CoastlineBins(r.s.recording, 9).empty());
}

TEST(Coastline, TimeCourseGraphAndDisplayWindowMessage) {
    ViewRig r({Saw(3000)});
    r.s.Label11 = "trace.abf";
    ScriptedDialogs ui;
    // 0.35 ms is 3.5 points of 100 us, rounded to 4 (halves to even): 750 bins of 3 steps.
    ui.ExpectInput("Time Bin", "Please enter the length of time for each bin in msec.", "0.35");
    menu_CoastlineM(r.s, ui, 0);
    ASSERT_EQ(r.s.graphs.size(), 1u);
    const GraphModel& g = *r.s.graphs[0];
    EXPECT_EQ(g.Caption, " Coastline Time Course trace.abf");
    EXPECT_EQ(g.GraphTitle, " Coastline Time Course  trace.abf bin size=0.35 ms");
    EXPECT_EQ(g.LeftTitle, "Coastline Length");
    EXPECT_EQ(g.BottomTitle, "Time (s)");
    ASSERT_EQ(g.PointCount(), 750);
    EXPECT_EQ(g.Point(1, 1).y, 30.0f);
    EXPECT_FLOAT_EQ(g.Point(1, 3).x, 0.0007f);

    // Bins of less than one point, or more than 60000 of them, are too many.
    ui.ExpectInput("Time Bin", std::nullopt, "0.01");
    ui.ExpectMessage("Too many bins", "Too many bins!  Please readjust the bin size and try again.");
    menu_CoastlineM(r.s, ui, 0);
    ui.ExpectInput("Time Bin", std::nullopt, "abc");  // no number: ends
    menu_CoastlineM(r.s, ui, 0);
    EXPECT_EQ(r.s.graphs.size(), 1u);

    // The screen of 4 Blocks: 1023 steps of 10.
    ui.ExpectMessage("Coastline Length",
                     "The coastline length of the trace in this display window is 10230.000.");
    menu_CoastlineM(r.s, ui, 1);
}

}  // namespace
}  // namespace ardel::testing
