// The axes beside the trace and the automatic fit of gain and offset.
#include "view/trace_axes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "view/trace_scene.h"
#include "view/view_rig.h"

namespace ardel::testing {
namespace {

void ExpectTicks(const std::vector<double>& got, const std::vector<double>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], 1e-12) << i;
}

TEST(NiceTicks, RoundStepsCoverTheRangeWithinTheLimit) {
    ExpectTicks(NiceTicks(0, 10, 6), {0, 2, 4, 6, 8, 10});
    ExpectTicks(NiceTicks(0.13, 0.61, 5), {0.2, 0.3, 0.4, 0.5, 0.6});
    ExpectTicks(NiceTicks(0.13, 0.61, 4), {0.2, 0.4, 0.6});
    ExpectTicks(NiceTicks(-7, 3, 3), {-5, 0});
    // Reversed ends are the same range; an empty or broken range has no ticks.
    EXPECT_EQ(NiceTicks(10, 0, 6), NiceTicks(0, 10, 6));
    EXPECT_TRUE(NiceTicks(1, 1, 5).empty());
    EXPECT_TRUE(NiceTicks(0, std::nan(""), 5).empty());
    for (int limit : {2, 3, 7, 11}) {
        const auto t = NiceTicks(1234.5, 98765.4, limit);
        EXPECT_LE(t.size(), std::size_t(limit));
        EXPECT_GE(t.size(), 1u);
        EXPECT_GE(t.front(), 1234.5);
        EXPECT_LE(t.back(), 98765.4);
    }
}

TEST(TraceAxes, TimeInMillisecondsForShortScreensAndSecondsForLongOnes) {
    ViewRig rig({Ramp(40960)});  // 4 Blocks of 100 us: 102.4 ms a screen
    Display(rig.s);
    TraceAxis axis = TimeAxis(rig.s, 7);
    EXPECT_EQ(axis.unit, "ms");
    ASSERT_FALSE(axis.ticks.empty());
    EXPECT_EQ(axis.ticks.front().label, "0");
    EXPECT_DOUBLE_EQ(axis.ticks.front().position, 0);
    // 20 ms is point 200 of the screen.
    EXPECT_EQ(axis.ticks[1].label, "20");
    EXPECT_DOUBLE_EQ(axis.ticks[1].position, 200);

    // 40 Blocks: 1.024 s, in seconds; the second screen starts at 1.024 s.
    rig.s.recording.BlocksPerScreen = 40;
    rig.s.recording.ScreenBlock += 40;
    rig.s.recording.DimensionBuffers();
    Display(rig.s);
    axis = TimeAxis(rig.s, 8);
    EXPECT_EQ(axis.unit, "s");
    ASSERT_FALSE(axis.ticks.empty());
    EXPECT_EQ(axis.ticks.front().label, "1.2");
    EXPECT_NEAR(axis.ticks.front().position, (1200.0 - 1024.0) * 10, 1e-6);
}

TEST(TraceAxes, AmplitudeTicksSitWhereTheTraceIsDrawnAndFollowGainAndOffset) {
    ViewRig rig({Ramp(4096)});
    Display(rig.s);
    for (const auto& [gain, offset] : {std::pair{1.0f, 0}, std::pair{8.0f, -5000}}) {
        rig.s.display.DisplayGain[0] = gain;
        rig.s.display.DisplayOffset[0] = offset;
        const TraceAxis axis = AmplitudeAxis(rig.s, 8);
        EXPECT_EQ(axis.unit, "pA");
        ASSERT_GE(axis.ticks.size(), 2u);
        for (const AxisTick& t : axis.ticks) {
            // One pA per raw step: the tick of a value lies where that raw value is drawn.
            const double raw = std::stod(t.label);
            EXPECT_NEAR(t.position, rig.s.display.CalculateYPosition(raw, 0), 0.5) << t.label;
            EXPECT_GE(t.position, -0.5);
            EXPECT_LE(t.position, 65536.5);
        }
    }
}

TEST(TraceAxes, AutoScaleFillsThePictureWithTheScreenShown) {
    std::vector<std::int16_t> flat(4096, 300);
    flat[100] = 250;  // a small event on a flat line: invisible at gain 1
    ViewRig rig({flat});
    Display(rig.s);
    AutoScale(rig.s);
    const float gain = rig.s.display.DisplayGain[0];
    EXPECT_GT(gain, 100);
    EXPECT_LE(gain, 1000);
    const double top = rig.s.display.CalculateYPosition(300, 0);
    const double bottom = rig.s.display.CalculateYPosition(250, 0);
    EXPECT_GT(top, 0);
    EXPECT_LT(bottom, 65536);
    EXPECT_GT(bottom - top, 0.7 * 65536);
    EXPECT_NEAR((top + bottom) / 2, 32768, 200);
    EXPECT_GT(rig.displays, 1);

    // A flat screen takes the largest gain instead of dividing by zero.
    ViewRig still({std::vector<std::int16_t>(4096, 0)});
    Display(still.s);
    AutoScale(still.s);
    EXPECT_EQ(still.s.display.DisplayGain[0], 1000.0f);
}

TEST(TraceScene, SeveralChannelsGetALegendInTheirPens) {
    ViewRig one({Ramp(4096)});
    Display(one.s);
    EXPECT_TRUE(BuildTraceScene(one.s, 500).legend.empty());
    ViewRig two({Ramp(4096), Ramp(4096, 2)});
    Display(two.s);
    const TraceScene scene = BuildTraceScene(two.s, 500);
    ASSERT_EQ(scene.legend.size(), 2u);
    EXPECT_EQ(scene.legend[1].text, "Channel 1");
    EXPECT_EQ(scene.legend[1].color, ChannelColor(1));
}

}  // namespace
}  // namespace ardel::testing
