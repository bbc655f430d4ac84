#include "group/multi_peak.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/number_text.h"
#include "detect/digital_filter.h"
#include "group/analysis_traces.h"
#include "group/group_display.h"

namespace ardel::group {

std::vector<double> SmoothedDifferential(std::span<const std::int16_t> trace, double interval) {
    const std::size_t n = trace.size();
    std::vector<double> e(n, 0.0);
    if (n < 2 || !(interval > 0)) return e;
    const double msPerPoint = interval / 1000.0;
    std::vector<double> d(n, 0.0);
    double dMax = 0, range = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 1 < n) d[i] = (double(trace[i + 1]) - trace[i]) / msPerPoint;
        dMax = std::max(dMax, std::abs(d[i]));
        range = std::max(range, std::abs(double(trace[i])));
    }
    // A flat trace has no slope to scale.
    for (double& v : d) v = ToSample(dMax > 0 ? v * range / dMax : v);
    const std::vector<double> f = GaussianFilter(std::span<const double>(d), 0.1);
    for (std::size_t i = 2; i + 4 <= n; ++i)
        e[i] = f[i] / 5 + f[i - 1] / 5 + f[i + 1] / 5 + f[i - 2] / 5 + f[i + 2] / 5;
    return e;
}

std::vector<std::int32_t> TurningPoints(std::span<const double> e, double from, double to,
                                        double minDistance) {
    std::vector<std::int32_t> points;
    const std::int32_t n = std::int32_t(e.size());
    const std::int32_t lo = std::max(1, ToInt32Clamped(std::floor(std::min(from, to))) + 1);
    const std::int32_t hi = std::min(n - 1, ToInt32Clamped(std::floor(std::max(from, to))));
    std::int32_t last = 0;
    for (std::int32_t i = lo; i <= hi; ++i) {
        const double before = e[std::size_t(i - 1)], here = e[std::size_t(i)];
        if (before > 0 && here <= 0 && i - std::abs(last) > minDistance) {
            last = i;
            points.push_back(i);
        } else if (before < 0 && here > 0 && i - std::abs(last) > minDistance) {
            last = -i;
            points.push_back(-i);
        }
    }
    return points;
}

namespace {

void AnalyseTrace(Session& s, GroupWindow& w, std::int32_t trace, bool prints) {
    const TraceStore& store = w.store;
    const GrpAnalForm& form = w.form;
    const Recording& rec = s.recording;
    const double interval = rec.SampleInterval;
    const std::span<const std::int16_t> x(store.Row(trace), std::size_t(store.TracePoints));
    const PeakAndBase pb = FindPeakAndBase(x, s.params, interval, form.Combo3);

    std::vector<std::int32_t> points;
    if (form.Check1) {
        const std::vector<double> e = SmoothedDifferential(x, interval);
        points = TurningPoints(e, form.Line1X[0], form.Line1X[1], Val(form.Combo22));
    }
    if (prints && points.size() >= 2) {
        for (std::size_t k = 0; k < points.size(); ++k) {
            const std::int32_t i = std::abs(points[k]);
            w.overlay.marks.emplace_back(i, x[std::size_t(i)]);
            w.overlay.labels.push_back({i, x[std::size_t(i)], CStr(std::int64_t(k + 1)), points[k] > 0});
            w.overlay.text.push_back(CStr(std::int64_t(k + 1)) + (points[k] > 0 ? " Peak" : " Trough") +
                                     " : " + Format(double(rec.Bit2pA(x[std::size_t(i)])), "#,##0.00") +
                                     rec.ADCUnits + " at " + Format(i * interval / 1000.0, "#0.00") +
                                     "ms");
        }
    }
    ResultRow& row = AppendResultRow(s.results, IdentifierStart(s, form) + " T" +
                                                    CStr(trace) + " MP");
    row.Values[0] = rec.Bit2pA(pb.Base);
    for (std::size_t k = 0; k < points.size() && 2 * (k + 1) < row.Values.size(); ++k) {
        const std::int32_t i = std::abs(points[k]);
        row.Values[2 * k + 1] = rec.Bit2pA(x[std::size_t(i)]);
        row.Values[2 * k + 2] = float(i * double(interval) / 1000.0);
    }
}

}  // namespace

void MultiPeakAnalysis(Session& s, UserDialogs& ui, GroupWindow& w) {
    GroupDisplay(s, w);
    const std::vector<std::int32_t> traces = TracesToAnalyse(w.form, w.store);
    if (traces.empty()) return;
    const bool prints = w.form.Combo2 == "Average" || w.form.Combo2 == "Individual";
    for (std::int32_t t : traces) {
        w.form.Command16 = kInterruptCaption;
        AnalyseTrace(s, w, t, prints);
        ui.Yield();
        if (w.form.Command16 == kMultiPeakStopped) break;
    }
    w.form.Command16 = kMultiPeakIdle;
}

void MultiPeakButton(Session& s, UserDialogs& ui, GroupWindow& w) {
    if (w.form.Command16 == kInterruptCaption) {
        w.form.Command16 = kMultiPeakStopped;
        return;
    }
    MultiPeakAnalysis(s, ui, w);
}

}  // namespace ardel::group
