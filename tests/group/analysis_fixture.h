// A session with a known unit scale and a trace store built directly from sample rows, for the
// group analyses' tests.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "core/session.h"
#include "group/grp_anal_form.h"

namespace ardel::testing {

// 1 sample = 0.01 mV (range 10, resolution 1000, gain 1), no offset.
inline constexpr double kUnitsPerSample = 0.01;

inline void ScaleRecording(Session& s, float intervalUs) {
    s.recording.header.fADCRange = 10;
    s.recording.header.lADCResolution = 1000;
    s.recording.ChannelGain = 1;
    s.recording.ChannelOffset = 0;
    s.recording.SampleInterval = intervalUs;
    s.recording.ADCUnits = "mV";
    s.recording.DataFilePath = "cell.abf";
}

inline std::int16_t ToSamples(double units) {
    return std::int16_t(std::lround(units / kUnitsPerSample));
}

// Rows 1..n from `traces`, row 0 their rounded average, as Start Display leaves the store.
inline void FillStore(group::TraceStore& store, const std::vector<std::vector<std::int16_t>>& traces) {
    const std::int32_t n = std::int32_t(traces.size());
    const std::int32_t points = std::int32_t(traces.front().size());
    store.Dimension(n, points);
    for (std::int32_t t = 1; t <= n; ++t)
        for (std::int32_t k = 0; k < points; ++k) store.At(t, k) = traces[std::size_t(t - 1)][std::size_t(k)];
    for (std::int32_t k = 0; k < points; ++k) {
        std::int64_t sum = 0;
        for (std::int32_t t = 1; t <= n; ++t) sum += store.At(t, k);
        store.At(0, k) = std::int16_t(std::nearbyint(double(sum) / n));
    }
}

}  // namespace ardel::testing

// The group analyses' tests live in the engine's namespace and use these by their short names.
namespace ardel::group {
using ardel::testing::FillStore;
using ardel::testing::ScaleRecording;
using ardel::testing::ToSamples;
}  // namespace ardel::group
