#include "arrays/numeric_library.h"

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
