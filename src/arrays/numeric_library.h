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

}  // namespace ardel
