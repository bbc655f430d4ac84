// Digital filters: the eight IIR filters of the main window, which rewrite the three screen
// buffers so that the display and the detection both see filtered samples, and the Gaussian
// low-pass that waveform analyses use.
#pragma once

#include <array>
#include <complex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Combo4's list, by FilterType.
inline constexpr std::array<const char*, 8> kFilterTypeCaptions = {
    "LoPass Butterworth",   "HiPass Butterworth",   "LoPass Chebychev", "HiPass Chebychev",
    "LoPass Inv Chebychev", "HiPass Inv Chebychev", "LoPass Elliptic",  "HiPass Elliptic"};

inline constexpr int kFilterOrder = 8;
// Pass-band ripple of the Chebyshev and elliptic filters, and stop-band attenuation of the
// inverse Chebyshev and elliptic filters: half a decibel (6 %) of ripple distorts amplitudes
// less than the noise of a recording does, and a thousandth of what lies in the stop band is
// lost in that noise too.
inline constexpr double kFilterRippleDb = 0.5;
inline constexpr double kFilterAttenuationDb = 60.0;

// One second-order section: y = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2) x.
struct Biquad {
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
};

// One point through a cascade of N sections in transposed direct form II; state holds two
// values a section. The arithmetic of every run of the screen filter.
template <std::size_t N>
double CascadePoint(const std::array<Biquad, N>& q, std::array<double, 2 * N>& state, double x) {
    for (std::size_t k = 0; k < N; ++k) {
        const double in = x;
        const double y = q[k].b0 * in + state[2 * k];
        state[2 * k] = q[k].b1 * in - q[k].a1 * y + state[2 * k + 1];
        state[2 * k + 1] = q[k].b2 * in - q[k].a2 * y;
        x = y;
    }
    return x;
}

// A filter as a cascade of second-order sections.
struct IirFilter {
    std::vector<Biquad> sections;

    // Filters the data in place, causally, from a state of rest.
    void Apply(std::span<double> data) const;
    // Response at a frequency given as a fraction of the sampling rate.
    std::complex<double> Response(double frequencyFraction) const;
};

// The filter of Combo4's list index for a sampling rate and cut-off in Hz. nullopt for an
// unknown index, or a cut-off that is not strictly between 0 and half the sampling rate.
std::optional<IirFilter> DesignDigitalFilter(int filterType, double samplingHz, double cutoffHz);

// Sampling frequency of the active channel in Hz.
double SamplingFrequency(const Recording& rec);

// The cut-off message, or nullopt when twice the cut-off does not exceed the sampling rate.
std::optional<std::string> CutoffMessage(double cutoffHz, double samplingHz);

// Filters the active channel's samples of the previous, current and next screen buffers in
// place, as one run in that order, with the filter that options.FilterType and
// options.FilterFreq name. A cut-off at or beyond half the sampling rate, or at or below 0,
// leaves the buffers as they are; one beyond half the rate is told to the user.
void DigitalFilter(Session& s, UserDialogs& ui);

// Makes Display filter the freshly loaded buffers whenever options.FilterOn is set. The
// dialogs serve the cut-off message and must outlive the session's use of the hook.
void InstallDigitalFilter(Session& s, UserDialogs& ui);

// What the filter settings mean, for the window's help and shortcut text.
std::string FilterHelpText();

// The digital Gaussian low-pass filter (Colquhoun and Sigworth): a symmetric FIR whose
// response falls to 1/sqrt(2) at the cut-off, given as a fraction of the sampling rate. The
// ends of the data are extended by their first and last values. A cut-off at or below 0
// returns the data unchanged.
std::vector<double> GaussianFilter(std::span<const double> data, double cutoffFraction);
std::vector<float> GaussianFilter(std::span<const float> data, double cutoffFraction);

}  // namespace ardel
