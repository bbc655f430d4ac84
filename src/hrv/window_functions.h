// The window functions of the spectrum's "Windowsing Function for FFT" list, by their published
// definitions. All are the PERIODIC forms: w(n) for n = 0..N-1 with N (not N-1) in the
// denominators, the form that suits a spectrum (the symmetric window of N+1 points without its
// last point), so a window's sum is exactly N times its first coefficient.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ardel::hrv {

enum class WindowKind {
    Hanning,         // 0.5 - 0.5 cos(2 pi n/N)
    Hamming,         // 0.54 - 0.46 cos(2 pi n/N)
    Blackman,        // 0.42 - 0.5 cos(2 pi n/N) + 0.08 cos(4 pi n/N)
    BlackmanHarris,  // four-term minimum side lobe: 0.35875, 0.48829, 0.14128, 0.01168
    TaperedCosine,   // cosine taper over the first and last 10 % of the points, 1 between
    ExactBlackman,   // 7938/18608, 9240/18608, 1430/18608
    FlatTop,         // three-term flat top: 0.2810639, 0.5208972, 0.1980399
};

// The fraction of the points that the tapered cosine window tapers, half at each end.
inline constexpr double kTaperFraction = 0.2;

// The entries of the combo box, in its order.
inline constexpr std::string_view kWindowNames[] = {
    "Hanning", "Hamming", "Blackman", "Blackman-Harris", "Tapered Cosine", "Exact Blackman",
    "Flat Top"};

// The window an entry names (exact text); nullopt for any other text, which means no window.
std::optional<WindowKind> WindowByName(std::string_view name);

// The n coefficients of the window.
std::vector<double> WindowCoefficients(WindowKind kind, std::size_t n);

// Multiplies the series by the window in place.
void ApplyWindow(WindowKind kind, std::span<float> x);

}  // namespace ardel::hrv
