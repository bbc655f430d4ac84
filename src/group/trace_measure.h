// The measurement of one trace of the group window: baseline, peak, rise crossings, the decay
// points and the area. The fit starts from it, and the other analyses of the window reuse it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "core/recording.h"

namespace ardel::group {

// What the measurement reads from the window and the detection parameters at the moment of use.
struct MeasureSettings {
    int pol = -1;                      // peak direction, +1 or -1
    double interval = 0;               // microseconds between two points of the channel
    double periodStartBaseline = 0;    // microseconds
    double periodBaselineAverage = 0;  // microseconds
    double periodToSearchMax = 0;      // microseconds
    std::string alignment = "Peak";    // "Peak", "Rise-time", "Rise 50"
    bool cursorsShown = false;
    double cursor0 = 0, cursor1 = 0;   // the cursors' x in points
    int riseIndex = 0;                 // 0 "10-90%", 1 "20-80%", 2 "30-70%"
};

struct TraceMeasure {
    std::int32_t IPeak = 0;
    std::int16_t Base = 0;
    std::int32_t PeakAmp = 0;           // sample units, signed
    double upperX = 0, lowerX = 0;      // the rise crossings, in points
    double Rise = 0;                    // ms
    // Distances in points back from the peak to 90, 50 and 10% of the amplitude.
    std::int32_t R90 = 0, RiseHalf = 0, R10 = 0;
    // Distances in points forward from the peak; 0 for a level never reached.
    std::int32_t D90 = 0, D80 = 0, D50 = 0, D37 = 0, D20 = 0, D10 = 0;
    double Area = 0;                    // unit x ms
    double HalfWidth = 0;               // ms
    double Decay9037 = 0;               // ms
};

// Measures a trace of TracePoints samples. Points that would lie outside the trace are left
// out of the sums, as the old loops skipped the statements that failed.
TraceMeasure MeasureTrace(std::span<const std::int16_t> trace, const MeasureSettings& m,
                          const Recording& r);

}  // namespace ardel::group
