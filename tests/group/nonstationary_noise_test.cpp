#include "group/nonstationary_noise.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "graph/graph_model.h"
#include "analysis_fixture.h"
#include "support/scripted_dialogs.h"

namespace ardel::group {
namespace {

using ardel::testing::ScriptedDialogs;

constexpr int kPoints = 1024;

// Open probability of each of the channels: 0 before point 100, then a rise (5 points) and a
// decay (200 points) to a peak near 0.7.
double OpenProbability(int k) {
    if (k < 100) return 0;
    const double t = k - 100;
    return 0.8 * std::exp(-t / 200) * (1 - std::exp(-t / 5));
}

// `traces` responses of `channels` channels of unitary current -unitary (inward), each point a
// binomial draw: the mean is -i N p and the variance i^2 N p (1 - p) = i |I| - I^2 / N.
std::vector<std::vector<std::int16_t>> BinomialEnsemble(int traces, int channels, double unitary,
                                                        std::uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<std::vector<std::int16_t>> out(static_cast<std::size_t>(traces),
                                               std::vector<std::int16_t>(kPoints));
    for (auto& trace : out) {
        for (int k = 0; k < kPoints; ++k) {
            std::binomial_distribution<int> open(channels, OpenProbability(k));
            trace[std::size_t(k)] = ToSamples(-unitary * open(rng));
        }
    }
    return out;
}

class NoiseTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ScaleRecording(s, 100);
        w.form.Combo4 = "4";
        w.form.Combo21 = "Macroscopic Currents";
        w.form.Combo18 = "All";
        w.form.Text5 = "1e-10";
        w.form.Combo11 = "20000";
    }
    Session s;
    GroupWindow w;
    ScriptedDialogs ui;
};

TEST_F(NoiseTest, RecoversUnitaryCurrentAndChannelCount) {
    // 400 traces: each point's variance is known to sqrt(2/400) = 7 %; about 60 bins spread
    // that over the parabola, so i (the slope at small currents) comes out within a few per
    // cent and N (the curvature) within about 10 %.
    const double i = 2.0;
    const int n = 60;
    FillStore(w.store, BinomialEnsemble(400, n, i, 7));
    NonStationaryNoiseAnalysis(s, ui, w);
    ASSERT_EQ(s.results.rows.size(), 1u);
    const ResultRow& row = s.results.rows[0];
    EXPECT_EQ(row.Identifier, "cell.abf G1 NSNA");
    EXPECT_NEAR(row.Values[0], i, 0.05 * i);
    EXPECT_NEAR(row.Values[1], n, 0.1 * n);
    // The peak of the mean current and the open probability at it (the channels' peak
    // probability, 0.7, within the errors of i and N).
    const double peakP = 0.8 * std::exp(-std::log(41.0) * 5 / 200) * (1 - 1 / 41.0);
    EXPECT_NEAR(row.Values[2], -i * n * peakP, 0.05 * i * n);
    EXPECT_NEAR(row.Values[4], peakP, 0.1);
    EXPECT_GT(row.Values[5], 0.9f);
    EXPECT_EQ(w.form.Command18, "Start");

    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& g = *s.graphs[0];
    EXPECT_EQ(g.GraphTitle, "Variance-Current Plot");
    EXPECT_EQ(g.BottomTitle, "Amplitude");
    EXPECT_EQ(g.LeftTitle, "Variance");
    EXPECT_EQ(g.SetCount(), 2);
    EXPECT_EQ(w.overlay.text.front(), "Non-Stationary Noise Analysis");
    EXPECT_EQ(w.overlay.text[1].substr(0, 18), "Unitary Current = ");

    // The copy of the plot: ATF header and the column names with the standard error.
    CopyVarianceMeanPlotData(s, ui, w);
    EXPECT_EQ(ui.clipboard.substr(0, 14), "ATF\t1.0\r\n3\t5\r\n");
    EXPECT_NE(ui.clipboard.find("\"Amp(Fit)\"\t\"Fit\"\t\"Norm Amp\"\t\"Norm Var\"\t\"Std Error\""),
              std::string::npos);
}

TEST_F(NoiseTest, BinsHoldMeanVariancesAndSkipWhatTheDecayJumps) {
    // Every trace: 0 at rest, a plateau of 100 units, then 40, then 20, then back to 0; the
    // deviations alternate by trace so that each level has a known variance.
    std::vector<std::vector<std::int16_t>> traces;
    for (int j = 0; j < 4; ++j) {
        std::vector<std::int16_t> t(kPoints, 0);
        const double sign = j % 2 ? 1 : -1;
        for (int k = 100; k < 110; ++k) t[std::size_t(k)] = ToSamples(-100 + sign * 1.0);
        for (int k = 110; k < 130; ++k) t[std::size_t(k)] = ToSamples(-40 + sign * 2.0);
        for (int k = 130; k < 150; ++k) t[std::size_t(k)] = ToSamples(-20 + sign * 3.0);
        traces.push_back(t);
    }
    FillStore(w.store, traces);
    w.form.Text4 = "10";
    const NoiseBins b = BinNoise(s, w.form, w.store, {});
    // The plateau at 100 % falls into bin 0 (and the peak point into bin 1), 40 % into bin 6,
    // 20 % into bin 8; the bins between are skipped and not plotted.
    ASSERT_EQ(b.current.size(), 4u);
    EXPECT_EQ(b.BinCount[2], 0);
    EXPECT_EQ(b.BinCount[7], 0);
    // A bin's plotted variance is the mean over its entries, not their sum: the 40-unit level
    // has variance 4 however many points it spans.
    EXPECT_NEAR(b.current[2], -40, 1e-4);
    EXPECT_NEAR(b.variance[2], 4, 1e-3);
    EXPECT_NEAR(b.current[3], -20, 1e-4);
    EXPECT_NEAR(b.variance[3], 9, 1e-3);
    EXPECT_NEAR(b.variance[0], 1, 1e-3);
}

TEST_F(NoiseTest, WindowLongerThanTheTracesIsCutButDividedByItsSize) {
    std::vector<std::int16_t> a(kPoints, ToSamples(1)), c(kPoints, ToSamples(3));
    FillStore(w.store, {a, c});
    w.form.Combo18 = "5";
    const NoiseBins b = BinNoise(s, w.form, w.store, {});
    // Mean (1 + 3) / 5 = 0.8: deviations 0.2 and 2.2, mean square (0.04 + 4.84) / 2.
    EXPECT_NEAR(b.BaseVariance, 2.44, 1e-4);
}

TEST_F(NoiseTest, MessagesForTooLittleDataAndInterrupt) {
    FillStore(w.store, {std::vector<std::int16_t>(kPoints, 0)});
    ui.ExpectMessage("Non-Stationary Noise Analysis",
                     "At least two traces are needed for the variance.");
    NonStationaryNoiseAnalysis(s, ui, w);

    // Flat traces: no decay to bin.
    FillStore(w.store, {std::vector<std::int16_t>(kPoints, 5), std::vector<std::int16_t>(kPoints, 5)});
    ui.ExpectMessage("Non-Stationary Noise Analysis",
                     "Too few amplitude bins were filled to fit the variance-current relationship.");
    NonStationaryNoiseAnalysis(s, ui, w);
    w.form.Text4 = "0";
    ui.ExpectMessage("Non-Stationary Noise Analysis");
    NonStationaryNoiseAnalysis(s, ui, w);
    EXPECT_TRUE(s.results.rows.empty());

    // A click during the binning ends the run before the plot.
    w.form.Text4 = "100";
    FillStore(w.store, BinomialEnsemble(20, 60, 2.0, 3));
    bool clicked = false;
    ui.onYield = [&] {
        if (!clicked) NoiseButton(s, ui, w);
        clicked = true;
    };
    NoiseButton(s, ui, w);
    EXPECT_TRUE(s.results.rows.empty());
    EXPECT_TRUE(s.graphs.empty());
    EXPECT_EQ(w.form.Command18, "Start");
}

TEST_F(NoiseTest, AutoRejectionListsTheOutlierAndRegroups) {
    auto traces = BinomialEnsemble(30, 60, 2.0, 11);
    // Trace 3 carries a large artefact after the peak.
    for (int k = 300; k < 310; ++k) traces[2][std::size_t(k)] = ToSamples(-150);
    FillStore(w.store, traces);
    for (int e = 1; e <= 30; ++e) s.events.Add().GroupNumber = 1;
    for (int j = 1; j <= 30; ++j) w.store.TraceEvent[std::size_t(j)] = std::int16_t(j);
    w.form.Check12 = true;
    w.form.Combo30 = "95";
    ui.ExpectAsk("Auto-rejection",
                 "Found 1 events that qualify the automatic rejection criterion.  The following "
                 "is the list of events:3,.  Would you like to remove these events from this "
                 "group?  After events are rejected, you need to display the group again in "
                 "Display tab and then press the Start button to reanalyze.",
                 Answer::Yes);
    NonStationaryNoiseAnalysis(s, ui, w);
    EXPECT_EQ(s.events[3].GroupNumber, 0);
    EXPECT_EQ(s.events[4].GroupNumber, 1);
}

TEST(NoiseFit, ParabolaThroughExactPoints) {
    // Exact points of i = 1.5, N = 30, offset 2: the simplex finds them from its fixed start.
    std::vector<double> x, y;
    for (int k = 1; k <= 40; ++k) {
        const double current = -k;
        x.push_back(current);
        y.push_back(1.5 * k - double(k) * k / 30 + 2);
    }
    const ParabolaFit fit = FitParabola(x, y, true, 1e-12, 50000, {});
    EXPECT_NEAR(fit.i, 1.5, 1e-2);
    EXPECT_NEAR(fit.N, 30, 0.5);
    EXPECT_NEAR(fit.Offset, 2, 0.1);
    EXPECT_GT(fit.r2, 0.9999);
    // The iteration limit stops the search at once with the start vertex's parameters.
    EXPECT_EQ(FitParabola(x, y, false, 1e-12, 0, {}).iterations, 0);
}

}  // namespace
}  // namespace ardel::group
