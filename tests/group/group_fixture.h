// Synthetic recordings for the group window's tests: every sample tells where it came from,
// so a cut trace shows the point it started at.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "core/abf_files.h"
#include "core/open_file.h"
#include "core/session.h"
#include "group/grp_anal_form.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel::testing {

// Sample of point p: p modulo 1000, so a trace starting at point s reads s % 1000, ...
inline std::int16_t PointValue(std::int64_t p) {
    return std::int16_t(p % 1000);
}

class GroupFixture : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;
    group::GroupWindow w;
    ScriptedDialogs ui;

    // One channel, 100 us a point, one bit = 1/1024 pA; `points` samples of PointValue.
    void OpenRamp(std::int64_t points = 20000) {
        auto samples = std::vector<std::int16_t>(std::size_t(points));
        for (std::int64_t p = 0; p < points; ++p) samples[std::size_t(p)] = PointValue(p);
        Open(AbfFileBuilder(Spec(), {samples}));
    }

    static AbfBuildSpec Spec() {
        AbfBuildSpec spec;
        spec.sampleIntervalUs = 100;
        spec.adcRange = 10;
        spec.scaleFactors = {0.3125f};
        return spec;
    }

    void Open(const AbfFileBuilder& b) {
        ScriptedDialogs open;
        ASSERT_TRUE(OpenDataFile(s, open, b.Write(dir / "group.abf")));
        // 1000 us before the peak: 10 points.
        s.params.PeriodStartBaseline = 1000;
        w.form.Option2_0 = false;
        w.form.Option2_1 = true;
    }

    EventRecord& AddEvent(float timeMs, std::uint8_t group = 1, std::int32_t amplitude = 100,
                          std::int16_t baseline = 0) {
        EventRecord& e = s.events.Add();
        e = EventRecord{};
        e.Time = timeMs;
        e.GroupNumber = group;
        e.Amplitude = amplitude;
        e.Baseline = baseline;
        return e;
    }

    std::vector<std::int16_t> Row(std::int32_t n) const {
        return {w.store.Row(n), w.store.Row(n) + w.store.TracePoints};
    }
};

}  // namespace ardel::testing
