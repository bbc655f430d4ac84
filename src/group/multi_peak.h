// Multi peak analysis: every peak and trough of a trace between the two cursors, found where the
// smoothed first differential crosses zero, one results row per trace.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

inline constexpr const char* kMultiPeakIdle = "Analyze";
// What a click during a run sets the caption to; the run stops when it reads so.
inline constexpr const char* kMultiPeakStopped = "Start";

// The first differential of a trace (per ms), scaled to the trace's range, stored as 16 bits,
// through the Gaussian low-pass at a tenth of the sampling rate and a 5-point moving average
// (points 2 to TracePoints - 4; the others stay 0).
std::vector<double> SmoothedDifferential(std::span<const std::int16_t> trace, double interval);

// The turning points between the points `from` and `to` (either order) of a smoothed
// differential: +i for a peak (e(i-1) > 0, e(i) <= 0), -i for a trough (e(i-1) < 0,
// e(i) > 0), each only when it lies more than minDistance points beyond the last one kept (the
// first beyond point 0).
std::vector<std::int32_t> TurningPoints(std::span<const double> e, double from, double to,
                                        double minDistance);

// One run over the traces of the display type; with the cursors hidden no point is found.
// Prints marks in the "Average" and "Individual" types, appends a row per trace, yields between
// traces and stops when the caption has been set to "Start".
void MultiPeakAnalysis(Session& s, UserDialogs& ui, GroupWindow& w);

// Command16's click: while running ("Interrupt") it asks the run to stop; otherwise it runs.
void MultiPeakButton(Session& s, UserDialogs& ui, GroupWindow& w);

}  // namespace ardel::group
