#include "hrv/interval_displays.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/number_text.h"
#include "graph/histograms.h"
#include "hrv/beat_intervals.h"

namespace ardel::hrv {

namespace {

// Bin size 0 would divide by zero in the bounds, which the program met as the runtime's error.
std::optional<float> BinSizeOf(UserDialogs& ui, std::string_view text) {
    const float bin = float(Val(text));
    if (bin == 0) {
        ui.RuntimeError("Division by zero");
        return std::nullopt;
    }
    return bin;
}

// A frequency histogram as the windows show it: left axis "#", the name and "msec" below, the
// file's name and bin size in the title.
bool DrawHistogram(const Session& s, UserDialogs& ui, std::span<const float> values,
                   float lowest, float highest, std::string_view binText, std::string_view name,
                   GraphModel& display) {
    const auto bin = BinSizeOf(ui, binText);
    if (!bin) return false;
    BinCounts counts;
    if (!CountOrSay(ui, values, lowest, highest, *bin, counts)) return false;
    GraphModel g;
    const std::string n(name);
    g.Caption = n;
    g.GraphTitle =
        GraphTitleText(n + " Frequency Histogram  " + s.Label11 + " bin size=" + CStr(*bin));
    g.LeftTitle = "#";
    g.BottomTitle = n + " (msec)";
    g.GraphStyle = kStyleBars;
    g.BarWidth = *bin;
    const std::int32_t bins = counts.upper - counts.lower + 1;
    g.SetPointCount(bins);
    for (std::int32_t i = 0; i < bins; ++i)
        g.AddPoint(float(double(counts.lower + i) * *bin), float(counts.counts[std::size_t(i)]));
    ReplaceDisplay(display, std::move(g));
    return true;
}

}  // namespace

IntervalSeries AcceptIntervals(const EventTable& events, double upper, double lower) {
    IntervalSeries a;
    a.rr = AcceptedIntervals(events, RRBounds{upper, lower});
    for (float rr : a.rr) {
        a.sum += rr;
        a.highest = std::max(a.highest, rr);
    }
    return a;
}

std::vector<float> SuccessiveDifferences(std::span<const float> rr) {
    std::vector<float> d;
    if (rr.size() < 2) return d;
    d.reserve(rr.size() - 1);
    for (std::size_t i = 0; i + 1 < rr.size(); ++i) d.push_back(rr[i + 1] - rr[i]);
    return d;
}

GraphModel TachogramPicture(const IntervalSeries& a) {
    GraphModel g;
    g.Caption = "Tachogram";
    g.GraphTitle = "     Tachogram - Mean RR(ms):" + Format(a.Mean(), "###") + " ms";
    g.LeftTitle = "RR(ms)";
    g.BottomTitle = "Beat#";
    g.GraphStyle = kStyleLine;
    g.SetPointCount(std::int32_t(a.rr.size()));
    for (std::size_t i = 0; i < a.rr.size(); ++i) g.AddPoint(float(i + 1), a.rr[i]);
    return g;
}

void ReplaceDisplay(GraphModel& display, GraphModel drawn) {
    const std::uint64_t before = display.DrawCount();
    display = std::move(drawn);
    // The count starts again with the new model; bring it past the old one in one step.
    while (display.DrawCount() <= before) display.Redraw();
}

GraphModel BlankDisplay(std::string title) {
    GraphModel g;
    g.Caption = title;
    g.GraphTitle = std::move(title);
    return g;
}

std::shared_ptr<GraphModel> BlankDisplayPointer(std::string title) {
    return std::make_shared<GraphModel>(BlankDisplay(std::move(title)));
}

double AutoXMaximum(const GraphModel& g) {
    if (g.PointCount() == 0 || g.SetCount() == 0) return 0;
    double most = g.Points(1).front().x;
    for (const GraphPoint& p : g.Points(1)) most = std::max(most, double(p.x));
    return most;
}

void SpinAxisMaximum(GraphModel& g, bool xAxis, bool up) {
    int& flag = xAxis ? g.XAxisStyleFlag : g.YAxisStyleFlag;
    double& maximum = xAxis ? g.XAxisMaximum : g.YAxisMaximum;
    double shown = flag == kAxisUserDefined ? maximum : xAxis ? AutoXMaximum(g) : g.AutoYMaximum();
    // An axis at 0 (an empty display) would stay at 0 for ever; 1 gives the button a start.
    if (!(shown > 0)) shown = 1;
    maximum = up ? shown * 2 : shown / 2;
    flag = kAxisUserDefined;
    g.Redraw();
}

std::optional<IntervalSeries> DrawIntervalDisplays(const Session& s, UserDialogs& ui,
                                                      const IntervalOptions& options,
                                                      const IntervalDisplays& displays) {
    if (s.events.EventCount() == 0) return std::nullopt;
    IntervalSeries a = AcceptIntervals(s.events, Val(options.upper), Val(options.lower));
    if (a.rr.size() < 2) {
        // The mean of no interval was a division by zero, and one interval gives no delta and
        // no spectrum worth the name: say so instead of drawing nonsense.
        ReplaceDisplay(displays.rrHistogram, BlankDisplay("RR Interval Histogram"));
        ReplaceDisplay(displays.deltaHistogram, BlankDisplay("Delta RR Interval Histogram"));
        ReplaceDisplay(displays.tachogram, BlankDisplay("Tachogram"));
        ReplaceDisplay(displays.own, BlankDisplay(std::string(displays.ownTitle)));
        ui.Message(kTooFewTitle, kTooFewText);
        return std::nullopt;
    }
    // The RR histogram's lowest value stays 0: only the highest is tracked.
    if (!DrawHistogram(s, ui, a.rr, 0.0f, a.highest, options.rrBin, "RR Interval",
                       displays.rrHistogram)) {
        return std::nullopt;
    }
    const std::vector<float> delta = SuccessiveDifferences(a.rr);
    float lowest = 0, highest = 0;
    for (const float d : delta) {
        lowest = std::min(lowest, d);
        highest = std::max(highest, d);
    }
    if (!DrawHistogram(s, ui, delta, lowest, highest, options.deltaBin, "Delta RR Interval",
                       displays.deltaHistogram)) {
        return std::nullopt;
    }
    ReplaceDisplay(displays.tachogram, TachogramPicture(a));
    return a;
}

}  // namespace ardel::hrv
