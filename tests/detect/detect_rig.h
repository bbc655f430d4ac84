// Recordings with hand-placed samples for the detector tests: 100 us between points and one
// amplitude unit per raw step, so that every expected value can be worked out from the trace.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "core/open_file.h"
#include "core/session.h"
#include "core/user_dialogs.h"
#include "support/synthetic.h"

namespace ardel::testing {

// Writes values into the trace from index `at` on.
inline void Put(std::vector<std::int16_t>& trace, std::int64_t at,
                std::initializer_list<int> values) {
    for (int v : values) trace.at(std::size_t(at++)) = std::int16_t(v);
}

// A small upward event whose peak (100) is at `peak`, with the 5 points from peak-10 to
// peak-6 averaging to 1 and the point at peak-7 being 3:
//   peak-10 .. peak+6:  0 0 0 3 2 1 1 10 40 80 100 90 70 50 30 20 10
inline void PutEvent(std::vector<std::int16_t>& trace, std::int64_t peak, int sign = 1) {
    const int shape[] = {0, 0, 0, 3, 2, 1, 1, 10, 40, 80, 100, 90, 70, 50, 30, 20, 10};
    for (int k = 0; k < 17; ++k)
        trace.at(std::size_t(peak - 10 + k)) = std::int16_t(sign * shape[k]);
}

// 1000 us chunks (10 points), baseline window 1000..600 us before the peak (5 points), 20 points
// of decay search down to half the amplitude; thresholds of 5 units and 1 unit x ms.
inline DetectionParameters SmallParameters(int direction = 1) {
    DetectionParameters p;
    p.ThresholdAmplitude = 5;
    p.PeriodToSearchMax = 1000;
    p.PeriodStartBaseline = 1000;
    p.PeriodBaselineAverage = 500;
    p.PeriodFindDecayTime = 2000;
    p.DecayPercent = 0.5f;
    p.AreaThreshold = 1;
    p.PeakDirection = std::int16_t(direction);
    p.NumberPointsPeak = 1;
    return p;
}

// One amplitude unit per raw step: gain 2^-12, range 8 over 32768 steps.
inline AbfBuildSpec UnitSpec(int channels = 1, float sampleIntervalUs = 100) {
    AbfBuildSpec spec;
    spec.channels = channels;
    spec.sampleIntervalUs = sampleIntervalUs;
    spec.adcRange = 8;
    spec.adcResolution = 32768;
    spec.units.assign(std::size_t(channels), "pA");
    spec.scaleFactors.assign(std::size_t(channels), 1.0f / 4096);
    return spec;
}

// An open recording with a session around it; Display counts the redraws.
struct Rig {
    TempDir dir;
    Session s;
    SilentDialogs quiet;
    int displays = 0;

    explicit Rig(const std::vector<std::int16_t>& trace,
                 DetectionParameters params = SmallParameters(), float blocksPerScreen = 4) {
        OpenChannels({trace}, params, blocksPerScreen, UnitSpec(), quiet);
    }
    Rig() = default;

    void OpenChannels(const std::vector<std::vector<std::int16_t>>& channels,
                      const DetectionParameters& params, float blocksPerScreen,
                      const AbfBuildSpec& spec, UserDialogs& ui) {
        s.recording.BlocksPerScreen = blocksPerScreen;
        s.params = params;
        const auto file = WriteAbf(dir / "trace.abf", spec, channels);
        ASSERT_TRUE(OpenDataFile(s, ui, file));
        s.onDisplay = [this](Session&) { ++displays; };
    }

    // Moves to the screen that starts `screen` screens after the first one and loads it.
    void Show(double screen) {
        s.recording.ScreenBlock =
            s.recording.header.lDataSectionPtr + screen * s.recording.BlocksPerScreen;
        Display(s);
    }

    std::int32_t Count() const { return s.events.EventCount(); }
    // The times of the table, for failure messages.
    std::string Times() const {
        std::string text;
        for (std::int32_t n = 1; n <= Count(); ++n) text += " " + std::to_string(Event(n).Time);
        return text;
    }
    const EventRecord& Event(std::int32_t n) const { return s.events[n]; }
};

}  // namespace ardel::testing
