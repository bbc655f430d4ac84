// The geometrical window: the Lorenz plot and the frames it shares with the spectral window.
#include <vector>

#include <gtest/gtest.h>

#include "hrv/geometric.h"
#include "support/scripted_dialogs.h"

namespace ardel::hrv {
namespace {

Session Beats(const std::vector<float>& times) {
    Session s;
    for (float t : times) s.events.Add().Time = t;
    return s;
}

TEST(HRVGeo, LorenzPairsFollowTheAcceptedSeries) {
    // Intervals 50, 5 (dropped), 60, 40: pairs (50, 60) and (60, 40) - neighbours after the
    // filter, across the dropped beat.
    Session s = Beats({0, 50, 55, 115, 155});
    HrvGeoForm f;
    testing::ScriptedDialogs ui;
    HRVGeo_Command1(s, ui, f);
    const GraphModel& g = *f.Picture1;
    EXPECT_EQ(g.BottomTitle, "R1R2(ms)");
    EXPECT_EQ(g.LeftTitle, "R2R3(ms)");
    EXPECT_EQ(g.GraphStyle, kStyleScatter);
    ASSERT_EQ(g.PointCount(), 2);
    EXPECT_EQ(g.Point(1, 1).x, 50.0f);
    EXPECT_EQ(g.Point(1, 1).y, 60.0f);
    EXPECT_EQ(g.Point(1, 2).x, 60.0f);
    EXPECT_EQ(g.Point(1, 2).y, 40.0f);
    EXPECT_EQ(f.Graph1->LeftTitle, "#");
    EXPECT_EQ(f.Graph2->LeftTitle, "#");
    EXPECT_EQ(f.Picture2->PointCount(), 3);
}

TEST(HRVGeo, PeriodicBeatsGiveOneLorenzSpotAndOneDeltaBinAtZero) {
    std::vector<float> times;
    for (int i = 0; i < 20; ++i) times.push_back(float(i) * 80);
    Session s = Beats(times);
    HrvGeoForm f;
    f.options.DeltaRRBinSize = "5";
    testing::ScriptedDialogs ui;
    HRVGeo_Command1(s, ui, f);
    const GraphModel& lorenz = *f.Picture1;
    ASSERT_EQ(lorenz.PointCount(), 18);
    for (const GraphPoint& p : lorenz.Points(1)) {
        EXPECT_EQ(p.x, 80.0f);
        EXPECT_EQ(p.y, 80.0f);
    }
    const GraphModel& delta = *f.Graph2;
    ASSERT_EQ(delta.PointCount(), 1);
    EXPECT_EQ(delta.Point(1, 1).x, 0.0f);
    EXPECT_EQ(delta.Point(1, 1).y, 18.0f);
}

TEST(HRVGeo, TooFewIntervalsClearTheFrames) {
    HrvGeoForm f;
    Session good = Beats({0, 50, 110});
    testing::ScriptedDialogs ui;
    HRVGeo_Command1(good, ui, f);
    EXPECT_EQ(f.Picture1->PointCount(), 1);
    Session one = Beats({0, 50});
    ui.ExpectMessage("Too Few RR Intervals");
    HRVGeo_Command1(one, ui, f);
    EXPECT_EQ(f.Picture1->PointCount(), 0);
    EXPECT_EQ(f.Picture1->GraphTitle, "Lorenz Plot");
}

}  // namespace
}  // namespace ardel::hrv
