// The "Heart Rate Variability:Spectral Analysis" window: the RR histogram, the delta RR
// histogram, the tachogram and the power spectrum of the RR series, from one "Generate Plots".
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "core/user_dialogs.h"
#include "graph/graph_model.h"
#include "hrv/interval_displays.h"

namespace ardel::hrv {

// The one-sided auto power spectrum of a real series of n samples dt seconds apart: n/2 + 1
// values (integer division), |X_k|^2 / n^2 with every bin but DC and (for an even n) Nyquist
// doubled, so the values add up to the mean square of the series; df = 1 / (n dt). No padding,
// no detrending. An empty series gives an empty spectrum.
struct PowerSpectrum {
    std::vector<double> power;
    double df = 0;
};
PowerSpectrum AutoPowerSpectrum(std::span<const double> x, double dt);

inline constexpr std::string_view kSpectralCaption = "Heart Rate Variability:Spectral Analysis";
inline constexpr std::string_view kSpectrumTitle = "Power Spectral Density (FFT)";

struct HrvSpectralForm {
    // Combo2 RRUBound, Combo3 RRLBound, Combo1 RRBinSize, Combo4 DeltaRRBinSize, Combo5
    // Windowing: what the boxes show, which is what Command2 saves.
    HrvSpectralSettings options;
    // Until the first "Generate Plots" each display shows only its title.
    std::shared_ptr<GraphModel> Graph1 = BlankDisplayPointer("RR Interval Histogram");
    std::shared_ptr<GraphModel> Graph2 = BlankDisplayPointer("Delta RR Interval Histogram");
    std::shared_ptr<GraphModel> Picture2 = BlankDisplayPointer("Tachogram");
    std::shared_ptr<GraphModel> CWGraph1 = BlankDisplayPointer(std::string(kSpectrumTitle));
    // The form's load has read the settings file.
    bool loaded = false;
};

// The form's load: its keys from the settings file, once.
void LoadHrvSpectralForm(HrvSpectralForm& f, const std::filesystem::path& iniFile);

// Generate Plots (Command1).
void HRVSpectral_Command1(const Session& s, UserDialogs& ui, HrvSpectralForm& f);

// The spectrum display of a windowed RR series whose mean interval is meanRR ms: power against
// frequency from 0 in steps of df. A mean of 0 or less gives no time step and an empty display.
GraphModel SpectrumDisplay(std::span<const float> windowed, double meanRR);

}  // namespace ardel::hrv
