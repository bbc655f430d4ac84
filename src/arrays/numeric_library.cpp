#include "arrays/numeric_library.h"

#include <algorithm>
#include <cmath>

#include "arrays/quicksort.h"

namespace ardel {

MeanVariance AverageVariance(std::span<const double> data) {
    MeanVariance r;
    const double n = double(data.size());
    if (data.empty()) return r;
    double sum = 0;
    for (double x : data) sum += x;
    r.mean = sum / n;
    if (data.size() < 2) return r;
    // The sum of the deviations, ideally 0, corrects the rounding of the first pass.
    double sumD = 0, sumD2 = 0;
    for (double x : data) {
        const double d = x - r.mean;
        sumD += d;
        sumD2 += d * d;
    }
    r.variance = (sumD2 - sumD * sumD / n) / (n - 1);
    return r;
}

Descriptive DescriptiveStatistics(std::vector<double> data) {
    Descriptive r;
    r.n = std::int64_t(data.size());
    if (r.n <= 1) return r;
    const double n = double(r.n);
    QuickSortRange(data.data(), 0, r.n - 1);
    double sum = 0;
    for (double x : data) sum += x;
    r.mean = sum / n;
    double s2 = 0, s3 = 0, s4 = 0;
    for (double x : data) {
        const double d = x - r.mean;
        const double d2 = d * d;
        s2 += d2;
        s3 += d2 * d;
        s4 += d2 * d2;
    }
    r.variance = s2 / (n - 1);
    r.sd = std::sqrt(r.variance);
    if (r.variance != 0 && r.n >= 4) {
        r.skewness = n * s3 / (r.sd * r.sd * r.sd * (n - 1) * (n - 2));
        r.kurtosis = n * (n + 1) / ((n - 1) * (n - 2) * (n - 3)) * s4 / (r.variance * r.variance) -
                     3 * (n - 1) * (n - 1) / ((n - 2) * (n - 3));
    }
    const std::size_t mid = data.size() / 2;
    r.median = data.size() % 2 == 0 ? (data[mid - 1] + data[mid]) / 2 : data[mid];
    r.sem = r.sd / std::sqrt(n);
    r.min = data.front();
    r.max = data.back();
    if (r.mean != 0) {
        r.cv = 100 * r.sd / r.mean;
        if (r.cv != 0) r.invCv2 = 1 / (r.cv * r.cv);
    }
    return r;
}

}  // namespace ardel

namespace ardel {

namespace {

constexpr int kMaxRounds = 100;
constexpr double kEps = 3E-7;
// Replaces a numerator or denominator that comes nearer to zero than this in the Lentz method.
constexpr double kFloor = 1E-30;

double Floored(double v) { return std::fabs(v) < kFloor ? kFloor : v; }

}  // namespace

double LogGamma(double x) {
    static constexpr double kCoefficients[6] = {76.18009172947146,     -86.50532032941677,
                                                24.01409824083091,     -1.231739572450155,
                                                0.001208650973866179, -5.395239384953E-06};
    double tmp = x + 5.5;
    tmp = (x + 0.5) * std::log(tmp) - tmp;
    double ser = 1.000000000190015;
    double y = x;
    for (double c : kCoefficients) {
        y += 1;
        ser += c / y;
    }
    return tmp + std::log(2.5066282746310005 * ser / x);
}

double BetaContinuedFraction(double a, double b, double x) {
    const double qab = a + b, qap = a + 1, qam = a - 1;
    double c = 1;
    double d = 1 / Floored(1 - qab * x / qap);
    double h = d;
    for (int m = 1; m <= kMaxRounds; ++m) {
        const double m2 = 2.0 * m;
        double aa = m * (b - m) * x / ((qam + m2) * (a + m2));
        d = 1 / Floored(1 + aa * d);
        c = Floored(1 + aa / c);
        h *= d * c;
        aa = -(a + m) * (qab + m) * x / ((a + m2) * (qap + m2));
        d = 1 / Floored(1 + aa * d);
        c = Floored(1 + aa / c);
        const double del = d * c;
        h *= del;
        if (std::fabs(del - 1) < kEps) break;
    }
    return h;
}

double IncompleteBeta(double a, double b, double x) {
    if (x < 0 || x > 1) return 0;
    const double bt =
        (x == 0 || x == 1) ? 0
                           : std::exp(LogGamma(a + b) - LogGamma(a) - LogGamma(b) + a * std::log(x) +
                                      b * std::log(1 - x));
    if (x < (a + 1) / (a + b + 2)) return bt * BetaContinuedFraction(a, b, x) / a;
    return 1 - bt * BetaContinuedFraction(b, a, 1 - x) / b;
}

double GammaSeries(double a, double x, double& logGamma) {
    logGamma = LogGamma(a);
    if (x <= 0) return 0;
    double ap = a;
    double del = 1 / a;
    double sum = del;
    for (int n = 1; n <= kMaxRounds; ++n) {
        ap += 1;
        del *= x / ap;
        sum += del;
        if (std::fabs(del) < std::fabs(sum) * kEps) break;
    }
    return sum * std::exp(-x + a * std::log(x) - logGamma);
}

double GammaContinuedFraction(double a, double x, double& logGamma) {
    logGamma = LogGamma(a);
    double b = x + 1 - a;
    double c = 1 / kFloor;
    double d = 1 / b;
    double h = d;
    for (int i = 1; i <= kMaxRounds; ++i) {
        const double an = -i * (i - a);
        b += 2;
        d = 1 / Floored(an * d + b);
        c = Floored(b + an / c);
        const double del = d * c;
        h *= del;
        if (std::fabs(del - 1) < kEps) break;
    }
    return std::exp(-x + a * std::log(x) - logGamma) * h;
}

double GammaQ(double a, double x) {
    if (x < 0 || a <= 0) return 0;
    double logGamma = 0;
    if (x < a + 1) return 1 - GammaSeries(a, x, logGamma);
    return GammaContinuedFraction(a, x, logGamma);
}

LinearFitResult LinearFit(std::span<const double> x, std::span<const double> y) {
    LinearFitResult r;
    const std::size_t count = std::min(x.size(), y.size());
    const double n = double(count);
    double sx = 0, sy = 0, sxy = 0, sxx = 0, syy = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sx += x[i];
        sy += y[i];
        sxy += x[i] * y[i];
        sxx += x[i] * x[i];
        syy += y[i] * y[i];
    }
    const double sxoss = sx / n;
    double st2 = 0, stY = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double t = x[i] - sxoss;
        st2 += t * t;
        stY += t * y[i];
    }
    r.b = stY / st2;
    r.a = (sy - sx * r.b) / n;
    r.sigA = std::sqrt((1 + sx * sx / (n * st2)) / n);
    r.sigB = std::sqrt(1 / st2);
    r.r = (n * sxy - sx * sy) / std::sqrt((n * sxx - sx * sx) * (n * syy - sy * sy));
    r.df = n - 2;
    r.t = r.r / std::sqrt((1 - r.r * r.r) / r.df);
    r.p = IncompleteBeta(r.df / 2, 0.5, r.df / (r.df + r.t * r.t));
    return r;
}

}  // namespace ardel
