// The picture as data: the 32786 centre, gain limits, which rows each type draws, the scale bar,
// the cursors and their readout, the right button's hit test and the offset slider.
#include "group/group_display.h"

#include <gtest/gtest.h>

#include "group_fixture.h"

namespace ardel::group {
namespace {

class GroupDisplayTest : public testing::GroupFixture {
  protected:
    void SetUp() override {
        OpenRamp();
        AddEvent(10.0f);   // row 1 from point 90
        AddEvent(30.0f);   // row 2 from point 290
        // One pixel a point; 8192 pixels high, an eighth of the sample range.
        w.PicWidth = 256;
        w.PicHeight = 8192;
        ASSERT_TRUE(StartDisplay(s, ui, w));
    }
};

TEST_F(GroupDisplayTest, PixelRowsUseTheShiftedCentreGainAndOffset) {
    // (32786 - 0) * 8192 / 65536 = 4098.25: 18 units below the true centre's 4096.
    EXPECT_EQ(CalculateYPosition(w, 0), 4098);
    EXPECT_EQ(CalculateYPosition(w, 8), 4097);  // 4098.25 - 1
    w.form.Combo5 = "2";
    w.form.Combo6 = "-14";
    EXPECT_EQ(CalculateYPosition(w, 100), 4100 - 25);  // 4100 - 100 * 0.25
    // The gain box keeps to 0.001 .. 1000.
    w.form.Combo5 = "0";
    GroupDisplay(s, w);
    EXPECT_EQ(w.form.Combo5, "0.001");
    w.form.Combo5 = "1000";
    GroupDisplay(s, w);
    EXPECT_EQ(w.form.Combo5, "1000");
    w.form.Combo5 = "1";
    w.form.Combo6 = "0";
}

TEST_F(GroupDisplayTest, EachTypeDrawsItsRowsAndTheRedrawClearsTheOverlay) {
    w.overlay.text.push_back("fit");
    w.overlay.curveFrom = 3;
    GroupDisplay(s, w);
    EXPECT_TRUE(w.overlay.text.empty());
    EXPECT_EQ(w.overlay.curveFrom, -1);
    EXPECT_EQ(w.scene.rows, (std::vector<std::int32_t>{0}));
    ASSERT_EQ(w.scene.traces[0].size(), 256u);
    EXPECT_EQ(w.scene.traces[0][10], (PixelPoint{10, CalculateYPosition(w, w.store.At(0, 10))}));
    EXPECT_EQ(w.form.Slider1, CalculateYPosition(w, w.store.At(0, 0)));

    w.form.Combo2 = "Scaled Superimpose";
    GroupDisplay(s, w);
    EXPECT_EQ(w.scene.rows, (std::vector<std::int32_t>{1, 2}));
    w.form.Combo2 = "Individual";
    w.store.CurrentTrace = 2;
    GroupDisplay(s, w);
    EXPECT_EQ(w.scene.rows, (std::vector<std::int32_t>{2}));

    // Scale bar between 85% and 95%; a tenth of 256 points of 100 us is 2.56 ms.
    EXPECT_EQ(w.scene.barLeft, (PixelPoint{218, 7782}));
    EXPECT_EQ(w.scene.barCorner, (PixelPoint{243, 7782}));
    EXPECT_EQ(w.scene.barTop, (PixelPoint{243, 6963}));
    EXPECT_EQ(w.scene.timeLabel, "3ms");
    EXPECT_EQ(w.scene.amplitudeLabel, "6.4pA");  // 6553.6 bits of 1/1024 pA

    // An empty event table draws nothing new.
    const auto version = w.scene.version;
    s.events.SetCount(0);
    GroupDisplay(s, w);
    EXPECT_EQ(w.scene.version, version);
}

TEST_F(GroupDisplayTest, CursorsAreCaughtNearTheClickAndReadTheHeadersInterval) {
    w.form.Line1X = {10, 100};
    CursorClick(s, w, 12);  // cursors hidden: nothing is caught
    EXPECT_EQ(w.SelectedCursor, 255);
    w.form.Check1 = true;
    CursorClick(s, w, 13.5);  // within 1 + 256 / 100 points of 10
    EXPECT_EQ(w.SelectedCursor, 0);
    CursorMove(s, w, 50.7);
    EXPECT_EQ(w.form.Line1X[0], 50);
    CursorClick(s, w, 80);  // dropped
    EXPECT_EQ(w.SelectedCursor, 255);
    CursorMove(s, w, 70);
    EXPECT_EQ(w.form.Line1X[0], 50);
    CursorClick(s, w, 96.4);  // too far from 100
    EXPECT_EQ(w.SelectedCursor, 255);

    // Row 0 averages 140 and 340 at point 50 (0.234 pA), 190 and 390 at 100 (0.283 pA).
    EXPECT_EQ(w.form.lbCursor,
              "x1:5.000  y1:0.234\r\nx2:10.000  y2:0.283\r\n\xCE\x94x:-5.000  \xCE\x94y:-0.049");
    w.form.Combo2 = "Superimpose";
    EXPECT_EQ(CursorReadout(s, w),
              "x1:5.000  y1:0.000\r\nx2:10.000  y2:0.000\r\n\xCE\x94x:-5.000  \xCE\x94y:0.000");
}

TEST_F(GroupDisplayTest, RightButtonFindsTheTraceUnderTheLetterBox) {
    w.form.Combo2 = "Superimpose";
    GroupDisplay(s, w);
    // Row 2 at point 100 holds 390, row 1 holds 190: 25 pixels apart at this height.
    const std::int32_t y2 = CalculateYPosition(w, 390);
    EXPECT_EQ(HitTestTrace(w, 100, y2, 8, 12), 2);
    EXPECT_EQ(HitTestTrace(w, 100, y2 + 100, 8, 12), -1);
    EXPECT_EQ(HitTestTrace(w, 100, CalculateYPosition(w, 190), 8, 12), 1);
    // Near the left edge the box starts at 0.
    EXPECT_EQ(HitTestTrace(w, 1, CalculateYPosition(w, 290), 8, 12), 2);
    // Outside Superimpose only the current trace counts.
    w.form.Combo2 = "Individual";
    EXPECT_EQ(HitTestTrace(w, 100, y2, 8, 12), -1);
    w.store.CurrentTrace = 2;
    EXPECT_EQ(HitTestTrace(w, 100, y2, 8, 12), 2);
}

TEST_F(GroupDisplayTest, SliderMovesTheOffsetByThePixelDifference) {
    const std::int32_t row = CalculateYPosition(w, w.store.At(0, 0));
    Slider1Change(s, w, row - 30);
    EXPECT_EQ(w.form.Combo6, "30");
    EXPECT_EQ(w.form.Slider1, CalculateYPosition(w, w.store.At(0, 0)));
}

}  // namespace
}  // namespace ardel::group

namespace ardel::group {
namespace {

// Two channels: the cursors read the header's interval (half the channel's), the scale bar the
// channel's own, and each event's trace comes from its own channel.
class TwoChannelTest : public testing::GroupFixture {};

TEST_F(TwoChannelTest, CursorsReadHalfTheTimeAndEventsKeepTheirChannel) {
    std::vector<std::int16_t> a(4000), b(4000);
    for (int p = 0; p < 4000; ++p) {
        a[std::size_t(p)] = std::int16_t(p);
        b[std::size_t(p)] = std::int16_t(-p);
    }
    AbfBuildSpec spec = Spec();
    spec.sampleIntervalUs = 50;  // between multiplexed samples: 100 us a point of a channel
    spec.units = {"pA", "mV"};
    spec.scaleFactors = {0.3125f, 0.3125f};
    testing::AbfFileBuilder builder(spec, {a, b});
    testing::ScriptedDialogs open;
    open.ExpectInput("Enter Channel Number", std::nullopt, "0");
    ASSERT_TRUE(OpenDataFile(s, open, builder.Write(dir / "two.abf")));
    s.params.PeriodStartBaseline = 1000;
    w.form.Option2_0 = false;
    w.form.Option2_1 = true;
    AddEvent(10.0f).Channel = 1;
    AddEvent(20.0f);
    w.PicWidth = 256;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 0), -90);
    EXPECT_EQ(w.store.At(2, 0), 190);
    w.form.Line1X = {100, 0};
    EXPECT_TRUE(CursorReadout(s, w).starts_with("x1:5.000"));  // 100 points are 10 ms
    EXPECT_EQ(w.scene.timeLabel, "3ms");                         // 25.6 ms / 10
}

}  // namespace
}  // namespace ardel::group
