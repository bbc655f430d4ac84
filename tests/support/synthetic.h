// Synthetic recordings with known events, written to a temporary folder for the tests.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/abf_build.h"

namespace ardel::testing {

// A fresh, empty folder under the system's temporary folder, removed at destruction.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// One synaptic-like event: instantaneous-ish rise over riseSamples, exponential decay.
struct SynthEvent {
    std::int64_t peakSample;  // index of the peak in samples of the channel
    double amplitude;         // raw units, signed (negative for downward events)
    int riseSamples = 10;
    double tauSamples = 100;
};

// Baseline + events (+ optional deterministic noise of the given raw RMS).
std::vector<std::int16_t> MakeTrace(std::int64_t length, double baseline,
                                    const std::vector<SynthEvent>& events, double noiseRms = 0,
                                    std::uint32_t seed = 1);

// Writes a one-channel (or interleaved multi-channel) ABF file and returns its path.
std::filesystem::path WriteAbf(const std::filesystem::path& path, const AbfBuildSpec& spec,
                               const std::vector<std::vector<std::int16_t>>& channels);

// Where the copied real recordings live.
std::filesystem::path TestDataDir();

}  // namespace ardel::testing
