// Builds a complete ABF 1.x data file in memory from samples: used by the demo generator, the
// benchmarks and the tests, which need recordings with known contents.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/abf_header.h"

namespace ardel {

struct AbfBuildSpec {
    int channels = 1;
    float sampleIntervalUs = 50;  // fADCSampleInterval: between successive multiplexed samples
    float fileVersion = 1.83f;
    std::int16_t operationMode = 3;  // gap-free
    float adcRange = 10.0f;
    std::int32_t adcResolution = 32768;
    // Per channel: units and the instrument scale factor (V per unit); 1 LSB is then
    // adcRange / adcResolution / scale units.
    std::vector<std::string> units{"pA"};
    std::vector<float> scaleFactors{0.0005f};
    std::string creator = "synthetic";
    std::string comment;
};

// Header for the given spec and sample count (all channels together); the data section
// starts at block 16, right after the header.
AbfHeader MakeAbfHeader(const AbfBuildSpec& spec, std::int64_t totalSamples);
// Header bytes followed by the multiplexed samples.
std::vector<std::uint8_t> BuildAbfFile(const AbfBuildSpec& spec,
                                       std::span<const std::int16_t> multiplexed);

}  // namespace ardel
