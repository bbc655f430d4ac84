#include "detect/complex_peaks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/event_commands.h"
#include "core/number_text.h"
#include "detect/window_analysis.h"

namespace ardel {

namespace {

std::int32_t Index(double v) {
    return ToInt32Clamped(RoundHalfEven(v));
}

// The peak search on averages from `from` to `to`: the first strictly beyond V wins. An average
// that cannot be taken (its points reach outside the buffers) leaves the last one taken in `a`,
// which is compared all the same; over a run of such points only the first can win, so the
// run is taken as its first point and the search costs no more than the buffers hold.
void PeakOnAverages(const Recording& rec, int D, std::int32_t h, std::int32_t npp,
                    std::int32_t from, std::int32_t to, double& a, double& V, std::int32_t& P) {
    const std::int64_t n = rec.ScreenPoints();
    const std::int64_t lo = -n + std::int64_t(h), hi = 2 * n - 1 - std::int64_t(h);
    for (std::int64_t k = from; k <= to;) {
        const bool fails = h < 0 || k < lo || k > hi;
        if (!fails)
            if (auto x = rec.GetAverageValue(std::int32_t(k), h, npp)) a = *x;
        if (D * a > D * V) {
            V = a;
            P = std::int32_t(k);
        }
        if (fails && k < lo)
            k = std::max(k + 1, std::min<std::int64_t>(lo, std::int64_t(to) + 1));
        else if (fails)
            break;  // beyond the buffers' end: the rest fails too
        else
            ++k;
    }
}

}  // namespace

bool DetectMultiPeak(Session& s, UserDialogs& ui, std::int32_t n, bool replace) {
    Recording& rec = s.recording;
    if (!rec.FileIsOpen || s.events.EventCount() == 0) return false;
    if (n < 1 || n > s.events.EventCount()) return false;
    const auto counts = ComputePointCounts(rec, s.params);
    if (!counts) return false;
    const DetectionParameters& prm = s.params;
    const DetectContext c{rec, prm, *counts, prm.PeakDirection == 1 ? 1 : -1};
    const int D = c.D;
    // The periods stay unrounded here; they are rounded only where an index is formed.
    const double maxD = counts->maxRaw;
    const double leadD = counts->leadRaw;
    const double avgD = counts->averageRaw;
    const double decayD = counts->decayRaw;
    const double si = rec.SampleInterval;

    const EventRecord parent = s.events[n];
    const auto p0opt = rec.CalculateTimeBit(parent.Time);
    if (!p0opt) return false;
    const std::int32_t p0 = *p0opt;
    // A parent so far off the screen that no point of the search comes near the buffers reads
    // zeros throughout and finds nothing; stop before its indices leave the 32-bit range.
    constexpr std::int64_t kReach = std::int64_t(1) << 28;
    const std::int64_t screen = rec.ScreenPoints();
    if (p0 > 2 * screen + kReach || p0 < -screen - kReach) return false;
    const std::int32_t h = std::int32_t(Int(prm.NumberPointsPeak / 2.0));
    const double A = parent.Amplitude;
    const double B = parent.Baseline;
    const std::int32_t npp = prm.NumberPointsPeak;

    // Working values that a failing statement leaves as they stood. An average that cannot be
    // taken (outside the buffers) leaves the last one taken, which is still compared.
    double tau = 0;
    double a = 0;
    float slope1090 = 0;
    std::int16_t rise50 = 0;

    for (int q4 = 0; q4 <= 3; ++q4) {
        // Trough in this quarter. The seed's "+ 1" sits inside the bracket; it always has.
        double T = c.Sample(Index(p0 + q4 * (maxD / 4 + 1)));
        const std::int32_t kFrom = Index(p0 + q4 * maxD / 4 + 1);
        const std::int32_t kTo = Index(p0 + (q4 + 1) * maxD / 4);
        std::int32_t q = kFrom;
        // Over points that read 0 for lack of anything held, only the first can be strictly
        // lower, so a run of them is taken as its first point.
        auto lower = [&](std::int32_t k, double x) {
            if (D * x < D * T) {
                T = x;
                q = k;
            }
        };
        Walk(rec, kFrom, 1, kTo, 0, [&](std::int32_t k) {
            lower(k, c.Sample(k));
            return false;
        }, [&](std::int64_t k, std::int64_t) {
            lower(std::int32_t(k), 0);
            return true;
        });
        // Peak behind the trough, on smoothed values, then refined around it.
        double V = T;
        std::int32_t P = q;
        PeakOnAverages(rec, D, h, npp, q, Index(q + leadD), a, V, P);
        PeakOnAverages(rec, D, h, npp, Index(P - maxD / 8 + 1), Index(P + maxD / 8), a, V, P);
        // Trough again, between the parent's peak and the new one, on three-point means.
        T = c.Sample(p0);
        q = p0 + 1;
        Walk(rec, std::int64_t(p0) + 1, 1, P, 1, [&](std::int32_t k) {
            lower(k, Int(c.Sample(k + 1) / 3.0 + c.Sample(k - 1) / 3.0 + c.Sample(k) / 3.0));
            return false;
        }, [&](std::int64_t k, std::int64_t) {
            lower(std::int32_t(k), 0);
            return true;
        });

        const auto u1 = rec.TryBit2pA2(V - T);
        if (!u1 || std::abs(*u1) < prm.ThresholdAmplitude || !(D * V > D * T)) continue;

        // The parent's decay as one exponential through its amplitude at p0 and the trough.
        double r = D * T > D * B ? std::abs(T - B) : 1.0;
        if (r >= A) r = A - 1;
        {
            const double lg = std::log(r / A);
            const double t = (p0 - q) / lg;
            // log(0), or 0/0: the statement fails and tau keeps its value.
            if (A != 0 && r > 0 && lg != 0 && std::isfinite(t))
                if (auto ti = ToInt32(t)) tau = *ti;
        }
        if (tau == 0) tau = 1;
        const double e = std::exp((p0 - P) / tau);
        double base = (A * D) * e + B;
        if (D * T < D * base) base = T;  // the base never stands above the trough
        if (auto b16 = ToInt16(base)) base = *b16;

        const auto ampOpt = ToInt32(std::abs(V - base));
        if (!ampOpt) continue;
        const std::int32_t amp = *ampOpt;
        const auto ampUOpt = rec.TryBit2pA2(amp);
        if (!ampUOpt) continue;
        const float ampU = *ampUOpt;
        if (ampU < prm.ThresholdAmplitude || !(D * V > D * base)) continue;

        // Rise from the trough at 5% of trough-to-peak; the area is taken from the base. A
        // refinement that put the peak before the trough gives a walk that never starts, and
        // the rise start then stays at the peak, as a loop's counter does.
        std::int32_t area = 0;
        const double riseLevel = 0.05 * D * (V - T);
        const std::int32_t r2 = std::int32_t(Walk(rec, P, -1, q, 0, [&](std::int32_t k) {
            const double x = c.Sample(k);
            AddToArea(area, x - base);
            return D * (x - T) <= riseLevel;
        }, [&](std::int64_t, std::int64_t count) {
            if (D * (0 - T) <= riseLevel) return false;
            AddToAreaTimes(area, 0 - base, count);
            return true;
        }));
        const std::int32_t decayTo = Index(P + decayD);
        const double decayLevel = std::abs(double(prm.DecayPercent) * amp);
        const std::int32_t e2 = std::int32_t(Walk(rec, std::int64_t(P) + 1, 1, decayTo, 0,
                                                  [&](std::int32_t k) {
            const double x = c.Sample(k);
            AddToArea(area, x - base);
            return std::abs(x - base) <= decayLevel;
        }, [&](std::int64_t, std::int64_t count) {
            if (std::abs(0 - base) <= decayLevel) return false;
            AddToAreaTimes(area, 0 - base, count);
            return true;
        }));
        const auto areaUOpt = rec.TryBit2pA2(area);
        if (!areaUOpt) continue;
        const float areaU = float(std::abs(double(*areaUOpt)) * si / 1000.0);
        if (areaU < prm.AreaThreshold) continue;

        // The 10-90% rise is measured from the trough, not the base.
        const float rise1090 = Detect1090Rise(c, P, V, r2, T);
        if (rise1090 != 0) slope1090 = float(D * double(ampU) * 0.8 / double(rise1090));
        // The point count goes in where the scan passes an index: the walk ends early. This
        // is how the double-peak measure has always been taken.
        if (auto r50 = Detect50RiseTime(c, P, V, P - r2, T)) rise50 = *r50;
        const float halfWidth = DetectHalfWidth(c, P, V, rise50, decayD, base);
        const float t = rec.CalculateTime(P);

        auto fill = [&](EventRecord& ev) {
            ev.Time = t;
            ev.Amplitude = amp;
            ev.Noise = parent.Noise;
            if (auto v16 = ToInt16(P - r2)) ev.Rise = *v16;
            if (auto v16 = ToInt16(e2 - P)) ev.Decay = *v16;
            if (auto v16 = ToInt16(base)) ev.Baseline = *v16;
            ev.Area = areaU;
            ev.Channel = rec.ChannelIndex;
            if (auto v16 = ToInt16(leadD)) ev.BaselineLead = *v16;
            ev.Rise1090 = rise1090;
            ev.HalfWidth = halfWidth;
            ev.Slope1090 = slope1090;
            ev.Rise50 = rise50;
            ev.RelativeTime = P;
            if (auto pp = ToInt32(rec.ScreenStartPoint() + P)) ev.PeakPoint = *pp;
        };

        if (replace) {
            for (std::int32_t m = 1; m <= s.events.EventCount(); ++m) {
                if (s.events[m].Time == t) {
                    fill(s.events[m]);
                    UpdateTDBGrid(s.events);
                    return false;
                }
            }
        }
        EventRecord& ev = s.events.Add();
        fill(ev);
        ev.GroupNumber = 0;
        ev.BurstNumber = 0;
        ev.BurstEventNumber = 0;
        ev.PeakDirection = std::int16_t(D);

        AddEventMarks(s, P, V, P - leadD + avgD / 2, base, r2, c.Sample(r2), e2, c.Sample(e2));
        if (s.options.SoundOn) ui.Beep();
        return true;
    }
    return false;
}

void menu_DoublePeak_Click(Session& s, UserDialogs& ui) {
    if (!ClampSelectedEvent(s)) return;
    DetectMultiPeak(s, ui, s.events.CurrentEvent, true);
    UpdateTDBGrid(s.events);
    s.events.GridCurrentRow = s.events.EventCount();
}

void menu_ScanDoublePeak(Session& s, UserDialogs& ui) {
    ScanEachEvent(s, ui, menu_DoublePeak_Click);
}

}  // namespace ardel
