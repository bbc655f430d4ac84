// The decay fit on synthetic decays with known time constants, checked against the truth and
// against an independent least-squares optimum, and the search's rules at their edges.
#include "group/curve_fitting.h"

#include <boost/math/tools/minima.hpp>
#include <gtest/gtest.h>

#include "fit_rig.h"

namespace ardel::group {
namespace {

using ardel::testing::Decay;
using ardel::testing::DecayTrace;
using ardel::testing::kPeak;
using ardel::testing::kPointMs;

struct Rig {
    Session s;
    FitSettings settings;
    Rig(int exponentials) {
        ardel::testing::SetUpRecording(s);
        settings.numberExponential = exponentials;
        settings.nMax = 20000;
        settings.fTol = 1e-9;
        settings.measure.pol = -1;
        settings.measure.interval = 100;
        settings.measure.periodStartBaseline = 6000;
        settings.measure.periodBaselineAverage = 2000;
        settings.measure.periodToSearchMax = 10000;
    }
    TraceFit Fit(const std::vector<std::int16_t>& trace) const {
        return FitTrace(trace, settings, s.recording);
    }
};

// Sum of squares of a sum of exponentials (pA, ms) against the trace from the peak on, both
// relative to the trace's measured baseline.
double Sse(const std::vector<std::int16_t>& trace, const std::vector<std::pair<double, double>>& ampTau,
           double offset = 0, int base = 0) {
    double sse = 0;
    for (std::size_t i = kPeak; i < trace.size(); ++i) {
        const double t = double(i - kPeak) * kPointMs;
        double m = offset;
        for (auto [a, tau] : ampTau) m += a * std::exp(-t / tau);
        const double d = m - (trace[i] - base) * 0.1;
        sse += d * d;
    }
    return sse;
}

// The least-squares optimum of one exponential: for each tau the best amplitude is linear, and
// Brent's method finds the tau.
std::pair<double, double> OneExponentialOptimum(const std::vector<std::int16_t>& trace, int base) {
    auto bestAmp = [&](double tau) {
        double sy = 0, ss = 0;
        for (std::size_t i = kPeak; i < trace.size(); ++i) {
            const double e = std::exp(-double(i - kPeak) * kPointMs / tau);
            sy += e * (trace[i] - base) * 0.1;
            ss += e * e;
        }
        return sy / ss;
    };
    auto r = boost::math::tools::brent_find_minima(
        [&](double tau) { return Sse(trace, {{bestAmp(tau), tau}}, 0, base); }, 0.5, 50.0, 40);
    return {bestAmp(r.first), r.first};
}

TEST(CurveFitting, OneExponentialMatchesTheLeastSquaresOptimum) {
    Rig rig(1);
    // Without noise the only error is the rounding to whole bits: 0.1% is far above it. With
    // 20 bits of noise on 1000 the optimum itself scatters, but the search must still find it.
    for (double noise : {0.0, 20.0}) {
        const auto trace = DecayTrace(1024, {{-1000, 5.0}}, 0, noise);
        const TraceFit f = rig.Fit(trace);
        const int base = f.measure.Base;
        const auto [amp, tau] = OneExponentialOptimum(trace, base);
        // The objective is flat near its optimum under noise: the search must reach the
        // optimum's sum of squares, and its parameters lie within 1% of the optimum's.
        const double best = Sse(trace, {{amp, tau}}, 0, base);
        EXPECT_LE(Sse(trace, {{f.params[1], f.params[0]}}, 0, base), best * (1 + 1e-6)) << "noise " << noise;
        EXPECT_NEAR(f.params[0], tau, 1e-3 * tau);
        EXPECT_NEAR(f.params[1], amp, 1e-3 * std::abs(amp));
        EXPECT_NEAR(f.params[0], 5.0, noise > 0 ? 0.15 : 0.01);
        EXPECT_NEAR(f.params[1], -100.0, noise > 0 ? 2.0 : 0.2);
        EXPECT_GT(*f.rSquared, noise > 0 ? 0.95 : 0.9999);
    }
}

TEST(CurveFitting, TwoAndThreeExponentialsRecoverTheirTimeConstants) {
    {
        Rig rig(2);
        const auto trace = DecayTrace(2048, {{-600, 2.0}, {-400, 20.0}}, 0, 5.0);
        const TraceFit f = rig.Fit(trace);
        // Taus a decade apart with comparable amplitudes are well determined: 3% holds with
        // this noise (5 bits on 1000).
        const bool fastFirst = f.params[0] < f.params[2];
        const float fast = fastFirst ? f.params[0] : f.params[2];
        const float slow = fastFirst ? f.params[2] : f.params[0];
        EXPECT_NEAR(fast, 2.0, 0.06);
        EXPECT_NEAR(slow, 20.0, 0.6);
        // The search reaches at least the fit of the true parameters.
        EXPECT_LE(f.SSE, Sse(trace, {{-60, 2.0}, {-40, 20.0}}, 0, f.measure.Base) * 1.0001);
    }
    {
        // Three components need starting values near them (the user's guesses): from the
        // window's own start the simplex collapses two taus onto one.
        Rig rig(3);
        rig.settings.nMax = 6000;
        rig.settings.fTol = 1e-12;
        rig.settings.useGuess = true;
        rig.settings.tauGuess = {0.7f, 12.0f, 40.0f};
        rig.settings.ampGuess = {-40.0f, -40.0f, -20.0f};
        const auto trace = DecayTrace(2048, {{-500, 1.0}, {-300, 8.0}, {-200, 60.0}});
        const TraceFit f = rig.Fit(trace);
        std::vector<float> taus{f.params[0], f.params[2], f.params[4]};
        std::sort(taus.begin(), taus.end());
        // Three components are poorly conditioned; 10% on each tau, and the fit as good as the
        // truth's within the rounding of the samples.
        EXPECT_NEAR(taus[0], 1.0, 0.1);
        EXPECT_NEAR(taus[1], 8.0, 0.8);
        EXPECT_NEAR(taus[2], 60.0, 6.0);
        EXPECT_LE(f.SSE, Sse(trace, {{-50, 1.0}, {-30, 8.0}, {-20, 60.0}}) * 1.05);
    }
}

TEST(CurveFitting, OffsetAndAllEightStartVerticesWithThreeExponentials) {
    Rig rig(3);
    rig.settings.includeOffset = true;
    rig.settings.nMax = 6000;
    rig.settings.fTol = 1e-12;
    ASSERT_EQ(rig.settings.NDim(), 7);
    const auto trace = DecayTrace(2048, {{-500, 1.0}, {-300, 8.0}, {-200, 60.0}}, -100);
    const TraceFit f = rig.Fit(trace);
    EXPECT_GT(f.NFunk, 0);
    EXPECT_LE(f.SSE, Sse(trace, {{-50, 1.0}, {-30, 8.0}, {-20, 60.0}}, -10) * 1.5);
    EXPECT_NEAR(f.params[6], -10.0, 1.5);
}

TEST(CurveFitting, MeasuresThePeakBaselineAndDecayPoints) {
    Rig rig(1);
    const auto trace = DecayTrace(1024, {{-1000, 5.0}}, 0, 0, 7, 200);
    const TraceMeasure m = MeasureTrace(trace, rig.settings.measure, rig.s.recording);
    EXPECT_EQ(m.IPeak, kPeak);
    EXPECT_EQ(m.Base, 200);
    EXPECT_EQ(m.PeakAmp, -1000);
    // exp(-t / 5 ms) falls to 0.9 after 0.53 ms, to 0.368 after 5 ms, to 0.1 after 11.5 ms.
    EXPECT_EQ(m.D90, 6);
    EXPECT_EQ(m.D37, 50);
    EXPECT_EQ(m.D10, 115);
    EXPECT_NEAR(m.Decay9037, (50 - 6) * 0.1, 1e-9);
    // The 10-90% rise of a 5-point linear rise is 4 points.
    EXPECT_NEAR(m.Rise, 0.4, 1e-9);
    // Area: the sum of the decay's samples (a geometric series) and of the rise's four,
    // 1 bit x 1 point = 0.01 pA ms.
    EXPECT_NEAR(m.Area, -(1000 / (1 - std::exp(-0.02)) + 2000) * 0.01, 0.5);
}

TEST(CurveFitting, EdgesOfTheSearch) {
    const auto trace = DecayTrace(1024, {{-1000, 5.0}});
    {
        // NMax 0: no step at all, the lowest start vertex is the answer.
        Rig rig(1);
        rig.settings.nMax = 0;
        const TraceFit f = rig.Fit(trace);
        EXPECT_EQ(f.NFunk, 0);
        const float tau0 = float((50 - 6) * 0.1);
        const std::vector<float> startTaus{tau0, float(tau0 - tau0 / 3.0), float(tau0 + tau0 / 3.0)};
        EXPECT_NE(std::find(startTaus.begin(), startTaus.end(), f.params[0]), startTaus.end());
    }
    {
        // A trace that never comes back to 10%: D10 is 0, the range ends before it starts and
        // the search stops at once.
        Rig rig(1);
        rig.settings.fitRange = "Decay 10%-90%";
        const auto plateau = DecayTrace(1024, {{-500, 5.0}}, -500);
        const TraceFit f = rig.Fit(plateau);
        EXPECT_EQ(f.measure.D10, 0);
        EXPECT_LT(f.FitEnd, f.FitStart);
        EXPECT_EQ(f.NFunk, 0);
        EXPECT_EQ(f.SSE, 0);
    }
    {
        // Custom range with the cursors reversed: the smaller x starts.
        Rig rig(1);
        rig.settings.fitRange = "Custom Range";
        rig.settings.measure.cursor0 = 500;
        rig.settings.measure.cursor1 = 100;
        const TraceFit f = rig.Fit(trace);
        EXPECT_EQ(f.FitStart, 100);
        EXPECT_EQ(f.FitEnd, 500);
        EXPECT_NEAR(f.params[0], 5.0, 0.05);
        // The curve sits at the baseline before the range and follows the model after it.
        EXPECT_EQ(f.curve[50], 0);
        EXPECT_NEAR(f.curve[300], trace[300], 2);
    }
}

TEST(CurveFitting, FixedAmplitudeFormsDiffer) {
    // One pass of the search: the trial point of amotry2 obeys the form of its exponentials.
    FitProblem p;
    p.FitData.assign(200, 0.0f);
    for (std::size_t i = 0; i < p.FitData.size(); ++i) p.FitData[i] = float(-50 * std::exp(-0.1 * i) - 7);
    p.FitStart = 0;
    p.FitEnd = 150;
    p.dt = 0.1;
    p.numberExponential = 2;
    p.includeOffset = true;
    const float a0 = -57;
    const FitParameters start{1.0f, -30.0f, 10.0f, -20.0f, -3.0f};
    const SimplexOutcome two = Simplex(p, start, 2, 0, true, a0, {});
    // With two exponentials the data point at the range's end stands in for the offset.
    EXPECT_FLOAT_EQ(two.lastTrial[3], float(double(a0) - two.lastTrial[1] - p.FitData[150]));
    EXPECT_NE(two.lastTrial[3], float(double(a0) - two.lastTrial[1] - two.lastTrial[4]));

    p.numberExponential = 1;
    const FitParameters one{5.0f, -40.0f, -4.0f};
    const SimplexOutcome single = Simplex(p, one, 2, 0, true, a0, {});
    EXPECT_FLOAT_EQ(single.lastTrial[1], float(double(a0) - single.lastTrial[2]));
}

TEST(CurveFitting, GuessesAndAZeroTau) {
    Rig rig(1);
    rig.settings.useGuess = true;
    rig.settings.tauGuess = {0.0f, 7.0f, 8.0f};
    rig.settings.ampGuess = {-100.0f, 1.0f, 2.0f};
    rig.settings.nMax = 0;
    const auto trace = DecayTrace(1024, {{-1000, 5.0}});
    // A tau of 0 drops its term: that vertex's model is 0 and the search still answers.
    const TraceFit f = rig.Fit(trace);
    EXPECT_EQ(f.NFunk, 0);
    EXPECT_TRUE(std::isfinite(f.SSE));
}

}  // namespace
}  // namespace ardel::group
