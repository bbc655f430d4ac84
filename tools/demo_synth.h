// Deterministic synthetic recordings: baseline noise with synaptic-like events of known time,
// amplitude and kinetics. The demo recording and the benchmarks are made with it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace ardel::synth {

struct RecordingSpec {
    double seconds = 180;
    double sampleRateHz = 10000;
    double eventRateHz = 2.0;      // mean rate of the Poisson process
    double minAmplitude = 15;      // pA, events point downwards (inward currents)
    double maxAmplitude = 60;
    double riseMs = 0.8;           // linear rise to the peak
    double minTauMs = 4, maxTauMs = 10;  // single-exponential decay
    double noiseRms = 1.5;         // pA
    double baseline = -20;         // pA holding current
    std::uint32_t seed = 20261122;
    double lsb = 10.0 / 32768.0 / 0.005;  // pA per raw unit (fInstrumentScaleFactor 0.005 V/pA)
};

struct KnownEvent {
    double peakMs;      // time of the peak from the start of the recording
    double amplitude;   // pA, positive number; the event goes downwards
    double tauMs;
};

// Writes a one-channel gap-free ABF file, streaming it so that long recordings need little
// memory, and returns the events it contains in time order.
std::vector<KnownEvent> WriteRecording(const std::filesystem::path& path, const RecordingSpec& spec);

}  // namespace ardel::synth
