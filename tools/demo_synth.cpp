#include "tools/demo_synth.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>

#include "core/abf_build.h"
#include "tools/synth_rng.h"

namespace ardel::synth {


std::vector<KnownEvent> WriteRecording(const std::filesystem::path& path, const RecordingSpec& spec) {
    const std::int64_t total = std::int64_t(std::llround(spec.seconds * spec.sampleRateHz));
    const double dtMs = 1000.0 / spec.sampleRateHz;
    Rng rng(spec.seed);

    std::vector<KnownEvent> events;
    for (double t = 0;;) {
        t += -std::log(rng.Uniform()) * 1000.0 / spec.eventRateHz;
        if (t >= spec.seconds * 1000.0) break;
        KnownEvent e;
        e.peakMs = std::round(t / dtMs) * dtMs;
        e.amplitude = spec.minAmplitude + (spec.maxAmplitude - spec.minAmplitude) * rng.Uniform();
        e.tauMs = spec.minTauMs + (spec.maxTauMs - spec.minTauMs) * rng.Uniform();
        events.push_back(e);
    }

    AbfBuildSpec abf;
    abf.channels = 1;
    abf.sampleIntervalUs = float(1e6 / spec.sampleRateHz);
    abf.units = {"pA"};
    abf.scaleFactors = {float(10.0 / 32768.0 / spec.lsb)};
    abf.creator = "synthetic demo";
    abf.comment = "Synthetic recording with known events";
    const AbfHeader header = MakeAbfHeader(abf, total);
    const auto head = header.ToBytes();

    const std::filesystem::path tmp = path.string() + ".tmp";
    std::FILE* f = std::fopen(tmp.c_str(), "wb");
    if (!f) throw std::runtime_error("cannot create " + tmp.string());
    bool ok = std::fwrite(head.data(), 1, head.size(), f) == head.size();

    constexpr std::int64_t kChunk = 1 << 16;
    std::vector<double> signal;
    std::vector<std::int16_t> raw;
    std::size_t first = 0;  // first event that can still touch the chunk
    const double riseSamples = spec.riseMs / dtMs;
    double filtered = 0;
    for (std::int64_t start = 0; start < total && ok; start += kChunk) {
        const std::int64_t n = std::min(kChunk, total - start);
        signal.assign(std::size_t(n), spec.baseline);
        for (std::size_t k = first; k < events.size(); ++k) {
            const KnownEvent& e = events[k];
            const double peak = e.peakMs / dtMs;
            const double tail = peak + 12 * e.tauMs / dtMs;  // below 1e-5 of the amplitude
            if (tail < double(start)) {
                if (k == first) ++first;
                continue;
            }
            if (peak - riseSamples > double(start + n)) break;
            const std::int64_t from = std::max<std::int64_t>(start, std::int64_t(std::ceil(peak - riseSamples)));
            const std::int64_t to = std::min<std::int64_t>(start + n - 1, std::int64_t(tail));
            for (std::int64_t i = from; i <= to; ++i) {
                const double d = double(i) - peak;
                const double shape = d <= 0 ? 1.0 + d / riseSamples : std::exp(-d * dtMs / e.tauMs);
                signal[std::size_t(i - start)] -= e.amplitude * shape;
            }
        }
        raw.resize(std::size_t(n));
        for (std::int64_t i = 0; i < n; ++i) {
            // Slightly low-passed noise, as an amplifier's filter leaves it.
            filtered = 0.7 * filtered + 0.3 * rng.Normal();
            const double pA = signal[std::size_t(i)] + spec.noiseRms * filtered / 0.42;
            raw[std::size_t(i)] = std::int16_t(std::clamp(std::round(pA / spec.lsb), -32768.0, 32767.0));
        }
        ok = std::fwrite(raw.data(), 2, raw.size(), f) == raw.size();
    }
    ok = std::fclose(f) == 0 && ok;
    std::error_code ec;
    if (ok) std::filesystem::rename(tmp, path, ec);
    if (!ok || ec) {
        std::filesystem::remove(tmp, ec);
        throw std::runtime_error("cannot write " + path.string());
    }
    return events;
}

}  // namespace ardel::synth
