// The axes beside the trace picture and the automatic fit of gain and offset. Pure functions
// of the session, so that the widgets only paint what they are given.
#pragma once

#include <string>
#include <vector>

#include "core/session.h"

namespace ardel {

// Tick values at a round step (1, 2 or 5 times a power of ten) that cover [lo, hi], no more
// than maxTicks of them (at least two where the range allows). Empty for an empty or
// non-finite range.
std::vector<double> NiceTicks(double lo, double hi, int maxTicks);

struct AxisTick {
    double position = 0;  // time axis: points of the screen; amplitude axis: picture units
    std::string label;
};

struct TraceAxis {
    std::string unit;
    std::vector<AxisTick> ticks;
};

// The screen's time axis: labels in s, or in ms when the screen is shorter than a second.
// Empty without an open file.
TraceAxis TimeAxis(const Session& s, int maxTicks);
// The active channel's amplitude axis in its unit, at the heights where the drawing puts those
// amplitudes for the present gain and offset. Empty without an open file.
TraceAxis AmplitudeAxis(const Session& s, int maxTicks);

// Fits the active channel's gain and offset so that the current screen's trace fills most of
// the picture's height, centred; then Display. Nothing without an open file.
void AutoScale(Session& s);

}  // namespace ardel
