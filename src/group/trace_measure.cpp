#include "group/trace_measure.h"

#include <array>
#include <cmath>
#include <cstdlib>

#include "core/number_text.h"

namespace ardel::group {

namespace {

// The peak search between two points: the largest pol * sample, the earlier point on ties. The
// end is kept off the trace's last point, as the window always did.
std::int32_t SearchPeak(std::span<const std::int16_t> trace, int pol, std::int32_t from,
                        std::int32_t to) {
    const std::int32_t n = std::int32_t(trace.size());
    if (to >= n - 1) to = n - 2;
    from = std::clamp(from, 0, n - 1);
    std::int32_t peak = from;
    for (std::int32_t i = from + 1; i <= to; ++i)
        if (pol * trace[std::size_t(i)] > pol * trace[std::size_t(peak)]) peak = i;
    return peak;
}

// The points from `from` back to 0: the first one below `level` (in pol * (sample - base)) and
// the crossing between it and its right neighbour. Neither moves when no point is below.
void CrossingBack(std::span<const std::int16_t> trace, int pol, int base, double level,
                  std::int32_t from, std::int32_t& at, double& x) {
    for (std::int32_t i = from; i >= 0; --i) {
        const double v = pol * (trace[std::size_t(i)] - base);
        if (v >= level) continue;
        at = i;
        if (i + 1 >= std::int32_t(trace.size())) {
            x = i;
            return;
        }
        const double right = pol * (trace[std::size_t(i) + 1] - base);
        x = right == v ? double(i) : i + (level - v) / (right - v);
        return;
    }
}

}  // namespace

TraceMeasure MeasureTrace(std::span<const std::int16_t> trace, const MeasureSettings& m,
                          const Recording& r) {
    TraceMeasure t;
    const std::int32_t n = std::int32_t(trace.size());
    if (n < 2) return t;
    const int pol = m.pol < 0 ? -1 : 1;
    // A zero interval was a division by zero: every point count stays 0.
    const bool timed = m.interval > 0;
    auto points = [&](double us) { return timed ? us / m.interval : 0.0; };

    if (m.cursorsShown) {
        t.IPeak = SearchPeak(trace, pol, ToInt32Clamped(m.cursor0), ToInt32Clamped(m.cursor1));
    } else {
        t.IPeak = std::clamp(ToInt32Clamped(points(m.periodStartBaseline)), 0, n - 1);
        if (m.alignment == "Rise-time" || m.alignment == "Rise 50")
            t.IPeak = SearchPeak(
                trace, pol, t.IPeak,
                ToInt32Clamped(points(m.periodToSearchMax + m.periodStartBaseline)));
    }
    const auto at = [&](std::int32_t i) { return int(trace[std::size_t(i)]); };

    // Baseline: the rounded mean of the averaging window that ends where the event window starts.
    {
        const double b = points(m.periodStartBaseline);
        const double a = points(m.periodBaselineAverage);
        const std::int32_t from = ToInt32Clamped(t.IPeak - b);
        const std::int32_t to = ToInt32Clamped(t.IPeak - b + a - 1);
        std::int64_t sum = 0;
        for (std::int32_t i = std::max(from, 0); i <= std::min(to, n - 1); ++i) sum += at(i);
        // Fewer than one point in the window was a division by zero: Base stays 0.
        const double count = std::floor(a);
        if (count >= 1) {
            if (auto base = ToInt16(double(std::int32_t(sum)) / count)) t.Base = *base;
        }
    }
    const int base = t.Base;
    t.PeakAmp = at(t.IPeak) - base;

    // Rise between the two levels of Combo29.
    {
        static constexpr std::array<double, 3> kUpper{0.9, 0.8, 0.7};
        const double f = kUpper[std::size_t(std::clamp(m.riseIndex, 0, 2))];
        const double amp = pol * double(at(t.IPeak) - base);
        std::int32_t upperAt = t.IPeak;
        CrossingBack(trace, pol, base, f * amp, t.IPeak, upperAt, t.upperX);
        std::int32_t lowerAt = upperAt;
        CrossingBack(trace, pol, base, (1 - f) * amp, upperAt, lowerAt, t.lowerX);
        t.Rise = (t.upperX - t.lowerX) * m.interval / 1000.0;
    }

    const double absAmp = std::abs(double(t.PeakAmp));
    // Back from the peak: 90, 50 and 10% of the amplitude, each noted once.
    {
        const std::array<std::pair<double, std::int32_t*>, 3> levels{
            {{0.9, &t.R90}, {0.5, &t.RiseHalf}, {0.1, &t.R10}}};
        std::array<bool, 3> seen{};
        for (std::int32_t i = t.IPeak; i >= 0; --i) {
            const double d = std::abs(double(at(i) - base));
            for (std::size_t k = 0; k < levels.size(); ++k)
                if (!seen[k] && d <= levels[k].first * absAmp) {
                    seen[k] = true;
                    *levels[k].second = t.IPeak - i;
                }
        }
    }
    // Forward from the peak: the decay points.
    {
        const std::array<std::pair<double, std::int32_t*>, 6> levels{{{0.9, &t.D90},
                                                                       {0.8, &t.D80},
                                                                       {0.5, &t.D50},
                                                                       {0.368, &t.D37},
                                                                       {0.2, &t.D20},
                                                                       {0.1, &t.D10}}};
        std::array<bool, 6> seen{};
        for (std::int32_t i = t.IPeak; i < n; ++i) {
            const double d = std::abs(double(at(i) - base));
            for (std::size_t k = 0; k < levels.size(); ++k)
                if (!seen[k] && d <= levels[k].first * absAmp) {
                    seen[k] = true;
                    *levels[k].second = i - t.IPeak;
                }
        }
    }
    std::int64_t area = 0;
    for (std::int32_t i = 0; i < n; ++i) area += at(i) - base;
    t.Area = double(r.Bit2pA2(double(area))) * m.interval / 1000.0;
    t.HalfWidth = double(t.RiseHalf + t.D50) * m.interval / 1000.0;
    t.Decay9037 = double(t.D37 - t.D90) * m.interval / 1000.0;
    return t;
}

}  // namespace ardel::group
