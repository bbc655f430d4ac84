// The windows against their textbook forms, written here in other shapes than the code uses
// (Hann as sin^2, the cosine sums term by term with N in the denominator: the periodic form).
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "hrv/window_functions.h"

namespace ardel::hrv {
namespace {

constexpr double kPi = std::numbers::pi;

double Textbook(WindowKind kind, double n, double N) {
    const double c1 = std::cos(2 * kPi * n / N), c2 = std::cos(4 * kPi * n / N),
                 c3 = std::cos(6 * kPi * n / N);
    switch (kind) {
        case WindowKind::Hanning: return std::pow(std::sin(kPi * n / N), 2);
        case WindowKind::Hamming: return 0.54 - 0.46 * c1;
        case WindowKind::Blackman: return 0.42 - 0.5 * c1 + 0.08 * c2;
        case WindowKind::BlackmanHarris: return 0.35875 - 0.48829 * c1 + 0.14128 * c2 - 0.01168 * c3;
        case WindowKind::ExactBlackman: return (7938 - 9240 * c1 + 1430 * c2) / 18608;
        case WindowKind::FlatTop: return 0.2810639 - 0.5208972 * c1 + 0.1980399 * c2;
        case WindowKind::TaperedCosine: {
            // Tukey window with alpha = 0.2, periodic: the symmetric one of N + 1 points.
            const double a = 0.2;
            if (n < a * N / 2) return 0.5 * (1 + std::cos(kPi * (2 * n / (a * N) - 1)));
            if (n > N - a * N / 2) return 0.5 * (1 + std::cos(kPi * (2 * n / (a * N) - 2 / a + 1)));
            return 1;
        }
    }
    return 0;
}

TEST(WindowFunctions, MatchTheirTextbookFormsInPeriodicForm) {
    for (std::size_t k = 0; k < std::size(kWindowNames); ++k) {
        const auto kind = WindowByName(kWindowNames[k]);
        ASSERT_TRUE(kind) << kWindowNames[k];
        for (const std::size_t N : {1u, 2u, 7u, 64u, 101u}) {
            const std::vector<double> w = WindowCoefficients(*kind, N);
            ASSERT_EQ(w.size(), N);
            for (std::size_t n = 0; n < N; ++n)
                EXPECT_NEAR(w[n], Textbook(*kind, double(n), double(N)), 1e-12)
                    << kWindowNames[k] << " N=" << N << " n=" << n;
            // Periodic: w(n) = w(N - n), and the window peaks at N/2, not between two points.
            for (std::size_t n = 1; n < N; ++n) EXPECT_NEAR(w[n], w[N - n], 1e-12);
        }
    }
}

TEST(WindowFunctions, KnownValuesAndCoherentGain) {
    const std::size_t N = 1000;
    auto w = [&](WindowKind k) { return WindowCoefficients(k, N); };
    EXPECT_NEAR(w(WindowKind::Hanning)[0], 0, 1e-15);
    EXPECT_NEAR(w(WindowKind::Hanning)[N / 2], 1, 1e-15);
    EXPECT_NEAR(w(WindowKind::Hamming)[0], 0.08, 1e-15);
    EXPECT_NEAR(w(WindowKind::BlackmanHarris)[0], 6e-5, 1e-12);
    EXPECT_NEAR(w(WindowKind::FlatTop)[N / 2], 1.000001, 1e-9);
    // The sum of a periodic cosine-sum window is N times its constant term.
    double sum = 0;
    for (double v : w(WindowKind::Blackman)) sum += v;
    EXPECT_NEAR(sum, 0.42 * N, 1e-9);
    // The taper: 0 at the start, a half-way point at 5 % of the length, flat 1 from 10 % to 90 %.
    const auto t = w(WindowKind::TaperedCosine);
    EXPECT_EQ(t[0], 0);
    EXPECT_NEAR(t[50], 0.5, 1e-12);
    EXPECT_NEAR(t[950], 0.5, 1e-12);
    for (std::size_t n = 100; n <= 900; ++n) EXPECT_EQ(t[n], 1) << n;
}

TEST(WindowFunctions, OtherTextsNameNoWindowAndApplyMultipliesInPlace) {
    EXPECT_FALSE(WindowByName("blackman"));
    EXPECT_FALSE(WindowByName("None"));
    EXPECT_FALSE(WindowByName(""));
    std::vector<float> x(8, 2.0f);
    ApplyWindow(WindowKind::Hanning, x);
    EXPECT_EQ(x[0], 0.0f);
    EXPECT_FLOAT_EQ(x[4], 2.0f);
    EXPECT_FLOAT_EQ(x[2], 1.0f);
}

}  // namespace
}  // namespace ardel::hrv
