#include "group/analysis_traces.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/number_text.h"

namespace ardel::group {

std::vector<std::int32_t> TracesToAnalyse(const GrpAnalForm& form, const TraceStore& store) {
    std::vector<std::int32_t> traces;
    if (store.Empty() || store.TracePoints < 1) return traces;
    if (IsSuperimposeType(form.Combo2)) {
        for (std::int32_t t = 1; t <= store.TraceCount; ++t) traces.push_back(t);
    } else if (IsIndividualType(form.Combo2)) {
        traces.push_back(std::clamp(store.CurrentTrace, 0, store.TraceCount));
    } else {
        traces.push_back(0);
    }
    return traces;
}

std::int32_t PointsFloor(double microseconds, double interval) {
    if (!(interval > 0)) return 0;
    return ToInt32Clamped(std::floor(microseconds / interval));
}

std::int32_t PointsRounded(double microseconds, double interval) {
    if (!(interval > 0)) return 0;
    return ToInt32Clamped(RoundHalfEven(microseconds / interval));
}

PeakAndBase FindPeakAndBase(std::span<const std::int16_t> trace, const DetectionParameters& p,
                            double interval, std::string_view alignment) {
    PeakAndBase r;
    const std::int32_t n = std::int32_t(trace.size());
    if (n < 1) return r;
    const int pol = Polarity(p);
    const std::int32_t start = PointsRounded(p.PeriodStartBaseline, interval);
    // A peak position outside the trace is taken at its nearest end, so that every later step
    // reads real points.
    r.IPeak = std::clamp(start, 0, n - 1);
    if (alignment != "Peak") {
        std::int32_t end = PointsRounded(double(p.PeriodToSearchMax) + p.PeriodStartBaseline, interval);
        if (end >= n - 1) end = n - 2;
        std::int32_t best = r.IPeak;
        for (std::int32_t i = r.IPeak; i <= end; ++i)
            if (pol * trace[std::size_t(i)] > pol * trace[std::size_t(best)]) best = i;
        r.IPeak = std::clamp(best, 0, n - 1);
    }
    const std::int32_t back = start;
    const double avg = interval > 0 ? double(p.PeriodBaselineAverage) / interval : 0.0;
    const std::int32_t count = ToInt32Clamped(std::floor(avg));
    if (count >= 1) {
        std::int64_t sum = 0;
        const std::int32_t from = r.IPeak - back;
        const std::int32_t pointsInSum = ToInt32Clamped(RoundHalfEven(avg));
        for (std::int32_t i = from; i < from + pointsInSum; ++i)
            if (i >= 0 && i < n) sum += trace[std::size_t(i)];
        r.Base = ToSample(double(sum) / count);
    }
    return r;
}

std::vector<double> ScaledDifference(std::span<const double> data) {
    const std::size_t n = data.size();
    std::vector<double> d(n, 0.0);
    double dMax = 0, range = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 1 < n) d[i] = data[i + 1] - data[i];
        dMax = std::max(dMax, std::abs(d[i]));
        range = std::max(range, std::abs(data[i]));
    }
    // A flat trace has nothing to scale; its difference stays 0.
    if (dMax > 0)
        for (double& v : d) v *= range / dMax;
    return d;
}

std::int16_t ToSample(double value) {
    if (std::isnan(value)) return 0;
    return std::int16_t(std::clamp(RoundHalfEven(value), -32768.0, 32767.0));
}

ResultRow& AppendResultRow(ResultTable& table, std::string identifier) {
    if (identifier.size() > 60) identifier.resize(60);
    ResultRow& row = table.rows.emplace_back();
    row.Identifier = std::move(identifier);
    return row;
}

std::string IdentifierStart(const Session& s, const GrpAnalForm& form) {
    return s.recording.DataFilePath.filename().string() + " G" + form.Combo1;
}

std::string TraceCountLine(const TraceStore& store, std::int32_t trace) {
    if (trace == 0) return "Number of Traces Averaged : " + CStr(store.TraceCount);
    return "Number of Trace : " + CStr(trace) + " of " + CStr(store.TraceCount);
}

float TraceEventTime(const Session& s, const TraceStore& store, std::int32_t trace) {
    if (trace <= 0 || std::size_t(trace) >= store.TraceEvent.size()) return 0;
    const std::int32_t ev = store.TraceEvent[std::size_t(trace)];
    if (ev < 1 || ev > s.events.EventCount()) return 0;
    return s.events[ev].Time;
}

}  // namespace ardel::group
