#include "support/synthetic.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

#include "core/ini_file.h"

namespace ardel::testing {

TempDir::TempDir() {
    std::random_device rd;
    std::filesystem::path base = std::filesystem::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
        auto p = base / ("ardel-test-" + std::to_string(rd()) + "-" + std::to_string(attempt));
        if (std::filesystem::create_directory(p)) {
            path_ = p;
            return;
        }
    }
    throw std::runtime_error("cannot create a temporary folder");
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
}

std::vector<std::int16_t> MakeTrace(std::int64_t length, double baseline,
                                    const std::vector<SynthEvent>& events, double noiseRms,
                                    std::uint32_t seed) {
    std::vector<double> v(std::size_t(length), baseline);
    for (const auto& e : events) {
        const std::int64_t start = e.peakSample - e.riseSamples;
        for (std::int64_t k = std::max<std::int64_t>(start, 0); k < length; ++k) {
            double shape;
            if (k <= e.peakSample) {
                shape = e.riseSamples == 0 ? 1.0 : double(k - start) / e.riseSamples;
            } else {
                shape = std::exp(-double(k - e.peakSample) / e.tauSamples);
                if (shape < 1e-6) break;
            }
            v[std::size_t(k)] += e.amplitude * shape;
        }
    }
    std::vector<std::int16_t> out(v.size());
    std::mt19937 gen(seed);
    std::normal_distribution<double> noise(0.0, noiseRms > 0 ? noiseRms : 1.0);
    for (std::size_t k = 0; k < v.size(); ++k) {
        double x = v[k] + (noiseRms > 0 ? noise(gen) : 0.0);
        x = std::round(std::clamp(x, -32768.0, 32767.0));
        out[k] = std::int16_t(x);
    }
    return out;
}

std::filesystem::path WriteAbf(const std::filesystem::path& path, const AbfBuildSpec& spec,
                               const std::vector<std::vector<std::int16_t>>& channels) {
    const std::size_t n = channels.empty() ? 0 : channels[0].size();
    std::vector<std::int16_t> mux(n * channels.size());
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t c = 0; c < channels.size(); ++c) mux[i * channels.size() + c] = channels[c][i];
    AbfBuildSpec sp = spec;
    sp.channels = int(channels.size());
    auto bytes = BuildAbfFile(sp, mux);
    WriteFileReplacing(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return path;
}

std::filesystem::path TestDataDir() {
    if (const char* env = std::getenv("ARDEL_TEST_DATA_DIR")) return env;
    return ARDEL_TEST_DATA_DIR;
}

}  // namespace ardel::testing
