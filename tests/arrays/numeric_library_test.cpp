// The special functions against Boost.Math over wide argument ranges. Each test prints the
// largest relative error it met, so the agreement can be read off the test log.
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "arrays/numeric_library.h"

namespace ardel {
namespace {

// n values spread evenly in log scale over [low, high].
std::vector<double> LogGrid(double low, double high, int n) {
    std::vector<double> v;
    for (int i = 0; i < n; ++i) v.push_back(low * std::pow(high / low, double(i) / (n - 1)));
    return v;
}

struct Worst {
    double error = 0;
    std::string where;
    void Take(double err, const std::string& at) {
        if (err > error || std::isnan(err)) {
            error = std::isnan(err) ? std::numeric_limits<double>::infinity() : err;
            where = at;
        }
    }
    void Report(const std::string& what) const {
        std::cout << "[agreement] " << what << ": max error " << error << " at " << where
                  << "\n";
    }
};

double Relative(double ours, double ref) {
    return ref == 0 ? std::fabs(ours) : std::fabs(ours - ref) / std::fabs(ref);
}

TEST(NumericLibrary, LogGammaAgreesWithBoost) {
    Worst away, nearRoots;
    for (double x : LogGrid(1E-3, 1E6, 4000)) {
        const double ref = boost::math::lgamma(x);
        const std::string at = "x=" + std::to_string(x);
        // Around the roots at 1 and 2 the value itself goes to 0: judge the absolute error there.
        if (std::fabs(ref) < 0.5) {
            nearRoots.Take(std::fabs(LogGamma(x) - ref), at);
        } else {
            away.Take(Relative(LogGamma(x), ref), at);
        }
    }
    away.Report("LogGamma, x in [1E-3, 1E6] with |lgamma| >= 0.5");
    nearRoots.Report("LogGamma (absolute), |lgamma| < 0.5");
    EXPECT_LT(away.error, 1E-9) << away.where;
    EXPECT_LT(nearRoots.error, 1E-9) << nearRoots.where;
    // Exact values: lgamma(1) = lgamma(2) = 0, gamma(0.5) = sqrt(pi).
    EXPECT_NEAR(LogGamma(1), 0, 1E-10);
    EXPECT_NEAR(LogGamma(2), 0, 1E-10);
    EXPECT_NEAR(LogGamma(0.5), 0.5 * std::log(M_PI), 1E-10);
    EXPECT_FALSE(std::isfinite(LogGamma(0)));
}

TEST(NumericLibrary, IncompleteBetaAgreesWithBoostInBothTails) {
    Worst small, large, tails;
    const std::vector<double> xs = {1E-6, 1E-3, 0.01, 0.1, 0.25, 0.5, 0.75, 0.9, 0.99, 0.999};
    for (double a : LogGrid(0.05, 1000, 40)) {
        for (double b : LogGrid(0.05, 1000, 40)) {
            for (double x : xs) {
                const double ref = boost::math::ibeta(a, b, x);
                const double ours = IncompleteBeta(a, b, x);
                const std::string at = "a=" + std::to_string(a) + " b=" + std::to_string(b) +
                                       " x=" + std::to_string(x);
                // Absolute agreement everywhere; relative where the value is not in a far tail
                // (a tail value computed as 1 minus something near 1 keeps only its absolute
                // accuracy, by construction).
                tails.Take(std::fabs(ours - ref), at);
                if (ref > 1E-3 && ref < 1 - 1E-3) (std::max(a, b) <= 100 ? small : large).Take(Relative(ours, ref), at);
            }
        }
    }
    small.Report("IncompleteBeta, a,b in [0.05, 100], 1E-3 < I < 1 - 1E-3");
    large.Report("IncompleteBeta, a or b in (100, 1000], 1E-3 < I < 1 - 1E-3");
    tails.Report("IncompleteBeta (absolute), a,b in [0.05, 1000], all x");
    EXPECT_LT(small.error, 1E-5) << small.where;
    EXPECT_LT(large.error, 1E-4) << large.where;
    EXPECT_LT(tails.error, 1E-5) << tails.where;
}

TEST(NumericLibrary, IncompleteBetaEndsAndOutsideTheInterval) {
    EXPECT_EQ(IncompleteBeta(2, 3, -0.1), 0);
    EXPECT_EQ(IncompleteBeta(2, 3, 1.1), 0);
    EXPECT_EQ(IncompleteBeta(2, 3, 0), 0);
    EXPECT_EQ(IncompleteBeta(2, 3, 1), 1);
    // I_x(1, 1) = x; I_0.5(a, a) = 0.5 by symmetry.
    EXPECT_NEAR(IncompleteBeta(1, 1, 0.3), 0.3, 1E-7);
    EXPECT_NEAR(IncompleteBeta(7.5, 7.5, 0.5), 0.5, 1E-7);
    // Far beyond what 100 rounds resolve the fraction stops at its limit with a finite value.
    EXPECT_TRUE(std::isfinite(BetaContinuedFraction(1E7, 1E7, 0.5)));
}

TEST(NumericLibrary, GammaQAgreesWithBoost) {
    Worst series, fraction, absolute;
    for (double a : LogGrid(0.05, 200, 60)) {
        for (double x : LogGrid(1E-4, 400, 80)) {
            const double ref = boost::math::gamma_q(a, x);
            const double ours = GammaQ(a, x);
            const std::string at = "a=" + std::to_string(a) + " x=" + std::to_string(x);
            absolute.Take(std::fabs(ours - ref), at);
            if (ref > 1E-3 && ref < 1 - 1E-3) (x < a + 1 ? series : fraction).Take(Relative(ours, ref), at);
        }
    }
    series.Report("GammaQ by the series (x < a + 1), 1E-3 < Q < 1 - 1E-3");
    fraction.Report("GammaQ by the continued fraction (x >= a + 1), 1E-3 < Q < 1 - 1E-3");
    absolute.Report("GammaQ (absolute), a in [0.05, 200], x in [1E-4, 400]");
    EXPECT_LT(series.error, 1E-5) << series.where;
    EXPECT_LT(fraction.error, 1E-5) << fraction.where;
    EXPECT_LT(absolute.error, 1E-5) << absolute.where;
    EXPECT_EQ(GammaQ(2, -1), 0);
    EXPECT_EQ(GammaQ(0, 1), 0);
    EXPECT_EQ(GammaQ(2, 0), 1);
    double lg = 0;
    EXPECT_EQ(GammaSeries(2, 0, lg), 0);
}

TEST(NumericLibrary, LinearFitOfAKnownLine) {
    // Worked by hand: mean x 3, mean y 7, Sxy = 19.8, Sxx = 10, Syy = 39.24.
    const std::vector<double> x = {1, 2, 3, 4, 5};
    const std::vector<double> y = {3.1, 4.9, 7.0, 9.1, 10.9};
    const LinearFitResult f = LinearFit(x, y);
    EXPECT_NEAR(f.b, 1.98, 1E-12);
    EXPECT_NEAR(f.a, 1.06, 1E-12);
    EXPECT_NEAR(f.sigB, std::sqrt(1 / 10.0), 1E-12);
    EXPECT_NEAR(f.sigA, std::sqrt((1 + 225 / 50.0) / 5), 1E-12);
    const double r = 19.8 / std::sqrt(10 * 39.24);
    EXPECT_NEAR(f.r, r, 1E-12);
    EXPECT_EQ(f.df, 3);
    const double t = r / std::sqrt((1 - r * r) / 3);
    EXPECT_NEAR(f.t, t, 1E-9);
    // Student's t two-tailed p, against Boost's incomplete beta.
    EXPECT_NEAR(f.p, boost::math::ibeta(1.5, 0.5, 3 / (3 + t * t)), 1E-6);
    // No spread in x: slope and r cannot be computed and are not finite.
    const std::vector<double> flat = {2, 2, 2};
    EXPECT_FALSE(std::isfinite(LinearFit(flat, std::vector<double>{1, 2, 3}).b));
}

}  // namespace
}  // namespace ardel
