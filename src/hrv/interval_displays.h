// What the spectral and the geometrical windows share: the RR intervals accepted between the
// two bounds, their histogram and delta histogram, and the tachogram picture. Each display is a
// graph model, so its values are a graph's value text like any graph window's.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/event_table.h"
#include "core/session.h"
#include "core/user_dialogs.h"
#include "graph/graph_model.h"

namespace ardel::hrv {

// The intervals within the bounds, in the table's order (no sort: unsorted events give
// negative intervals, which the bounds then judge like any other).
struct IntervalSeries {
    std::vector<float> rr;  // accepted interval k at rr[k - 1]
    double sum = 0;
    float highest = 0;      // from 0, so never below it
    double Mean() const { return rr.empty() ? 0.0 : sum / double(rr.size()); }
};

// RR = t(i) - t(i-1) for i = 2..N, kept when lower < RR < upper (both strict). A dropped
// interval leaves no gap: the next one is again taken from its direct neighbours and moves up
// one place in the series.
IntervalSeries AcceptIntervals(const EventTable& events, double upper, double lower);

// The control texts both windows read at the moment of use.
struct IntervalOptions {
    std::string_view upper;     // Combo2, RRUBound
    std::string_view lower;     // Combo3, RRLBound
    std::string_view rrBin;     // Combo1, RRBinSize
    std::string_view deltaBin;  // Combo4, DeltaRRBinSize
};

// The displays both windows draw first. Each is replaced as it is drawn, so a "Too many bins"
// in the delta histogram leaves the fresh RR histogram and the older rest.
struct IntervalDisplays {
    GraphModel& rrHistogram;     // Graph1
    GraphModel& deltaHistogram;  // Graph2
    GraphModel& tachogram;       // Picture2
    // The window's own display (the spectrum, the Lorenz plot), cleared with the others.
    GraphModel& own;
    std::string_view ownTitle;
};

inline constexpr std::string_view kTooFewTitle = "Too Few RR Intervals";
inline constexpr std::string_view kTooFewText =
    "Fewer than two RR intervals lie within the bounds.  Please change the bounds and try again.";

// "Generate Plots" up to the tachogram: no events end it silently; fewer than two accepted
// intervals clear the displays and give kTooFewText; a histogram with too many bins (or a value
// outside its bins, or a bin size of 0) ends it with the program's message. Returns the
// accepted intervals when all three displays are drawn.
std::optional<IntervalSeries> DrawIntervalDisplays(const Session& s, UserDialogs& ui,
                                                      const IntervalOptions& options,
                                                      const IntervalDisplays& displays);

// RR(i + 1) - RR(i) of the accepted series, signed.
std::vector<float> SuccessiveDifferences(std::span<const float> rr);

// The tachogram: RR against the beat's place in the accepted series, in blue, with the mean in
// the heading.
GraphModel TachogramPicture(const IntervalSeries& a);

// Replaces a display's contents, keeping its draw count rising so a window sees the change.
void ReplaceDisplay(GraphModel& display, GraphModel drawn);

// An empty display that shows only its title.
GraphModel BlankDisplay(std::string title);
std::shared_ptr<GraphModel> BlankDisplayPointer(std::string title);

// The largest x of the first set, 0 without points: the axis maximum the display shows when
// the user has set none.
double AutoXMaximum(const GraphModel& g);

// A spin button on a display's axis: up doubles the axis maximum, down halves it, starting from
// what the axis shows; the value goes straight to the axis.
void SpinAxisMaximum(GraphModel& g, bool xAxis, bool up);

}  // namespace ardel::hrv
