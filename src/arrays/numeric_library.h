// The program's own numeric routines, in double precision, shared by the statistics of the
// arrays and the statistical tests.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace ardel {

// Mean and the corrected two-pass variance (sum d^2 - (sum d)^2 / n) / (n - 1) of data.
// With fewer than 2 values the variance is 0; with none, both are 0.
struct MeanVariance {
    double mean = 0;
    double variance = 0;
};
MeanVariance AverageVariance(std::span<const double> data);

struct Descriptive {
    double mean = 0, sd = 0, sem = 0;
    double cv = 0;      // 100 sd / mean, in percent
    double invCv2 = 0;  // 1 / cv^2 with cv in percent, as the "1/CV^2" row always showed it
    double variance = 0, skewness = 0, kurtosis = 0;
    double median = 0, min = 0, max = 0;
    std::int64_t n = 0;
};
// The descriptive statistics of data, which it sorts (hand in a copy). With one value or none
// nothing is computed and every field but n stays 0. Skewness and kurtosis are 0 for fewer than
// 4 values or no variance.
Descriptive DescriptiveStatistics(std::vector<double> data);

// Natural log of the gamma function by the six-term Lanczos series (about 1E-10 relative for
// x > 0). Not defined for x <= 0: the result is then not finite.
double LogGamma(double x);

// The regularised incomplete beta function I_x(a, b). Outside 0..1 it is 0 without complaint;
// the continued fraction is taken on the side where it converges fast.
double IncompleteBeta(double a, double b, double x);
// The continued fraction of I_x(a, b) by the modified Lentz method: at most 100 rounds, done
// when a round changes the value by less than 3E-7; without convergence the last value stands.
double BetaContinuedFraction(double a, double b, double x);

// Q(a, x) = 1 - P(a, x), the complemented regularised incomplete gamma function. 0 for x < 0
// or a <= 0, without complaint.
double GammaQ(double a, double x);
// P(a, x) by its series (at most 100 terms, relative 3E-7); x = 0 gives 0. logGamma receives
// LogGamma(a).
double GammaSeries(double a, double x, double& logGamma);
// Q(a, x) by its continued fraction (Lentz, at most 100 rounds, 3E-7).
double GammaContinuedFraction(double a, double x, double& logGamma);

// The unweighted straight line y = a + b x through n points, with the standard errors of a and
// b, Pearson's r and its t test on n - 2 degrees of freedom. A value that cannot be computed
// (no spread in x, a perfect fit with n = 2, ...) is left non-finite; callers keep what they
// held for it.
struct LinearFitResult {
    double a = 0, b = 0, sigA = 0, sigB = 0;
    double r = 0, t = 0, df = 0, p = 0;
};
LinearFitResult LinearFit(std::span<const double> x, std::span<const double> y);

}  // namespace ardel
