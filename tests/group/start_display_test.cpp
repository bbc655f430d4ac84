// Cutting the traces of a group or of the episodes out of the recording: positions, the average
// with halves to even, the scaled types, baseline adjustment, the 16-bit limit, reads outside
// the data, and what the window refuses.
#include "group/group_display.h"

#include <gtest/gtest.h>

#include "core/number_text.h"
#include "group_fixture.h"

namespace ardel::group {
namespace {

using testing::GroupFixture;
using testing::PointValue;

class StartDisplayTest : public GroupFixture {};

TEST_F(StartDisplayTest, CutsEachEventAtItsPositionAndAveragesHalvesToEven) {
    OpenRamp();
    AddEvent(10.0f);                          // peak at point 100, trace from 90
    AddEvent(5.0f, 2);                        // another group: left out
    AddEvent(20.1f, 1, 201);                  // peak at 201, trace from 191
    AddEvent(30.05f, 1, 100);                 // 300.5 - 10: byte position odd, made even: 290
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.TraceCount, 3);
    EXPECT_EQ(w.store.TracePoints, 256);
    EXPECT_EQ(w.store.TraceEvent[1], 1);
    EXPECT_EQ(w.store.TraceEvent[2], 3);
    EXPECT_EQ(w.store.TraceEvent[3], 4);
    EXPECT_EQ(w.store.MeanAmplitude, 134);  // 401 / 3 = 133.67
    for (std::int32_t k = 0; k < 256; ++k) {
        ASSERT_EQ(w.store.At(1, k), PointValue(90 + k));
        ASSERT_EQ(w.store.At(2, k), PointValue(191 + k));
        ASSERT_EQ(w.store.At(3, k), PointValue(290 + k));
    }
    // (90 + 191 + 290 + 3k) / 3 = 190.33 + k.
    EXPECT_EQ(w.store.At(0, 0), 190);
    EXPECT_EQ(w.form.Label6, "Trace:  0 of 3");

    // Two traces whose sum is odd: 140.5 -> 140, 141.5 -> 142, 142.5 -> 142.
    s.events[4].GroupNumber = 0;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(0, 0), 140);
    EXPECT_EQ(w.store.At(0, 1), 142);
    EXPECT_EQ(w.store.At(0, 2), 142);

    // A group of one: the average is the trace.
    s.events[3].GroupNumber = 0;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(Row(0), Row(1));
}

TEST_F(StartDisplayTest, AlignmentMovesTheStartByTheRiseFields) {
    OpenRamp();
    EventRecord& e = AddEvent(10.0f);
    e.Rise = 7;
    e.Rise50 = 3;
    w.form.Combo3 = "Rise-time";
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 0), PointValue(83));
    w.form.Combo3 = "Rise 50";
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 0), PointValue(87));
}

TEST_F(StartDisplayTest, ScaledTypesBaselineAndTheSixteenBitLimit) {
    OpenRamp();
    AddEvent(10.0f, 1, 100, 50);   // mean amplitude (100 + 300) / 2 = 200
    AddEvent(20.0f, 1, 300, -40);
    w.form.Combo2 = "Scaled Superimpose";  // scaled even with ckBaseline off
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 0), 80);                              // 2 * (90 - 50)
    EXPECT_EQ(w.store.At(2, 1), std::int16_t(RoundHalfEven(200.0 / 300 * (191 + 40))));  // 154

    w.form.Combo2 = "Average";
    w.form.ckBaseline = true;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 0), 40);
    EXPECT_EQ(w.store.At(2, 0), 230);

    // Values beyond 16 bits stop at the limits.
    s.events[1].Baseline = -32768;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 0), 32767);
    w.form.Combo2 = "Scaled Average";
    s.events[1].Amplitude = 1;  // mean (1 + 300) / 2 = 150.5, halves to even: 150
    s.events[1].Baseline = 32767;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.MeanAmplitude, 150);
    EXPECT_EQ(w.store.At(1, 5), -32768);
    // A zero amplitude leaves its trace at 0 rather than dividing by it.
    s.events[1].Amplitude = 0;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 5), 0);
}

TEST_F(StartDisplayTest, ReadsOutsideTheDataNeverLeaveTheFile) {
    OpenRamp(2000);
    // 500 ms before the peak: the first trace would start 4900 points before the file.
    s.params.PeriodStartBaseline = 500000;
    AddEvent(10.0f);    // before the file: the read fails, the row stays 0
    AddEvent(600.0f);   // points 1000..: fine
    AddEvent(20.0f);    // before the file again: repeats the buffer of the trace before
    w.form.Combo4 = "4";
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(Row(1), std::vector<std::int16_t>(1024, 0));
    EXPECT_EQ(w.store.At(2, 0), PointValue(1000));
    EXPECT_EQ(w.store.At(2, 999), PointValue(1999));
    EXPECT_EQ(w.store.At(2, 1000), 0);  // past the end of the file
    EXPECT_EQ(Row(3), Row(2));

    // A trace beginning in the header reads the header's bytes, as it always did: no crash.
    s.params.PeriodStartBaseline = 1000;
    s.events[1].Time = 0.1f;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(1, 9), PointValue(0));
}

TEST_F(StartDisplayTest, EpisodesAreCutWholeAndStayUnscaled) {
    AbfBuildSpec spec = Spec();
    std::vector<std::int16_t> samples;
    for (int e = 0; e < 3; ++e)
        for (int k = 0; k < 512; ++k) samples.push_back(std::int16_t(1000 * (e + 1) + k));
    testing::AbfFileBuilder b(spec, {samples});
    b.header.nOperationMode = 5;
    b.header.lActualEpisodes = 3;
    b.header.lNumSamplesPerEpisode = 512;
    Open(b);
    w.form.Option2_0 = true;
    w.form.Option2_1 = false;
    w.form.Check10 = true;
    w.form.Combo2 = "Scaled Individual";
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.form.Combo4, "2");
    EXPECT_EQ(w.store.TraceCount, 3);
    EXPECT_EQ(w.store.TracePoints, 512);
    EXPECT_EQ(w.store.At(2, 7), 2007);
    EXPECT_EQ(w.store.TraceEvent[2], 0);
    EXPECT_EQ(w.store.At(0, 0), 2000);
    // Baseline: the mean of the episode's first five points (e000 + 2).
    w.form.ckBaseline = true;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.At(3, 0), -2);
    EXPECT_EQ(w.store.At(3, 511), 509);
}

TEST_F(StartDisplayTest, RefusesWhatItCannotHoldAndKeepsTheFormerStore) {
    // No recording: nothing happens.
    EXPECT_FALSE(StartDisplay(s, ui, w));
    OpenRamp();
    // An empty event table or group: no message, the store stays.
    EXPECT_FALSE(StartDisplay(s, ui, w));
    AddEvent(10.0f);
    ASSERT_TRUE(StartDisplay(s, ui, w));
    w.form.Combo1 = "7";
    EXPECT_FALSE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.TraceCount, 1);
    w.form.Combo1 = "1";

    for (const char* blocks : {"0", "abc", "40000", "-3"}) {
        w.form.Combo4 = blocks;
        ui.ExpectMessage("Blocks to Analyse");
        EXPECT_FALSE(StartDisplay(s, ui, w)) << blocks;
    }
    // Within the Blocks allowed, a store beyond the memory kept for it is refused.
    w.form.Combo4 = "32767";
    for (int i = 0; i < 200; ++i) AddEvent(10.0f);
    ui.ExpectMessage("Group Analysis");
    EXPECT_FALSE(StartDisplay(s, ui, w));
    EXPECT_TRUE(ui.Done());
}

TEST_F(StartDisplayTest, EventNumbersBeyondSixteenBitsAreRefused) {
    OpenRamp();
    for (int i = 0; i < 32768; ++i) AddEvent(10.0f, 0);
    s.events[32768].GroupNumber = 1;
    ui.ExpectMessage("Group Analysis",
                     "Event # 32768 of this group lies beyond event 32767, the last that the "
                     "group window can take. Please split the event list or regroup the events.");
    EXPECT_FALSE(StartDisplay(s, ui, w));
    // Event 32767 is still within reach.
    s.events[32768].GroupNumber = 0;
    s.events[32767].GroupNumber = 1;
    ASSERT_TRUE(StartDisplay(s, ui, w));
    EXPECT_EQ(w.store.TraceEvent[1], 32767);
}

}  // namespace
}  // namespace ardel::group
