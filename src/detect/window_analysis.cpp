#include "detect/window_analysis.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <set>
#include <tuple>

#include "core/number_text.h"
#include "detect/complex_peaks.h"

namespace ardel {

std::optional<PointCounts> ComputePointCounts(const Recording& rec, const DetectionParameters& p) {
    PointCounts c;
    const double si = rec.SampleInterval;
    if (!(si > 0)) return std::nullopt;
    c.maxRaw = p.PeriodToSearchMax / si;
    c.leadRaw = p.PeriodStartBaseline / si;
    c.averageRaw = p.PeriodBaselineAverage / si;
    c.decayRaw = p.PeriodFindDecayTime / si;
    if (c.maxRaw < 1 || c.leadRaw < 1 || c.averageRaw < 1 || c.decayRaw < 1) return std::nullopt;
    // A period of more than 2^24 points reaches far beyond the three screens any search can
    // see, and index arithmetic on it would leave the 32-bit range: refused like one too short.
    constexpr double kMaxPoints = 16777216.0;
    if (c.maxRaw > kMaxPoints || c.leadRaw > kMaxPoints || c.averageRaw > kMaxPoints ||
        c.decayRaw > kMaxPoints)
        return std::nullopt;
    auto mp = ToInt32(c.maxRaw), lp = ToInt32(c.leadRaw), ap = ToInt32(c.averageRaw),
         dp = ToInt32(c.decayRaw);
    if (!mp || !lp || !ap || !dp) return std::nullopt;
    c.MaxPoints = *mp;
    c.LeadPoints = *lp;
    c.AveragePoints = *ap;
    c.DecayPoints = *dp;
    c.PeakHalf = std::int32_t(Int(p.NumberPointsPeak / 2.0));
    return c;
}

namespace {

// The first point strictly beyond `best` in direction D, over one strided run of samples.
template <typename Better>
void ScanRun(std::int32_t firstIndex, const std::int16_t* x, std::int32_t count, int stride,
             Peak& best, Better better) {
    if (stride != 1) {
        for (std::int32_t k = 0; k < count; ++k, x += stride)
            if (better(*x, best.value)) best = {firstIndex + k, *x};
        return;
    }
    // One channel: the extreme of each block of 32 points first (a loop the compiler turns
    // into vector code), then the first point of the first block that holds the extreme, so
    // that the first of equal extremes still wins.
    constexpr std::int32_t kBlock = 32;
    std::int16_t m = best.value;
    std::int32_t mBlock = -1;
    std::int32_t k = 0;
    for (; k + kBlock <= count; k += kBlock) {
        std::int16_t bm = x[k];
        for (std::int32_t j = 1; j < kBlock; ++j) bm = better(x[k + j], bm) ? x[k + j] : bm;
        if (better(bm, m)) {
            m = bm;
            mBlock = k;
        }
    }
    if (mBlock >= 0) {
        std::int32_t j = mBlock;
        while (x[j] != m) ++j;
        best = {firstIndex + j, m};
    }
    for (; k < count; ++k)
        if (better(x[k], best.value)) best = {firstIndex + k, x[k]};
}

}  // namespace

std::int64_t SumSamples(const Recording& rec, std::int32_t first, std::int32_t last) {
    std::int64_t sum = 0;
    rec.VisitSamples(first, last, [&sum](std::int32_t, const std::int16_t* x, std::int32_t count,
                                         int stride) {
        std::int64_t part = 0;
        if (stride == 1)
            for (std::int32_t k = 0; k < count; ++k) part += x[k];
        else
            for (std::int32_t k = 0; k < count; ++k) part += x[std::size_t(k) * stride];
        sum += part;
    });
    return sum;
}

Peak ScanExtreme(const Recording& rec, int D, std::int32_t first, std::int32_t last, Peak best) {
    for (std::int64_t k = first; k <= last;) {
        const Recording::Run run = rec.NextRun(k, 1, last, 0);
        if (run.zero) {
            // Points that nothing is held for read as 0 and take part like any other; only
            // the first of them can be strictly beyond what came before.
            if (D * 0 > D * int(best.value)) best = {std::int32_t(k), 0};
        } else {
            rec.VisitSamples(std::int32_t(k), std::int32_t(k + run.count - 1),
                             [&](std::int32_t from, const std::int16_t* x, std::int32_t count,
                                 int stride) {
                                 if (D > 0)
                                     ScanRun(from, x, count, stride, best,
                                             [](std::int16_t a, std::int16_t b) { return a > b; });
                                 else
                                     ScanRun(from, x, count, stride, best,
                                             [](std::int16_t a, std::int16_t b) { return a < b; });
                             });
        }
        k += run.count;
    }
    return best;
}

void AddToArea(std::int32_t& area, double d) {
    if (auto v = ToInt32(double(area) + d)) area = *v;
}

void AddToAreaTimes(std::int32_t& area, double d, std::int64_t count) {
    // Each step rounds area + d with halves to even, so what a step adds depends only on the
    // parity of the area. After one step the parity is in its cycle (of one or two steps), and
    // from there every two steps add the same amount until the 32-bit limit is near, where an
    // overflowing step leaves the area as it is for good.
    const double margin = 2 * std::abs(d) + 4;
    while (count > 0) {
        if (count <= 4) {
            AddToArea(area, d);
            --count;
            continue;
        }
        AddToArea(area, d);
        const std::int64_t before = area;
        AddToArea(area, d);
        AddToArea(area, d);
        count -= 3;
        const std::int64_t delta = std::int64_t(area) - before;
        if (delta == 0) return;
        const double room = delta > 0 ? (double(INT32_MAX) - margin - double(area)) / double(delta)
                                      : (double(area) - double(INT32_MIN) - margin) / double(-delta);
        const std::int64_t jumps =
            room > 0 ? std::min<std::int64_t>(std::int64_t(room), count / 2) : 0;
        area = std::int32_t(area + jumps * delta);
        count -= 2 * jumps;
    }
}

std::optional<float> AreaUnits(const Recording& rec, std::int32_t area) {
    const auto u = rec.TryBit2pA2(area);
    if (!u) return std::nullopt;
    return float(std::abs(double(*u)) * double(rec.SampleInterval) / 1000.0);
}

RiseDecayWalk WalkRiseAndDecay(const DetectContext& c, std::int32_t p, double b, std::int32_t amp) {
    const int D = c.D;
    RiseDecayWalk w;
    // Rise start: raw samples back to within 1% of the amplitude.
    const double riseLevel = 0.01 * amp;
    w.riseStart = std::int32_t(Walk(c.rec, p, -1, std::int64_t(p) - c.counts.LeadPoints, 0, [&](std::int32_t k) {
        const double x = c.Sample(k);
        AddToArea(w.area, x - b);
        return D * (x - b) <= riseLevel;
    }, [&](std::int64_t, std::int64_t count) {
        // A stretch of zeros: all stop, or none does.
        if (D * (0 - b) <= riseLevel) return false;
        AddToAreaTimes(w.area, 0 - b, count);
        return true;
    }));
    // Decay end: three-point smoothed samples down to the fraction.
    const double decayLevel = double(c.params.DecayPercent) * amp;
    w.decayEnd = std::int32_t(Walk(c.rec, std::int64_t(p) + 1, 1, std::int64_t(p) + c.counts.DecayPoints, 1,
                      [&](std::int32_t k) {
                          const double x =
                              c.Sample(k - 1) / 3.0 + c.Sample(k + 1) / 3.0 + c.Sample(k) / 3.0;
                          w.decayValue = x;
                          AddToArea(w.area, x - b);
                          return D * (x - b) <= decayLevel;
                      },
                      [&](std::int64_t, std::int64_t count) {
                          if (D * (0 - b) <= decayLevel) return false;
                          w.decayValue = 0;
                          AddToAreaTimes(w.area, 0 - b, count);
                          return true;
                      }));
    return w;
}

std::int16_t FindBaseline(const DetectContext& c, std::int32_t p, std::int32_t lead,
                          std::int32_t n) {
    const std::int32_t a = p - lead;
    const std::int64_t sum = SumSamples(c.rec, a, a + n - 1);
    if (n == 0) return 0;  // a division by zero in the old program; the mean stays 0
    return ToInt16(double(sum) / double(n)).value_or(0);
}

Peak FindMax(const DetectContext& c, std::int32_t s, std::int32_t len, std::int32_t h) {
    const Recording& rec = c.rec;
    const std::int32_t npp = c.params.NumberPointsPeak;
    Peak best{s, 0};
    // A failing average (outside the buffers) leaves the running value as it stood.
    if (auto v = rec.GetAverageValue(s, h, npp)) best.value = *v;
    const std::int32_t last = s + len - 1;
    // Plain samples: the common case, kept tight because it touches every point.
    // Outside the buffers the average fails and the point is passed over, so only a range
    // wholly inside takes the fast path.
    if (h == 0 && npp == 1 && rec.InBuffers(s) && rec.InBuffers(last))
        return ScanExtreme(rec, c.D, s, last, best);
    // Only the points whose whole average lies in the buffers take part, so the search costs
    // no more than the buffers hold; the sum slides along instead of being taken afresh.
    const std::int64_t n = rec.ScreenPoints();
    const std::int64_t from = std::max<std::int64_t>(s, -n + std::int64_t(h));
    const std::int64_t to = std::min<std::int64_t>(last, 2 * n - 1 - std::int64_t(h));
    if (h < 0 || npp == 0 || from > to) return best;
    std::int64_t sum = SumSamples(rec, std::int32_t(from - h), std::int32_t(from + h));
    for (std::int64_t k = from;; ++k) {
        // A sum beyond 32 bits or a mean beyond 16 fails, as GetAverageValue does.
        if (sum >= INT32_MIN && sum <= INT32_MAX)
            if (auto a = ToInt16(double(sum) / double(npp)))
                if (c.D * int(*a) > c.D * int(best.value)) best = {std::int32_t(k), *a};
        if (k == to) break;
        sum += rec.GetSampleValue(std::int32_t(k + h + 1)) - rec.GetSampleValue(std::int32_t(k - h));
    }
    return best;
}

std::int32_t FindArea(const DetectContext& c, std::int32_t first, std::int32_t last,
                      double baseline) {
    std::int32_t area = 0;
    Walk(c.rec, first, 1, last, 0, [&](std::int32_t k) {
        AddToArea(area, c.Sample(k) - baseline);
        return false;
    }, [&](std::int64_t, std::int64_t count) {
        AddToAreaTimes(area, 0 - baseline, count);
        return true;
    });
    return area;
}

std::int32_t FindTimetoPeak(const DetectContext& c, std::int32_t p, std::int32_t lead,
                            double baseline) {
    const double amp = std::abs(c.Sample(p) - baseline);
    auto stops = [&](double x) { return c.D * (x - baseline) <= 0.01 * amp; };
    return std::int32_t(Walk(c.rec, p, -1, std::int64_t(p) - lead, 0,
                             [&](std::int32_t k) { return stops(c.Sample(k)); },
                             [&](std::int64_t, std::int64_t) { return !stops(0); }));
}

namespace {

// Walks back from `from` to `to` for the first point that lies less than `level` from the
// baseline in direction D, and interpolates the crossing of `line` between that point and the
// previous one. `previous` carries the last value passed over from one walk to the next.
double RiseCrossing(const DetectContext& c, std::int32_t from, std::int32_t to, double b,
                    double level, double line, double& previous, std::int32_t& foundK) {
    std::int32_t k = 0;
    double x = 0;
    bool found = false;
    Walk(c.rec, from, -1, to, 0, [&](std::int32_t j) {
        const double s = c.Sample(j);
        if (c.D * (s - b) < level) {
            k = j;
            x = s;
            found = true;
            return true;
        }
        previous = s;
        return false;
    }, [&](std::int64_t, std::int64_t) {
        if (c.D * (0 - b) < level) return false;  // the first zero stops the walk
        previous = 0;
        return true;
    });
    if (!found) {
        k = 0;
        x = 0;
    }
    foundK = k;
    const double slope = previous - x;
    if (slope == 0) return k;
    const double intercept = x - k * slope;
    return (line - intercept) / slope;
}

}  // namespace

float Detect1090Rise(const DetectContext& c, std::int32_t p, double v, std::int32_t r, double b) {
    const int D = c.D;
    const double t90 = 0.9 * D * v - 0.9 * D * b;
    const double l90 = b + D * t90;
    double previous = 0;
    std::int32_t k90 = 0;
    const double c90 = RiseCrossing(c, p, r, b, t90, l90, previous, k90);
    const double t10 = 0.1 * D * v - 0.1 * D * b;
    const double l10 = b + D * t10;
    std::int32_t k10 = 0;
    const double c10 = RiseCrossing(c, k90, r, b, t10, l10, previous, k10);
    return float((c90 - c10) * double(c.rec.SampleInterval) / 1000.0);
}

std::optional<std::int16_t> Detect50RiseTime(const DetectContext& c, std::int32_t p, double v,
                                             std::int32_t r, double b) {
    const double t50 = 0.5 * c.D * v - 0.5 * c.D * b;
    auto stops = [&](double x) { return c.D * (x - b) < t50; };
    const std::int64_t end = Walk(c.rec, p, -1, r, 0,
                                  [&](std::int32_t k) { return stops(c.Sample(k)); },
                                  [&](std::int64_t, std::int64_t) { return !stops(0); });
    // A walk that finds nothing counts as having found point 0.
    const std::int64_t k50 = end < r ? 0 : end;
    return ToInt16(double(p) - double(k50));
}

float DetectHalfWidth(const DetectContext& c, std::int32_t p, double v, std::int32_t r50,
                      double n, double b) {
    const int D = c.D;
    const double t50 = 0.5 * D * v - 0.5 * D * b;
    const double l50 = b + D * t50;
    const double si = c.rec.SampleInterval;

    const std::int32_t k = p - r50;
    const double x0 = c.Sample(k);
    const double x1 = c.Sample(k + 1);
    double slope = x1 - x0;
    double cL;
    if (slope == 0) {
        cL = k;
    } else {
        const double intercept = x0 - k * slope;
        cL = (l50 - intercept) / slope;
    }

    double previous = x1;
    const std::int32_t last = ToInt32Clamped(RoundHalfEven(p + n - 1));
    auto stops = [&](double x) { return D * (x - b) < t50; };
    const std::int64_t j = Walk(c.rec, std::int64_t(p) + 1, 1, last, 0, [&](std::int32_t at) {
        const double x = c.Sample(at);
        if (stops(x)) return true;
        previous = x;
        return false;
    }, [&](std::int64_t, std::int64_t) {
        if (stops(0)) return false;
        previous = 0;
        return true;
    });
    if (j <= last) {
        const double x = c.Sample(std::int32_t(j));
        slope = x - previous;
        double cR;
        if (slope == 0) {
            cR = double(j);
        } else {
            const double intercept = x - double(j) * slope;
            cR = (l50 - intercept) / slope;
        }
        return float((cR - cL) * si / 1000.0);
    }
    return float((p + n - cL) * si / 1000.0);
}

std::int32_t DetectPrepeak(const DetectContext& c, std::int32_t p) {
    const int D = c.D;
    const std::int32_t lead = c.counts.LeadPoints;
    const std::int32_t avg = c.counts.AveragePoints;
    const Recording& rec = c.rec;

    std::int16_t V[3] = {0, 0, 0};
    std::int32_t P[3] = {0, 0, 0};
    for (int s = 1; s <= 2; ++s) {
        const std::int32_t from = ToInt32Clamped(RoundHalfEven(p - s * lead / 2.0));
        const std::int32_t to = ToInt32Clamped(RoundHalfEven(p - (s - 1) * lead / 2.0));
        const Peak found = ScanExtreme(rec, D, from, to, Peak{from, c.Sample(from)});
        V[s] = found.value;
        P[s] = found.index;
    }
    const Peak m = ScanExtreme(rec, D, P[2], P[1], Peak{P[1], c.Sample(P[1])});
    const std::int16_t M = m.value;
    const std::int32_t q = m.index;
    if (D * V[1] >= D * M) return p;

    const double b2 = double(SumSamples(rec, q - lead, q - lead + avg - 1)) / avg;
    const std::int32_t a2 = std::abs(ToInt32(M - b2).value_or(0));
    const auto a2u = rec.TryBit2pA2(a2);
    if (!a2u || *a2u < c.params.ThresholdAmplitude || q == 0 || !(D * M > D * b2)) return p;

    // The rise limit compares a deviation in bits with a limit in amplitude units; it has
    // always done so.
    std::int32_t area = 0;
    const double riseLimit = 0.05 * double(*a2u);
    Walk(rec, q, -1, std::int64_t(q) - lead, 0, [&](std::int32_t k) {
        const double x = c.Sample(k);
        AddToArea(area, x - b2);
        return D * (x - b2) <= riseLimit;
    }, [&](std::int64_t, std::int64_t count) {
        if (D * (0 - b2) <= riseLimit) return false;
        AddToAreaTimes(area, 0 - b2, count);
        return true;
    });
    const double decayLimit = std::abs(a2 * double(c.params.DecayPercent));
    Walk(rec, std::int64_t(q) + 1, 1, std::int64_t(q) + c.counts.DecayPoints, 0,
         [&](std::int32_t k) {
             const double x = c.Sample(k);
             AddToArea(area, x - b2);
             return std::abs(x - b2) <= decayLimit;
         },
         [&](std::int64_t, std::int64_t count) {
             if (std::abs(0 - b2) <= decayLimit) return false;
             AddToAreaTimes(area, 0 - b2, count);
             return true;
         });
    const auto areaU = rec.TryBit2pA2(area);
    if (areaU && std::abs(double(*areaU)) * double(rec.SampleInterval) / 1000.0 >=
                     c.params.AreaThreshold)
        return q;
    return p;
}

void AddEventMarks(Session& s, double peakX, double peakValue, double baselineX, double baseline,
                   double riseX, double riseValue, double decayX, double decayValue) {
    const DisplayState& d = s.display;
    const int ch = s.recording.ChannelIndex;
    auto& marks = s.display.transientMarks;
    using K = TraceMark::Kind;
    marks.push_back({K::Cross, 255, 0, 0, peakX, d.CalculateYPosition(peakValue, ch), 1});
    marks.push_back({K::Cross, 0, 255, 0, baselineX, d.CalculateYPosition(baseline, ch), 1});
    marks.push_back({K::Point, 255, 255, 0, riseX, d.CalculateYPosition(riseValue, ch), 4});
    marks.push_back({K::Point, 255, 0, 255, decayX, d.CalculateYPosition(decayValue, ch), 4});
}

void Command1(Session& s, UserDialogs& ui) {
    Recording& rec = s.recording;
    if (!rec.FileIsOpen) return;
    const auto counts = ComputePointCounts(rec, s.params);
    if (!counts) {
        ui.Message("Improper Analysis Parameters",
                   "The analysis parameters are not set properly.  Please run 'Suggest Analysis "
                   "Paramters' command under File menu.");
        return;
    }
    const DetectionParameters& prm = s.params;
    const DetectContext c{rec, prm, *counts, prm.PeakDirection == 1 ? 1 : -1};
    const int D = c.D;
    const std::int32_t maxPts = counts->MaxPoints;
    const std::int32_t lead = counts->LeadPoints;
    const std::int32_t avg = counts->AveragePoints;
    const std::int32_t decayPts = counts->DecayPoints;
    const std::int32_t N = rec.ScreenPoints();

    // Working values that outlive one candidate: a statement that fails (an overflow, a
    // division by zero) leaves them as the previous candidate had them.
    std::int16_t noise = 0;
    float ampU = 0;
    float areaU = 0;
    float slope1090 = 0;
    std::int16_t rise50 = 0;

    // With complex peaks the scan goes on from the newest record, which may lie behind the
    // chunk just scanned, and that record is the parent of the next peak search. All the scan
    // goes on is the chunk and the newest record, so coming back to a chunk with the same
    // newest record, or finding a peak that measures the same as one before it in a train,
    // would repeat the same steps for ever. The train then ends, and the scan goes on one chunk
    // past the furthest chunk reached.
    using ScanState =
        std::tuple<std::int32_t, std::uint32_t, std::int32_t, std::int16_t, std::int16_t>;
    auto stateOf = [&s](std::int32_t at) {
        const EventRecord& last = s.events.Last();
        return ScanState{at, std::bit_cast<std::uint32_t>(last.Time), last.Amplitude, last.Baseline,
                         last.Noise};
    };
    std::set<ScanState> chunksSeen;

    std::int32_t i = rec.ScreenBlock == rec.header.lDataSectionPtr ? lead + maxPts : 0;
    std::int32_t furthest = i;
    while (i <= N) {
        if (s.options.ComplexPeak) {
            if (!chunksSeen.insert(stateOf(i)).second) {
                i = furthest + maxPts;
                continue;
            }
            furthest = std::max(furthest, i);
        }
        Peak pk = FindMax(c, i, maxPts, counts->PeakHalf);
        std::int32_t p = pk.index;
        std::int32_t v = pk.value;
        // Joined by "or": only a one-point chunk fails. An extreme on the chunk's edge is a
        // candidate like any other.
        if (p != i + maxPts - 1 || p != i) {
            int counter = 0;
            for (;;) {
                const std::int16_t b = FindBaseline(c, p, lead, avg);
                const std::int32_t amp = std::abs(v - b);
                if (auto u = rec.TryBit2pA2(amp)) ampU = *u;
                if (!(ampU >= prm.ThresholdAmplitude && D * v > D * b)) break;

                const std::int32_t q = DetectPrepeak(c, p);
                if (q < p) {
                    p = q;
                    v = c.Sample(p);
                    continue;
                }

                if (auto m = ToInt32((p - lead) + avg / 2.0))
                    if (auto n16 = ToInt16(double(c.Sample(*m)) - b)) noise = *n16;

                const RiseDecayWalk walk = WalkRiseAndDecay(c, p, b, amp);
                const std::int32_t r = walk.riseStart;
                const std::int32_t e = walk.decayEnd;
                const double xe = walk.decayValue;
                if (auto u = AreaUnits(rec, walk.area)) areaU = *u;
                if (areaU < prm.AreaThreshold) break;

                // One re-centring on the window around the peak, then the measurement again.
                const auto from = ToInt32(p - maxPts / 4.0);
                const auto len = ToInt32(maxPts / 2.0);
                Peak p2 = FindMax(c, from.value_or(p), len.value_or(0), counts->PeakHalf);
                ++counter;
                if (p2.index != p && counter == 1) {
                    p = p2.index;
                    v = p2.value;
                    continue;
                }

                // Only the last record is compared: the twin of a peak found just past the end
                // of the previous screen is dropped when its time is exactly the same.
                const float t = rec.CalculateTime(p);
                if (t == s.events.Last().Time) break;

                const float rise1090 = Detect1090Rise(c, p, v, r, b);
                // A zero rise time is a division by zero: the slope keeps its last value.
                if (rise1090 != 0) slope1090 = float(D * double(ampU) * 0.8 / double(rise1090));
                if (auto r50 = Detect50RiseTime(c, p, v, r, b)) rise50 = *r50;
                const float halfWidth = DetectHalfWidth(c, p, v, rise50, decayPts, b);

                AddEventMarks(s, p, v, p - lead + avg / 2.0, b, r, c.Sample(r), e, xe);
                if (s.options.SoundOn) ui.Beep();

                EventRecord& ev = s.events.Add();
                ev.Time = t;
                ev.Amplitude = amp;
                ev.Noise = noise;
                // 16-bit fields that overflow keep what the slot held.
                if (auto v16 = ToInt16(p - r)) ev.Rise = *v16;
                if (auto v16 = ToInt16(e - p)) ev.Decay = *v16;
                ev.Baseline = b;
                ev.Area = areaU;
                ev.Channel = rec.ChannelIndex;
                if (auto v16 = ToInt16(lead)) ev.BaselineLead = *v16;
                ev.Rise1090 = rise1090;
                ev.HalfWidth = halfWidth;
                ev.Rise50 = rise50;
                ev.PeakDirection = std::int16_t(D);
                ev.Slope1090 = slope1090;
                ev.GroupNumber = 0;
                ev.BurstNumber = 0;
                ev.BurstEventNumber = 0;
                ev.RelativeTime = p;
                if (auto pp = ToInt32(rec.ScreenStartPoint() + p)) ev.PeakPoint = *pp;

                if (s.options.ComplexPeak) {
                    std::set<ScanState> train{stateOf(0)};
                    bool flag = true;
                    while (flag && i < N) {
                        flag = DetectMultiPeak(s, ui, s.events.EventCount(), false);
                        if (flag && !train.insert(stateOf(0)).second) flag = false;
                        auto tb = rec.CalculateTimeBit(s.events.Last().Time);
                        if (tb) i = *tb;
                        if (!flag) i += maxPts;
                    }
                }
                break;
            }
        }
        i += maxPts;
    }

    UpdateTDBGrid(s.events);
    s.events.GridCurrentRow = s.events.EventCount();
}

void Command2(Session& s, UserDialogs& ui) {
    Recording& rec = s.recording;
    if (!rec.FileIsOpen) return;
    rec.ScreenBlock += rec.BlocksPerScreen;
    if (rec.ScreenBlock > double(rec.header.lDataSectionPtr) + rec.TotalBlocks) {
        rec.ScreenBlock -= rec.BlocksPerScreen;
        return;
    }
    Display(s);
    Command1(s, ui);
}

void Command3(Session& s, UserDialogs& ui) {
    Recording& rec = s.recording;
    if (!rec.FileIsOpen) return;
    s.display.NonStopRunning = true;
    const double end = double(rec.header.lDataSectionPtr) + rec.TotalBlocks;
    while (s.display.NonStopRunning) {
        // A header may claim far more samples than the file holds. Once every buffer reads 0
        // for good, no screen can hold an event, and the screens up to the last are passed
        // over to the last one, which is shown and analysed as the run would have left it.
        if (ComputePointCounts(rec, s.params) &&
            rec.ZeroFromNextScreenOn(rec.ScreenBlock + rec.BlocksPerScreen)) {
            double last = rec.ScreenBlock;
            for (double next = last + rec.BlocksPerScreen; !(next > end);
                 next = last + rec.BlocksPerScreen)
                last = next;
            if (last != rec.ScreenBlock) {
                rec.ScreenBlock = last;
                Display(s);
                Command1(s, ui);
                ui.Yield();
                continue;
            }
        }
        rec.ScreenBlock += rec.BlocksPerScreen;
        if (rec.ScreenBlock > end) {
            rec.ScreenBlock -= rec.BlocksPerScreen;
            break;
        }
        Display(s);
        Command1(s, ui);
        ui.Yield();
    }
    s.display.NonStopRunning = false;
}

void Command4(Session& s) {
    s.display.NonStopRunning = false;
    s.display.BatchRunning = false;
    Display(s);
}

}  // namespace ardel
