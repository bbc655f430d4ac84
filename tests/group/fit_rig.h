// Trace stores and recordings built in memory for the fitting tests: one bit is 0.1 pA and one
// point 0.1 ms, the peak sits where the event window puts it (point 60).
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "core/number_text.h"
#include "core/session.h"
#include "group/grp_anal_form.h"

namespace ardel::testing {

struct Decay {
    double amplitude;  // bits, signed
    double tau;        // ms
};

inline constexpr std::int32_t kPeak = 60;     // PeriodStartBaseline 6000 us / 100 us
inline constexpr double kPointMs = 0.1;

inline void SetUpRecording(Session& s) {
    Recording& r = s.recording;
    r.header.fADCRange = 32768;
    r.header.lADCResolution = 32768;
    r.ChannelGain = 10;  // 1 bit = 0.1 pA
    r.SampleInterval = 100;
    r.ADCUnits = "pA";
    r.DataFilePath = "cell.abf";
    r.FileIsOpen = true;
}

// Baseline `base`, a 5-point rise to the peak at kPeak, then the sum of decays plus an offset,
// with Gaussian noise of `noise` bits, rounded to the sample grid.
inline std::vector<std::int16_t> DecayTrace(std::int32_t points, const std::vector<Decay>& decays,
                                            double offset = 0, double noise = 0,
                                            unsigned seed = 7, double base = 0) {
    std::mt19937 gen(seed);
    std::normal_distribution<double> n(0.0, noise > 0 ? noise : 1.0);
    std::vector<std::int16_t> v(static_cast<std::size_t>(points));
    for (std::int32_t i = 0; i < points; ++i) {
        double y = base;
        double peak = offset;
        for (const Decay& d : decays) peak += d.amplitude;
        if (i >= kPeak) {
            const double t = (i - kPeak) * kPointMs;
            y += offset;
            for (const Decay& d : decays) y += d.amplitude * std::exp(-t / d.tau);
        } else if (i > kPeak - 5) {
            y += peak * (i - (kPeak - 5)) / 5.0;
        }
        if (noise > 0) y += n(gen);
        v[std::size_t(i)] = std::int16_t(RoundHalfEven(y));
    }
    return v;
}

// A store whose rows 1..n are the traces and row 0 their first one.
inline void FillDecayStore(group::TraceStore& store, const std::vector<std::vector<std::int16_t>>& traces) {
    store.Dimension(std::int32_t(traces.size()), std::int32_t(traces.front().size()));
    for (std::size_t t = 0; t < traces.size(); ++t) {
        std::copy(traces[t].begin(), traces[t].end(), store.Row(std::int32_t(t + 1)));
        store.TraceEvent[t + 1] = std::int16_t(t + 1);
    }
    std::copy(traces[0].begin(), traces[0].end(), store.Row(0));
}

}  // namespace ardel::testing
