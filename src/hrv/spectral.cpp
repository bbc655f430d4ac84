#include "hrv/spectral.h"

#include <complex>
#include <mutex>

#include <fftw3.h>

#include "hrv/interval_displays.h"
#include "hrv/window_functions.h"

namespace ardel::hrv {

namespace {

// FFTW's planner is not thread-safe, and the command line analyses files side by side.
std::mutex& PlannerMutex() {
    static std::mutex m;
    return m;
}

}  // namespace

PowerSpectrum AutoPowerSpectrum(std::span<const double> x, double dt) {
    PowerSpectrum out;
    const std::size_t n = x.size();
    if (n == 0) return out;
    const std::size_t bins = n / 2 + 1;
    double* in = fftw_alloc_real(n);
    fftw_complex* spectrum = fftw_alloc_complex(bins);
    fftw_plan plan = nullptr;
    {
        std::lock_guard lock(PlannerMutex());
        plan = fftw_plan_dft_r2c_1d(int(n), in, spectrum, FFTW_ESTIMATE);
    }
    std::copy(x.begin(), x.end(), in);
    fftw_execute(plan);
    out.power.resize(bins);
    const double n2 = double(n) * double(n);
    for (std::size_t k = 0; k < bins; ++k) {
        const double re = spectrum[k][0], im = spectrum[k][1];
        double p = (re * re + im * im) / n2;
        // The negative frequencies fold onto the positive ones; DC and Nyquist have no twin.
        const bool single = k == 0 || (n % 2 == 0 && k == n / 2);
        if (!single) p *= 2;
        out.power[k] = p;
    }
    out.df = 1.0 / (double(n) * dt);
    {
        std::lock_guard lock(PlannerMutex());
        fftw_destroy_plan(plan);
    }
    fftw_free(spectrum);
    fftw_free(in);
    return out;
}

void LoadHrvSpectralForm(HrvSpectralForm& f, const std::filesystem::path& iniFile) {
    if (f.loaded) return;
    f.options = LoadHrvSpectralSettings(iniFile);
    f.loaded = true;
}

GraphModel SpectrumDisplay(std::span<const float> windowed, double meanRR) {
    GraphModel g = BlankDisplay(std::string(kSpectrumTitle));
    g.BottomTitle = "Frequency (Hz)";
    g.LeftTitle = "Power (ms^2)";
    // Each beat is one sample, meanRR apart: long pauses within the bounds are one sample too.
    const double dt = meanRR / 1000.0;
    if (!(dt > 0)) return g;
    const std::vector<double> x(windowed.begin(), windowed.end());
    const PowerSpectrum p = AutoPowerSpectrum(x, dt);
    g.SetPointCount(std::int32_t(p.power.size()));
    for (std::size_t k = 0; k < p.power.size(); ++k)
        g.AddPoint(float(double(k) * p.df), float(p.power[k]));
    return g;
}

void HRVSpectral_Command1(const Session& s, UserDialogs& ui, HrvSpectralForm& f) {
    const HrvSpectralSettings& o = f.options;
    const auto accepted = DrawIntervalDisplays(
        s, ui, {o.RRUBound, o.RRLBound, o.RRBinSize, o.DeltaRRBinSize},
        {*f.Graph1, *f.Graph2, *f.Picture2, *f.CWGraph1, kSpectrumTitle});
    if (!accepted) return;
    std::vector<float> rr = accepted->rr;
    // Any text that names no window leaves the series as it is.
    if (const auto kind = WindowByName(o.Windowing)) ApplyWindow(*kind, rr);
    ReplaceDisplay(*f.CWGraph1, SpectrumDisplay(rr, accepted->Mean()));
}

}  // namespace ardel::hrv
