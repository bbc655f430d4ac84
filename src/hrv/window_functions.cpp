#include "hrv/window_functions.h"

#include <array>
#include <cmath>
#include <numbers>

namespace ardel::hrv {

namespace {

// a0 - a1 cos(x) + a2 cos(2x) - a3 cos(3x) + ...: the cosine-sum family all but the taper
// belong to.
using CosineTerms = std::array<double, 4>;

CosineTerms TermsOf(WindowKind kind) {
    switch (kind) {
        case WindowKind::Hanning: return {0.5, 0.5, 0, 0};
        case WindowKind::Hamming: return {0.54, 0.46, 0, 0};
        case WindowKind::Blackman: return {0.42, 0.5, 0.08, 0};
        case WindowKind::BlackmanHarris: return {0.35875, 0.48829, 0.14128, 0.01168};
        case WindowKind::ExactBlackman: return {7938.0 / 18608, 9240.0 / 18608, 1430.0 / 18608, 0};
        case WindowKind::FlatTop: return {0.2810639, 0.5208972, 0.1980399, 0};
        case WindowKind::TaperedCosine: break;
    }
    return {1, 0, 0, 0};
}

double TaperCoefficient(std::size_t i, std::size_t n) {
    const double taper = kTaperFraction * double(n);
    const double k = double(i);
    // The ramp of a Hanning window of width taper, rising at the start and falling at the end.
    if (k < taper / 2) return 0.5 * (1 - std::cos(2 * std::numbers::pi * k / taper));
    if (k > double(n) - taper / 2)
        return 0.5 * (1 - std::cos(2 * std::numbers::pi * (double(n) - k) / taper));
    return 1;
}

}  // namespace

std::optional<WindowKind> WindowByName(std::string_view name) {
    for (std::size_t k = 0; k < std::size(kWindowNames); ++k)
        if (kWindowNames[k] == name) return WindowKind(k);
    return std::nullopt;
}

std::vector<double> WindowCoefficients(WindowKind kind, std::size_t n) {
    std::vector<double> w(n, 1.0);
    if (kind == WindowKind::TaperedCosine) {
        for (std::size_t i = 0; i < n; ++i) w[i] = TaperCoefficient(i, n);
        return w;
    }
    const CosineTerms a = TermsOf(kind);
    for (std::size_t i = 0; i < n; ++i) {
        const double x = 2 * std::numbers::pi * double(i) / double(n);
        w[i] = a[0] - a[1] * std::cos(x) + a[2] * std::cos(2 * x) - a[3] * std::cos(3 * x);
    }
    return w;
}

void ApplyWindow(WindowKind kind, std::span<float> x) {
    const std::vector<double> w = WindowCoefficients(kind, x.size());
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = float(double(x[i]) * w[i]);
}

}  // namespace ardel::hrv
