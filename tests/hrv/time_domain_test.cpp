// The time-domain measures on hand-made RR series whose answers are worked out by hand: the
// whole-record and per-segment measures, the strict bounds, the segment rules (0.9999 ceiling,
// empty and one-interval segments, the excluded last segment), and the guards that keep a
// division by zero from showing.
#include "hrv/time_domain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/settings.h"
#include "support/scripted_dialogs.h"

namespace ardel::hrv {
namespace {

using testing::ScriptedDialogs;

EventTable Beats(const std::vector<float>& times) {
    EventTable t;
    for (float time : times) t.Add().Time = time;
    return t;
}

// 1 ms per point, so segment k holds the beats at k x points .. (k + 1) x points ms.
TimeDomainInput Input(double points, double total, RRBounds bounds = {200, 10}) {
    TimeDomainInput in;
    in.bounds = bounds;
    in.pointsPerSegment = points;
    in.totalPoints = total;
    in.sampleIntervalUs = 1000;
    return in;
}

float M(const TimeDomainResult& r, TimeDomainMeasure m) { return r.measures[std::size_t(m)]; }

// RR 100, 150, 100, 150 ending at 100 | 250, 350 | 500 ms: three segments of 250 points.
const std::vector<float> kAlternating = {0, 100, 250, 350, 500};

TEST(TimeDomain, WholeRecordMeasuresOfAnAlternatingSeries) {
    const auto r = ComputeTimeDomain(Beats(kAlternating), Input(250, 600));
    EXPECT_FLOAT_EQ(M(r, kMRR), 125);
    EXPECT_FLOAT_EQ(M(r, kSDRR), float(std::sqrt(2500.0 / 3)));
    EXPECT_FLOAT_EQ(M(r, kCV), float(100 * std::sqrt(2500.0 / 3) / 125));
    EXPECT_EQ(M(r, kNRR), 4);
    EXPECT_EQ(M(r, kNdRR), 3);
    // Signed differences 50, -50, 50.
    EXPECT_FLOAT_EQ(M(r, kMdRR), 50.0f / 3);
    EXPECT_FLOAT_EQ(M(r, kSDdRR), float(std::sqrt(10000.0 / 3)));
    EXPECT_FLOAT_EQ(M(r, kRMSSD), 50);
    // The threshold is strict: a difference of exactly 50 is not counted.
    EXPECT_EQ(M(r, kNNN), 0);
    EXPECT_EQ(M(r, kPercentNN), 0);
    auto in = Input(250, 600);
    in.thresholdDeltaRR = 49;
    const auto low = ComputeTimeDomain(Beats(kAlternating), in);
    EXPECT_EQ(M(low, kNNN), 3);
    EXPECT_FLOAT_EQ(M(low, kPercentNN), 100);
}

TEST(TimeDomain, SegmentMeasuresWithAndWithoutEmptySegments) {
    // Segments: {100}, {150, 100}, {150}; the middle one alone has an SD.
    const auto r = ComputeTimeDomain(Beats(kAlternating), Input(250, 600));
    EXPECT_EQ(M(r, kNSegment), 3);
    EXPECT_FLOAT_EQ(M(r, kMANN), 125);
    EXPECT_FLOAT_EQ(M(r, kSDANN), 25);
    const double sd1 = std::sqrt(2 * 625.0);
    // One-interval segments count in MANN but not in MSDNN.
    EXPECT_FLOAT_EQ(M(r, kMSDNN), float(sd1));
    // One segment with an SD: nSeg - thin - 1 is 0, and SDSDNN stays 0.
    EXPECT_EQ(M(r, kSDSDNN), 0);
    ASSERT_EQ(r.segments.size(), 3u);
    EXPECT_EQ(r.segments[1].nRR, 2);
    EXPECT_DOUBLE_EQ(r.segments[1].mean, 125);
    EXPECT_DOUBLE_EQ(r.segments[1].sd, sd1);
    EXPECT_DOUBLE_EQ(r.segments[2].startTime, 0.5);

    auto in = Input(250, 600);
    in.includeZero = true;
    const auto z = ComputeTimeDomain(Beats(kAlternating), in);
    const double msdnn = sd1 / 3;
    EXPECT_FLOAT_EQ(M(z, kMSDNN), float(msdnn));
    EXPECT_FLOAT_EQ(M(z, kSDSDNN),
                    float(std::sqrt(((sd1 - msdnn) * (sd1 - msdnn) + 2 * msdnn * msdnn) / 2)));

    // A segment with no interval at all: 0..1000 ms in four segments, beats only in the first two.
    const auto gap = Beats({0, 100, 200, 300, 400});
    const auto without = ComputeTimeDomain(gap, Input(250, 1000));
    EXPECT_EQ(M(without, kNSegment), 4);
    EXPECT_FLOAT_EQ(M(without, kMANN), 100);  // (100 + 100) / (4 - 2)
    in = Input(250, 1000);
    in.includeZero = true;
    EXPECT_FLOAT_EQ(M(ComputeTimeDomain(gap, in), kMANN), 50);  // (100 + 100) / 4
}

TEST(TimeDomain, ExcludedLastSegmentKeepsItsIntervalsInTheWholeRecord) {
    auto in = Input(250, 600);
    in.excludeLastSegment = true;
    const auto r = ComputeTimeDomain(Beats(kAlternating), in);
    EXPECT_EQ(M(r, kNSegment), 2);
    EXPECT_EQ(r.segments.size(), 2u);
    EXPECT_EQ(M(r, kNRR), 4);
    EXPECT_FLOAT_EQ(M(r, kMRR), 125);
    EXPECT_EQ(M(r, kNdRR), 3);
    EXPECT_FLOAT_EQ(M(r, kMANN), 112.5f);
}

TEST(TimeDomain, BoundsAreStrictAndDroppedIntervalsLeaveGaps) {
    // RR 10 (the lower bound itself, dropped), 40, 200 (the upper bound, dropped), 60.
    const auto r = ComputeTimeDomain(Beats({0, 10, 50, 250, 310}), Input(1000, 1000));
    EXPECT_EQ(M(r, kNRR), 2);
    EXPECT_FLOAT_EQ(M(r, kMRR), 50);
    // The accepted 40 and 60 are neighbours after filtering.
    EXPECT_EQ(M(r, kNdRR), 1);
    EXPECT_FLOAT_EQ(M(r, kMdRR), 0);  // one value: no statistics
    EXPECT_FLOAT_EQ(M(r, kRMSSD), 20);
}

TEST(TimeDomain, NothingToMeasureGivesZerosAndNoNaN) {
    for (const auto& times : {std::vector<float>{5}, std::vector<float>{0, 500, 1000}}) {
        const auto r = ComputeTimeDomain(Beats(times), Input(250, 600));
        for (int m = 0; m < kTimeDomainMeasures; ++m) {
            EXPECT_TRUE(std::isfinite(r.measures[std::size_t(m)])) << m;
            if (m != kNSegment) {
                EXPECT_EQ(r.measures[std::size_t(m)], 0) << m;
            }
        }
    }
    // One segment, excluded: no segment is left, and nothing divides by it.
    auto in = Input(1000, 600);
    in.excludeLastSegment = true;
    const auto none = ComputeTimeDomain(Beats(kAlternating), in);
    EXPECT_EQ(M(none, kNSegment), 0);
    EXPECT_EQ(M(none, kMANN), 0);
    EXPECT_EQ(M(none, kSDANN), 0);
    EXPECT_TRUE(none.segments.empty());
}

TEST(TimeDomain, SegmentCountCeilingAndLimits) {
    // A total just past a multiple of the segment adds no segment; a little more does.
    EXPECT_EQ(M(ComputeTimeDomain(Beats({0}), Input(30000, 60002)), kNSegment), 2);
    EXPECT_EQ(M(ComputeTimeDomain(Beats({0}), Input(30000, 60004)), kNSegment), 3);
    EXPECT_FALSE(SegmentCountProblem(600, 0).empty());
    EXPECT_FALSE(SegmentCountProblem(600, -5).empty());
    EXPECT_FALSE(SegmentCountProblem(1e9, 1).empty());
    EXPECT_TRUE(SegmentCountProblem(1e9, 1000).empty());
    // A beat past the recording's end counts in the whole record but in no segment.
    const auto r = ComputeTimeDomain(Beats({0, 100, 900}), Input(250, 500, {1000, 10}));
    EXPECT_EQ(M(r, kNRR), 2);
    EXPECT_EQ(r.segments[0].nRR, 1);
    EXPECT_EQ(r.segments[1].nRR, 0);
}

struct HrvWindow : ::testing::Test {
    Session s;
    HrvForm f;
    ScriptedDialogs ui;
    void SetUp() override {
        s.recording.FileIsOpen = true;
        s.recording.SampleInterval = 1000;
        s.recording.header.nADCNumChannels = 1;
        s.recording.header.lActualAcqLength = 600;
        s.Label11 = "cell.abf";
        f.Combo2 = "200";
        f.Text1 = "250";
        for (float t : {250.0f, 0.0f, 100.0f, 350.0f, 500.0f}) s.events.Add().Time = t;
    }
};

TEST_F(HrvWindow, StartAnalysisAsksToSortAndAddsOneRowEachTime) {
    ui.ExpectAsk("Sort Events", std::nullopt, Answer::No);
    HRV_Command1(s, ui, f);
    // Unsorted: -250 and 250 fall outside the bounds, 100 and 150 are used.
    ASSERT_EQ(f.TDBGrid1.size(), 1u);
    EXPECT_EQ(f.TDBGrid1[0].values[kNRR], 2);
    ui.ExpectAsk("Sort Events", std::nullopt, Answer::Yes);
    HRV_Command1(s, ui, f);
    ASSERT_EQ(f.TDBGrid1.size(), 2u);
    EXPECT_EQ(f.TDBGrid1[1].FileName, "cell.abf");
    EXPECT_FLOAT_EQ(f.TDBGrid1[1].values[kMRR], 125);
    EXPECT_EQ(f.TDBGrid2.size(), 3u);

    const std::string text = TimeDomainGridText(f);
    EXPECT_EQ(text.substr(0, text.find("\r\n")),
              "File Name\tMRR\tSDRR (CLV)\tCV%\tMANN\tSDANN\tMSDNN\tSDSDNN\tn RR\tn dRR\tnSegment\t"
              "MdRR\tSDdRR\trMSSD\t%NN\tnNN\t");
    EXPECT_NE(text.find("cell.abf\t 125\t"), std::string::npos);
    EXPECT_EQ(SegmentGridText(f).find("Seg #\tTime (s)\tn RR\tMean RR\tStd RR\t\r\n 0\t 0\t 1\t 100\t 0\t\r\n"), 0u);
    EXPECT_TRUE(ui.Done());
}

TEST_F(HrvWindow, ZeroSegmentLengthIsRefusedBeforeAnyRow) {
    f.Text1 = "0";
    ui.ExpectMessage("Segments");
    HRV_Command1(s, ui, f);
    EXPECT_TRUE(f.TDBGrid1.empty());
    s.events.SetCount(0);
    f.Text1 = "250";
    HRV_Command1(s, ui, f);  // no events: nothing asked
    EXPECT_TRUE(f.TDBGrid1.empty());
}

TEST_F(HrvWindow, OptionsRoundTripThroughTheSettingsFile) {
    const auto ini = std::filesystem::path(::testing::TempDir()) / "hrv_options.ini";
    std::filesystem::remove(ini);
    HrvForm fresh;
    LoadIniSettings(fresh, ini);  // no file: the defaults
    EXPECT_EQ(fresh.Combo2, "100");
    EXPECT_EQ(fresh.Text1, "30000");
    f.Check2 = true;
    ui.ExpectMessage("Settings Saved", "The settings are saved into Ardelvan.ini file.");
    HRV_Command2(ui, f, ini);
    LoadIniSettings(fresh, ini);
    EXPECT_EQ(fresh.Combo2, "200");
    EXPECT_EQ(fresh.Text1, "250");
    EXPECT_FALSE(fresh.Check1);
    EXPECT_TRUE(fresh.Check2);
    // A flag that is neither a Boolean nor a number is no default in disguise.
    WritePrivateProfileString("HRV", "IncludeZero", "maybe", ini);
    EXPECT_THROW(LoadIniSettings(fresh, ini), SettingsError);
}

}  // namespace
}  // namespace ardel::hrv
