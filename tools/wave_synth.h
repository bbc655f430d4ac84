// Synthetic evoked recordings for the wave analyses of the group window: repeated sweeps laid
// end to end in a gap-free file, each led by a one-point stimulus artefact. The artefact is the
// same in every sweep, so that detecting it as a positive peak cuts every response at the same
// point, whatever the response's own noise.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace ardel::synth {

struct SweepLayout {
    int sweeps = 1000;
    double sampleRateHz = 10000;
    double sweepMs = 150;       // from one artefact to the next
    double artefactMs = 20;     // first artefact from the start of the file
    double artefactPa = 400;    // height of the one-point artefact
    double latencyMs = 1;       // from the artefact to the response's onset
    double noiseRms = 0.2;      // pA, white background noise
    double lsb = 0.05;          // pA per raw unit
    std::uint32_t seed = 20261124;
};

// Binomial channel openings: at the onset each of N channels opens with probability pOpen and
// then stays open for an exponentially distributed time of mean tauMs. The number open at any
// time is thus binomial with N and pOpen * exp(-t / tauMs), and the variance of the current
// I = -i * open is i * |I| - I^2 / N, the parabola the noise analysis fits.
struct ChannelSpec {
    double unitaryPa = 2.0;  // i, the response goes downwards
    int channels = 150;      // N
    double pOpen = 0.7;
    double tauMs = 15;
};

// Writes the recording; returns the mean peak current, -i * N * pOpen.
double WriteChannelOpenings(const std::filesystem::path& path, const SweepLayout& layout,
                            const ChannelSpec& spec);

// A multi-peak response: alpha functions of the given latencies (ms after the onset) and
// amplitudes (pA, downwards), the same in every sweep under the background noise.
struct MultiPeakSpec {
    std::vector<double> latencyMs{5, 20, 40};
    std::vector<double> amplitudePa{60, 100, 40};
    double alphaMs = 3;
};

struct TurningPoint {
    double ms;   // from the artefact
    double pA;   // value without noise
    bool peak;   // a maximum (true) or a minimum
};

// Writes the recording; returns the turning points of the noiseless response, in time order.
std::vector<TurningPoint> WriteMultiPeak(const std::filesystem::path& path, const SweepLayout& layout,
                                         const MultiPeakSpec& spec);

}  // namespace ardel::synth
