#include "tools/wave_synth.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>

#include "core/abf_build.h"
#include "core/safe_file.h"
#include "tools/synth_rng.h"

namespace ardel::synth {

namespace {

// Lays the sweeps end to end: `response` fills one sweep's samples after the onset (index 0 at
// the onset) in pA; the artefact, the background noise and the quantisation come from here.
void WriteSweeps(const std::filesystem::path& path, const SweepLayout& layout, Rng& rng,
                 const std::function<void(std::vector<double>&)>& response) {
    const double perMs = layout.sampleRateHz / 1000.0;
    const auto sweepPoints = std::size_t(std::llround(layout.sweepMs * perMs));
    const auto artefact = std::size_t(std::llround(layout.artefactMs * perMs));
    const auto onset = artefact + std::size_t(std::llround(layout.latencyMs * perMs));
    const std::size_t total = artefact + std::size_t(layout.sweeps) * sweepPoints;
    std::vector<double> signal(total, 0.0);
    std::vector<double> sweep(sweepPoints - (onset - artefact));
    for (int s = 0; s < layout.sweeps; ++s) {
        const std::size_t at = std::size_t(s) * sweepPoints;
        signal[at + artefact] += layout.artefactPa;
        std::fill(sweep.begin(), sweep.end(), 0.0);
        response(sweep);
        for (std::size_t k = 0; k < sweep.size() && at + onset + k < total; ++k)
            signal[at + onset + k] += sweep[k];
    }
    std::vector<std::int16_t> raw(total);
    for (std::size_t k = 0; k < total; ++k) {
        const double pA = signal[k] + layout.noiseRms * rng.Normal();
        raw[k] = std::int16_t(std::clamp(std::round(pA / layout.lsb), -32768.0, 32767.0));
    }
    AbfBuildSpec abf;
    abf.sampleIntervalUs = float(1e6 / layout.sampleRateHz);
    abf.units = {"pA"};
    abf.scaleFactors = {float(10.0 / 32768.0 / layout.lsb)};
    abf.creator = "synthetic sweeps";
    abf.comment = "Synthetic evoked responses with known parameters";
    const auto bytes = BuildAbfFile(abf, raw);
    WriteFileSafely(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

double MultiPeakValue(const MultiPeakSpec& spec, double ms) {
    double v = 0;
    for (std::size_t p = 0; p < spec.latencyMs.size(); ++p) {
        const double t = (ms - spec.latencyMs[p]) / spec.alphaMs;
        if (t > 0) v -= spec.amplitudePa[p] * t * std::exp(1 - t);  // peak amplitude at t = 1
    }
    return v;
}

}  // namespace

double WriteChannelOpenings(const std::filesystem::path& path, const SweepLayout& layout,
                            const ChannelSpec& spec) {
    Rng rng(layout.seed);
    const double perMs = layout.sampleRateHz / 1000.0;
    WriteSweeps(path, layout, rng, [&](std::vector<double>& sweep) {
        for (int c = 0; c < spec.channels; ++c) {
            if (rng.Uniform() >= spec.pOpen) continue;
            const double openMs = -std::log(rng.Uniform()) * spec.tauMs;
            const auto points = std::min(sweep.size(), std::size_t(std::ceil(openMs * perMs)));
            for (std::size_t k = 0; k < points; ++k) sweep[k] -= spec.unitaryPa;
        }
    });
    return -spec.unitaryPa * spec.channels * spec.pOpen;
}

std::vector<TurningPoint> WriteMultiPeak(const std::filesystem::path& path, const SweepLayout& layout,
                                         const MultiPeakSpec& spec) {
    Rng rng(layout.seed);
    const double msPerPoint = 1000.0 / layout.sampleRateHz;
    WriteSweeps(path, layout, rng, [&](std::vector<double>& sweep) {
        for (std::size_t k = 0; k < sweep.size(); ++k) sweep[k] = MultiPeakValue(spec, double(k) * msPerPoint);
    });
    // Turning points on a fine grid, as times from the artefact.
    std::vector<TurningPoint> points;
    const double step = 0.001;
    const double endMs = layout.sweepMs - layout.latencyMs;
    double before = MultiPeakValue(spec, 0), here = MultiPeakValue(spec, step);
    for (double ms = step; ms + step < endMs; ms += step) {
        const double after = MultiPeakValue(spec, ms + step);
        if (here < before && here <= after && here < -1e-3)
            points.push_back({ms + layout.latencyMs, here, false});
        else if (here > before && here >= after && here < -1e-3)
            points.push_back({ms + layout.latencyMs, here, true});
        before = here;
        here = after;
    }
    return points;
}

}  // namespace ardel::synth
