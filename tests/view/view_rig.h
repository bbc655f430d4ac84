// An open synthetic recording for the trace view tests: 100 us between points, one amplitude
// unit ("pA") per raw step, the data section right after the header; Display calls are counted.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "core/open_file.h"
#include "core/session.h"
#include "core/user_dialogs.h"
#include "support/synthetic.h"

namespace ardel::testing {

inline AbfBuildSpec ViewSpec(int channels = 1) {
    AbfBuildSpec spec;
    spec.channels = channels;
    spec.sampleIntervalUs = 100.0f / float(channels);  // 100 us per point of one channel
    spec.adcRange = 8;
    spec.adcResolution = 32768;
    spec.units.assign(std::size_t(channels), "pA");
    spec.scaleFactors.assign(std::size_t(channels), 1.0f / 4096);
    return spec;
}

struct ViewRig {
    TempDir dir;
    Session s;
    SilentDialogs quiet;
    int displays = 0;

    explicit ViewRig(const std::vector<std::vector<std::int16_t>>& channels,
                     float blocksPerScreen = 4) {
        s.recording.BlocksPerScreen = blocksPerScreen;
        const auto file = WriteAbf(dir / "trace.abf", ViewSpec(int(channels.size())), channels);
        EXPECT_TRUE(OpenDataFile(s, quiet, file));
        s.onDisplay = [this](Session&) { ++displays; };
    }

    // An event at point `point` of the recording (Time in ms), everything else as given.
    EventRecord& AddEvent(double point, std::uint8_t group = 0) {
        EventRecord& e = s.events.Add();
        e.Time = float(point * 0.1);
        e.GroupNumber = group;
        e.PeakDirection = -1;
        return e;
    }
};

// A ramp that is different on every point, so that samples can be told apart.
inline std::vector<std::int16_t> Ramp(std::size_t n, int step = 1) {
    std::vector<std::int16_t> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = std::int16_t(int(i % 4000) * step - 2000 * step);
    return v;
}

}  // namespace ardel::testing
