// The power spectrum by its definition (Parseval, the scale of a pure tone, the length and the
// frequency step), and the spectral window's displays on hand-made beat series.
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "hrv/interval_displays.h"
#include "hrv/spectral.h"
#include "support/scripted_dialogs.h"

namespace ardel::hrv {
namespace {

using testing::ScriptedDialogs;

Session Beats(const std::vector<float>& times) {
    Session s;
    s.Label11 = "beats.abf";
    for (float t : times) s.events.Add().Time = t;
    return s;
}

// Beat times whose intervals are the given RR series, from 0.
Session BeatsOfIntervals(const std::vector<double>& rr) {
    std::vector<float> times{0};
    double t = 0;
    for (double v : rr) times.push_back(float(t += v));
    return Beats(times);
}

TEST(AutoPowerSpectrum, ParsevalLengthAndStepForEvenAndOddLengths) {
    std::mt19937 gen(7);
    std::normal_distribution<double> noise(3.0, 2.0);
    for (const std::size_t n : {1u, 2u, 7u, 8u, 1000u, 1001u}) {
        std::vector<double> x(n);
        double meanSquare = 0;
        for (double& v : x) {
            v = noise(gen);
            meanSquare += v * v;
        }
        meanSquare /= double(n);
        const PowerSpectrum p = AutoPowerSpectrum(x, 0.25);
        ASSERT_EQ(p.power.size(), n / 2 + 1) << n;
        double total = 0;
        for (double v : p.power) total += v;
        EXPECT_NEAR(total, meanSquare, 1e-9 * meanSquare) << n;
        EXPECT_DOUBLE_EQ(p.df, 1.0 / (double(n) * 0.25));
    }
    EXPECT_TRUE(AutoPowerSpectrum({}, 1).power.empty());
}

TEST(AutoPowerSpectrum, ToneAndOffsetLandInTheirBinsWithoutDoublingDcOrNyquist) {
    // 5 + 2 cos(2 pi 3 i / 16) + 0.5 (-1)^i: DC 25, bin 3 carries A^2/2 = 2, Nyquist 0.25.
    const std::size_t n = 16;
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i)
        x[i] = 5 + 2 * std::cos(2 * std::numbers::pi * 3 * double(i) / n) + (i % 2 ? -0.5 : 0.5);
    const PowerSpectrum p = AutoPowerSpectrum(x, 1);
    EXPECT_NEAR(p.power[0], 25, 1e-12);
    EXPECT_NEAR(p.power[3], 2, 1e-12);
    EXPECT_NEAR(p.power[8], 0.25, 1e-12);
    for (std::size_t k : {1u, 2u, 4u, 5u, 6u, 7u}) EXPECT_NEAR(p.power[k], 0, 1e-12) << k;
}

TEST(HRVSpectral, PeakAtTheModulationFrequencyOfTheBeats) {
    // RR swings by 40 ms around 800 ms once every 10 beats: 0.1 cycles per beat, which at one
    // sample per mean interval of 0.8 s is 0.125 Hz.
    std::vector<double> rr;
    for (int i = 0; i < 400; ++i) rr.push_back(800 + 40 * std::sin(2 * std::numbers::pi * 0.1 * i));
    Session s = BeatsOfIntervals(rr);
    HrvSpectralForm f;
    f.options.RRUBound = "2000";
    f.options.RRLBound = "300";
    f.options.RRBinSize = "10";
    for (const char* window : {"Hanning", "Blackman", "Flat Top", "Tapered Cosine", "none"}) {
        f.options.Windowing = window;
        ScriptedDialogs ui;
        HRVSpectral_Command1(s, ui, f);
        const GraphModel& g = *f.CWGraph1;
        ASSERT_EQ(g.PointCount(), 201) << window;
        EXPECT_EQ(g.GraphTitle, "Power Spectral Density (FFT)");
        // The mean is not taken away, so its leakage fills the lowest bins (the tapered cosine
        // window's side lobes reach furthest); from 0.05 Hz on the largest value is the swing's.
        int best = 17;
        for (int k = best; k <= g.PointCount(); ++k)
            if (g.Point(1, k).y > g.Point(1, best).y) best = k;
        EXPECT_NEAR(g.Point(1, best).x, 0.125, 0.5 * double(g.Point(1, 2).x)) << window;
    }
}

TEST(HRVSpectral, DisplaysOfAHandMadeSeries) {
    // Intervals 50, 60, 40, 100, 40: 100 is not below the upper bound of 100 and drops out, so
    // the series is 50 60 40 40 and the delta series 10 -20 0.
    Session s = Beats({0, 50, 110, 150, 250, 290});
    HrvSpectralForm f;
    f.options.RRBinSize = "10";
    f.options.DeltaRRBinSize = "10";
    ScriptedDialogs ui;
    HRVSpectral_Command1(s, ui, f);

    const GraphModel& rr = *f.Graph1;
    EXPECT_EQ(rr.GraphTitle, "RR Interval Frequency Histogram  beats.abf bin size=10");
    EXPECT_EQ(rr.LeftTitle, "#");
    EXPECT_EQ(rr.BottomTitle, "RR Interval (msec)");
    // Bins from 0 (the lowest is never tracked) to 60.
    ASSERT_EQ(rr.PointCount(), 7);
    const float rrCounts[] = {0, 0, 0, 0, 2, 1, 1};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(rr.Point(1, i + 1).x, 10.0f * float(i));
        EXPECT_EQ(rr.Point(1, i + 1).y, rrCounts[i]);
    }
    const GraphModel& delta = *f.Graph2;
    EXPECT_EQ(delta.BottomTitle, "Delta RR Interval (msec)");
    ASSERT_EQ(delta.PointCount(), 4);  // bins -20, -10, 0, 10
    EXPECT_EQ(delta.Point(1, 1).x, -20.0f);
    const float deltaCounts[] = {1, 0, 1, 1};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(delta.Point(1, i + 1).y, deltaCounts[i]);

    const GraphModel& tacho = *f.Picture2;
    EXPECT_EQ(tacho.GraphTitle, "     Tachogram - Mean RR(ms):48 ms");  // 47.5 rounds up
    EXPECT_EQ(tacho.LeftTitle, "RR(ms)");
    EXPECT_EQ(tacho.BottomTitle, "Beat#");
    ASSERT_EQ(tacho.PointCount(), 4);
    EXPECT_EQ(tacho.Point(1, 4).x, 4.0f);
    EXPECT_EQ(tacho.Point(1, 4).y, 40.0f);

    // Blackman of 4 points is 0, 0.34, 1, 0.34 times the series; dt = 47.5 ms.
    const GraphModel& spectrum = *f.CWGraph1;
    ASSERT_EQ(spectrum.PointCount(), 3);
    EXPECT_NEAR(spectrum.Point(1, 2).x, 1 / (4 * 0.0475), 1e-3);
    const double w1 = 60 * 0.34, w2 = 40.0, w3 = 40 * 0.34;
    const double dc = (w1 + w2 + w3) / 4;
    EXPECT_NEAR(spectrum.Point(1, 1).y, dc * dc, 1e-2);
    EXPECT_NEAR(spectrum.Point(1, 3).y, std::pow((-w1 + w2 - w3) / 4, 2), 1e-2);
}

TEST(HRVSpectral, BadInputEndsWithAMessageOrNothingNeverNaN) {
    HrvSpectralForm f;
    {
        Session none = Beats({});
        ScriptedDialogs ui;  // no events: nothing at all
        HRVSpectral_Command1(none, ui, f);
        EXPECT_EQ(f.CWGraph1->PointCount(), 0);
    }
    Session good = Beats({0, 50, 110, 150});
    {
        ScriptedDialogs ui;
        HRVSpectral_Command1(good, ui, f);
        EXPECT_EQ(f.CWGraph1->PointCount(), 2);
    }
    {
        // Bounds that accept one interval, then none: the displays empty and one message.
        Session one = Beats({0, 50, 500});
        ScriptedDialogs ui;
        ui.ExpectMessage(std::string(kTooFewTitle), std::string(kTooFewText));
        HRVSpectral_Command1(one, ui, f);
        EXPECT_EQ(f.Graph1->PointCount(), 0);
        EXPECT_EQ(f.Picture2->PointCount(), 0);
        EXPECT_EQ(f.CWGraph1->PointCount(), 0);
        EXPECT_EQ(f.CWGraph1->GraphTitle, "Power Spectral Density (FFT)");
        f.options.RRUBound = "abc";
        ui.ExpectMessage(std::string(kTooFewTitle), std::string(kTooFewText));
        HRVSpectral_Command1(good, ui, f);
        f.options.RRUBound = "100";
    }
    {
        // Too many bins in the delta histogram: the RR histogram is already new, the rest old.
        ScriptedDialogs ui;
        HRVSpectral_Command1(good, ui, f);
        const auto spectrumDraws = f.CWGraph1->DrawCount();
        f.options.DeltaRRBinSize = "0.0001";
        f.options.RRBinSize = "5";
        ui.ExpectMessage("Too many bins", "Too many bins!  Please readjust the bin size and try again.");
        HRVSpectral_Command1(good, ui, f);
        EXPECT_EQ(f.Graph1->PointCount(), 13);
        EXPECT_EQ(f.CWGraph1->DrawCount(), spectrumDraws);
        f.options.DeltaRRBinSize = "0";
        ui.ExpectMessage("Ardelvantine", "Division by zero");
        HRVSpectral_Command1(good, ui, f);
    }
}

TEST(HRVSpectral, UnsortedBeatsAndPausesFollowTheTableOrder) {
    // A pause of 90 ms within the bounds is one sample like any other, and a beat out of order
    // gives a negative interval that the lower bound drops; the next one moves up a place.
    Session s = Beats({0, 30, 120, 100, 140});
    const IntervalSeries a = AcceptIntervals(s.events, 100, 10);
    EXPECT_EQ(a.rr, (std::vector<float>{30, 90, 40}));
    EXPECT_EQ(a.highest, 90.0f);
    EXPECT_DOUBLE_EQ(a.Mean(), 160.0 / 3);
    // With a negative lower bound the negative interval stays, below the RR histogram's bins.
    HrvSpectralForm f;
    f.options.RRLBound = "-100";
    ScriptedDialogs ui;
    ui.ExpectMessage("Ardelvantine", "Subscript out of range");
    HRVSpectral_Command1(s, ui, f);
}

TEST(HRVSpectral, SpinButtonsHalveAndDoubleTheShownMaximum) {
    GraphModel g;
    g.SetPointCount(3);
    g.AddPoint(0, 1);
    g.AddPoint(0.5f, 4);
    g.AddPoint(1, 2);
    SpinAxisMaximum(g, true, false);
    EXPECT_EQ(g.XAxisStyleFlag, kAxisUserDefined);
    EXPECT_DOUBLE_EQ(g.XAxisMaximum, 0.5);
    SpinAxisMaximum(g, true, false);
    EXPECT_DOUBLE_EQ(g.XAxisMaximum, 0.25);
    SpinAxisMaximum(g, true, true);
    EXPECT_DOUBLE_EQ(g.XAxisMaximum, 0.5);
    SpinAxisMaximum(g, false, true);
    EXPECT_DOUBLE_EQ(g.YAxisMaximum, 2 * g.AutoYMaximum());
    // An empty display still gets an axis that moves.
    GraphModel empty;
    SpinAxisMaximum(empty, false, true);
    EXPECT_DOUBLE_EQ(empty.YAxisMaximum, 2);
}

}  // namespace
}  // namespace ardel::hrv
