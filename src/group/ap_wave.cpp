#include "group/ap_wave.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/number_text.h"
#include "detect/digital_filter.h"
#include "group/analysis_traces.h"
#include "group/group_display.h"

namespace ardel::group {

namespace {

constexpr double kFilterCutoff = 0.1;  // of the sampling rate

// x of the crossing of `level` between point i - 1 and i; i itself when the two samples are
// equal or there is no left neighbour.
double Crossing(std::span<const std::int16_t> s, std::int32_t i, double level) {
    if (i < 1) return i;
    const double a = s[std::size_t(i - 1)], b = s[std::size_t(i)];
    if (a == b) return i;
    return (i - 1) + (level - a) / (b - a);
}

double LevelInSamples(const Recording& rec, double amplitude) {
    // A recording without a range cannot convert; the level stays 0.
    return double(rec.pA2Bit(amplitude).value_or(0));
}

// Centred moving average of half-width h; points beyond either end are left out of the count.
std::vector<double> MovingAverage(std::span<const double> x, std::int32_t h) {
    const std::int64_t n = std::int64_t(x.size());
    if (h <= 0) return {x.begin(), x.end()};
    std::vector<double> prefix(std::size_t(n) + 1, 0.0);
    for (std::int64_t i = 0; i < n; ++i) prefix[std::size_t(i + 1)] = prefix[std::size_t(i)] + x[std::size_t(i)];
    std::vector<double> out(static_cast<std::size_t>(n), 0.0);
    for (std::int64_t i = 0; i < n; ++i) {
        const std::int64_t lo = std::max<std::int64_t>(0, i - h), hi = std::min<std::int64_t>(n - 1, i + h);
        out[std::size_t(i)] = (prefix[std::size_t(hi + 1)] - prefix[std::size_t(lo)]) / double(hi - lo + 1);
    }
    return out;
}

// Distances back from the peak at which Pol * (sample - base) first falls to each fraction of
// Pol * amp; 0 where the level is never reached.
std::array<std::int32_t, 4> RiseDistances(std::span<const std::int16_t> s, std::int32_t iPeak,
                                          std::int32_t base, std::int32_t amp, int pol) {
    static constexpr std::array<double, 4> fractions = {0.9, 0.5, 0.1, 0.001};
    std::array<std::int32_t, 4> d{};
    std::array<bool, 4> found{};
    for (std::int32_t i = iPeak; i >= 0; --i) {
        const double v = double(pol) * (s[std::size_t(i)] - base);
        for (std::size_t f = 0; f < fractions.size(); ++f) {
            if (!found[f] && v <= fractions[f] * pol * amp) {
                found[f] = true;
                d[f] = iPeak - i;
            }
        }
        if (found[3]) break;
    }
    return d;
}

void FindThreshold(ApMeasurement& m, std::span<const std::int16_t> s, std::int32_t preEvent,
                   double msPerPoint, int pol, ApRoutine routine,
                   std::span<const double> secondDifferential) {
    const std::int32_t n = std::int32_t(s.size());
    // First estimate: the steepest rise in the PreEvent points before the peak; going back,
    // a later point keeps the place on a tie.
    const std::int32_t from = std::max(0, m.IPeak - preEvent);
    double best = -std::numeric_limits<double>::infinity();
    m.ThreshIndex = std::max(0, m.IPeak - 1);
    for (std::int32_t i = m.IPeak - 1; i >= from; --i) {
        if (i + 1 >= n) continue;
        const double d = pol * (s[std::size_t(i + 1)] - s[std::size_t(i)]) / msPerPoint;
        if (d > best) {
            best = d;
            m.ThreshIndex = i;
        }
    }
    if (routine == ApRoutine::ThirdDifferential) {
        best = -std::numeric_limits<double>::infinity();
        const std::int32_t estimate = m.ThreshIndex;
        for (std::int32_t i = from; i < estimate && i + 3 < n; ++i) {
            const double d3 = (double(s[std::size_t(i + 3)]) - 3.0 * s[std::size_t(i + 2)] +
                               3.0 * s[std::size_t(i + 1)] - s[std::size_t(i)]) / msPerPoint;
            if (pol * d3 > best) {
                best = pol * d3;
                m.ThreshIndex = i;
            }
        }
    } else {
        best = -std::numeric_limits<double>::infinity();
        const std::int32_t last =
            std::min<std::int32_t>(m.ThreshIndex, std::int32_t(secondDifferential.size()));
        std::int32_t found = -1;
        for (std::int32_t i = 0; i < last; ++i) {
            if (pol * secondDifferential[std::size_t(i)] > best) {
                best = pol * secondDifferential[std::size_t(i)];
                found = i;
            }
        }
        if (found >= 0) m.ThreshIndex = found;
    }
    m.ThreshValue = s[std::size_t(std::clamp(m.ThreshIndex, 0, n - 1))];
}

void MeasureSlopeAndWidth(ApMeasurement& m, const Recording& rec, const GrpAnalForm& form,
                          std::span<const std::int16_t> s, int pol, double msPerPoint) {
    const std::int32_t n = std::int32_t(s.size());
    const double yt = Val(form.Combo20), ym = Val(form.Combo19);
    auto value = [&](std::int32_t i) { return double(pol) * rec.Bit2pA(s[std::size_t(i)]); };
    // Slope between the first crossings of Yt and then of Ym on the way up.
    std::int32_t i = 1;
    for (; i <= m.IPeak && i < n; ++i) {
        if (value(i) > pol * yt) {
            m.SlopeX1 = Crossing(s, i, LevelInSamples(rec, yt));
            break;
        }
    }
    for (; i <= m.IPeak && i < n; ++i) {
        if (value(i) > pol * ym) {
            m.SlopeX2 = Crossing(s, i, LevelInSamples(rec, ym));
            break;
        }
    }
    // Crossings that coincide give no slope; it stays 0.
    const double run = (m.SlopeX2 - m.SlopeX1) * msPerPoint;
    if (run != 0) {
        m.Slope = float((ym - yt) / run);
        m.Intercept = float(ym - double(m.Slope) * m.SlopeX2 * msPerPoint);
    }
    // Width at a constant above threshold.
    const double level = double(rec.Bit2pA(m.ThreshValue)) + pol * Val(form.Combo14);
    const double levelSamples = LevelInSamples(rec, level);
    m.WidthLevel = levelSamples;
    for (i = std::max(0, m.ThreshIndex); i <= m.IPeak && i < n; ++i) {
        if (value(i) > pol * level) {
            m.WidthX1 = Crossing(s, i, levelSamples);
            break;
        }
    }
    for (i = m.IPeak; i < n; ++i) {
        if (value(i) < pol * level) {
            m.WidthX2 = Crossing(s, i, levelSamples);
            break;
        }
    }
    m.Width = float((m.WidthX2 - m.WidthX1) * msPerPoint);
}

void MeasureDecayAndAhp(ApMeasurement& m, const Session& s, const TraceStore& store,
                        std::int32_t trace, std::span<const std::int16_t> x, int pol,
                        std::pair<int, int> decayPair, double interval) {
    const std::int32_t n = std::int32_t(x.size());
    const double msPerPoint = interval / 1000.0;
    auto rel = [&](std::int32_t i) { return double(pol) * (x[std::size_t(i)] - m.Base); };
    std::array<bool, 7> found{};
    for (std::int32_t i = m.IPeak; i < n; ++i) {
        for (std::size_t f = 0; f < kApDecayFractions.size(); ++f) {
            if (!found[f] && rel(i) <= pol * kApDecayFractions[f] * m.Amp) {
                found[f] = true;
                m.decayDistance[f] = i - m.IPeak;
                m.decaySample[f] = x[std::size_t(i)];
            }
        }
        if (std::all_of(found.begin(), found.end(), [](bool f) { return f; })) break;
    }
    m.Decay = float((m.decayDistance[std::size_t(decayPair.second)] -
                     m.decayDistance[std::size_t(decayPair.first)]) * msPerPoint);

    // The AHP window ends where the trace last stands above 0.1 % of the amplitude, or at the
    // next event, whichever the rule takes; never past the trace.
    m.D0 = m.decayDistance[6];
    const std::int32_t toEnd = n - 1 - m.IPeak;
    m.WEnd = toEnd;
    for (std::int32_t i = n - 1; i >= m.IPeak + m.D0; --i) {
        if (rel(i) >= pol * 0.001 * m.Amp) {
            m.WEnd = i - m.IPeak;
            break;
        }
    }
    if (trace > 0 && trace < s.events.EventCount()) {
        const std::int32_t ev = store.TraceEvent[std::size_t(trace)];
        if (ev >= 1 && ev < s.events.EventCount()) {
            const double dist = RoundHalfEven((double(s.events[ev + 1].Time) - s.events[ev].Time) *
                                              1000.0 / interval);
            m.WEnd = (dist > 0 && dist < toEnd) ? std::int32_t(dist) : toEnd;
        }
    }
    if (m.D0 > m.WEnd) m.D0 = 0;

    const std::int32_t from = std::clamp(m.IPeak + m.D0, 0, n - 1);
    const std::int32_t to = std::clamp(m.IPeak + m.WEnd, 0, n - 1);
    m.AHPIndex = from;
    m.AHPValue = x[std::size_t(from)];
    for (std::int32_t i = from; i <= to; ++i) {
        const std::int32_t v = x[std::size_t(i)];
        if (v < m.AHPValue) {
            m.AHPValue = v;
            m.AHPIndex = i;
        }
        if (v < m.Base) m.AHPSum += v - m.Base;
    }
    m.AHPAmp = m.AHPValue - m.Base;
    m.PeakToAHP = m.Amp - m.AHPAmp;
    m.AHPArea = float(double(s.recording.Bit2pA2(double(m.AHPSum))) * msPerPoint);
    for (std::int32_t i = m.IPeak; i <= m.AHPIndex; ++i) {
        if (double(pol) * (x[std::size_t(i)] - m.Base - m.AHPAmp) <= pol * 0.1 * m.PeakToAHP) {
            m.PeakTo90AHP = float((i - m.IPeak) * msPerPoint);
            break;
        }
    }
}

}  // namespace

std::pair<int, int> DecayPair(std::string_view combo12) {
    const int start = combo12.starts_with("80") ? 1 : 0;
    const auto dash = combo12.find('-');
    const std::string_view end = dash == std::string_view::npos ? "37%" : combo12.substr(dash + 1);
    int stop = 3;
    if (end.starts_with("50")) stop = 2;
    else if (end.starts_with("37")) stop = 3;
    else if (end.starts_with("20")) stop = 4;
    else if (end.starts_with("10")) stop = 5;
    else if (end.starts_with("0")) stop = 6;
    return {start, stop};
}

std::vector<double> SharpenedSecondDifferential(std::span<const std::int16_t> trace,
                                                std::int32_t smoothing) {
    std::vector<double> x(trace.begin(), trace.end());
    std::vector<double> second(x.size(), 0.0);
    const std::int32_t half = std::max(0, smoothing) / 2;
    for (int round = 1; round <= 3; ++round) {
        const std::vector<double> d = ScaledDifference(x);
        for (std::size_t i = 0; i < x.size(); ++i) x[i] = ToSample(x[i] + d[i]);
        x = MovingAverage(GaussianFilter(std::span<const double>(x), kFilterCutoff), half);
        if (round == 2) {
            for (std::size_t i = 0; i + 1 < x.size(); ++i) second[i] = x[i + 1] - x[i];
        }
    }
    return second;
}

ApMeasurement MeasureActionPotential(const Session& s, const GrpAnalForm& form,
                                     const TraceStore& store, std::int32_t trace,
                                     ApRoutine routine,
                                     std::span<const double> secondDifferential) {
    ApMeasurement m;
    const double interval = s.recording.SampleInterval;
    const std::int32_t n = store.TracePoints;
    if (n < 1 || !(interval > 0) || trace < 0 || trace > store.TraceCount) return m;
    const double msPerPoint = interval / 1000.0;
    const std::span<const std::int16_t> x(store.Row(trace), std::size_t(n));
    const int pol = Polarity(s.params);

    const PeakAndBase pb = FindPeakAndBase(x, s.params, interval, form.Combo3);
    m.IPeak = pb.IPeak;
    m.Base = pb.Base;
    m.Amp = x[std::size_t(m.IPeak)] - m.Base;
    m.D10R = RiseDistances(x, m.IPeak, m.Base, m.Amp, pol)[2];

    FindThreshold(m, x, PointsFloor(s.params.PeriodStartBaseline, interval), msPerPoint, pol,
                  routine, secondDifferential);
    if (form.Check2) {
        m.Base = m.ThreshValue;
        m.Amp = x[std::size_t(m.IPeak)] - m.Base;
    }
    const auto rise = RiseDistances(x, m.IPeak, m.Base, m.Amp, pol);
    m.D90R = rise[0];
    m.RiseHalf = rise[1];
    m.D10R = rise[2];
    m.D0R = rise[3];
    m.Rise = float((m.D10R - m.D90R) * msPerPoint);

    MeasureSlopeAndWidth(m, s.recording, form, x, pol, msPerPoint);
    MeasureDecayAndAhp(m, s, store, trace, x, pol, DecayPair(form.Combo12), interval);
    m.HalfWidth = float((m.RiseHalf + m.decayDistance[2]) * msPerPoint);

    std::int64_t positive = 0;
    for (std::int16_t v : x)
        if (v > m.Base) positive += v - m.Base;
    m.PositiveArea = float(std::abs(double(s.recording.Bit2pA2(double(positive)))) * msPerPoint);
    return m;
}

namespace {

void PrintMeasurement(const Session& s, const GrpAnalForm& form, const TraceStore& store,
                      std::int32_t trace, const ApMeasurement& m, GroupOverlay& overlay) {
    const Recording& rec = s.recording;
    const std::string& unit = rec.ADCUnits;
    auto t = [](double v) { return Format(v, "#0.00"); };
    auto a = [](double v) { return Format(v, "#,##0.00"); };
    overlay.text.push_back(TraceCountLine(store, trace));
    overlay.text.push_back("Rise10-90% : " + t(m.Rise) + "ms  Decay" + form.Combo12 + " : " +
                           t(m.Decay) + "ms    Half-width : " + t(m.HalfWidth) + "ms");
    overlay.text.push_back("Peak Amplitude : " + a(rec.Bit2pA2(m.Amp)) + unit +
                           "    Positive Area : " + a(m.PositiveArea) + unit + "ms");
    overlay.text.push_back("Threshold : " + a(rec.Bit2pA(m.ThreshValue)) + unit + "  Width at " +
                           form.Combo14 + unit + " above threshold : " + t(m.Width) + "ms");
    overlay.text.push_back("AHP Peak : " + a(rec.Bit2pA2(m.AHPAmp)) + unit + "    AHP Area : " +
                           a(m.AHPArea) + unit + "ms");
    overlay.text.push_back("Peak to 90% AHP Time : " + t(m.PeakTo90AHP) + "ms");
    overlay.text.push_back("Slope : " + a(m.Slope) + unit + "/ms");

    const std::span<const std::int16_t> x(store.Row(trace), std::size_t(store.TracePoints));
    auto mark = [&](double point) {
        const std::int32_t i = std::clamp(ToInt32Clamped(RoundHalfEven(point)), 0,
                                          store.TracePoints - 1);
        overlay.marks.emplace_back(i, x[std::size_t(i)]);
    };
    mark(m.IPeak);
    mark(m.ThreshIndex);
    mark(m.IPeak - m.D90R);
    mark(m.IPeak - m.D10R);
    mark(m.WidthX1);
    mark(m.WidthX2);
    mark(m.SlopeX1);
    mark(m.SlopeX2);
    mark(m.AHPIndex);
    // The width as a level line between its crossings, the slope as the chord between Yt and Ym.
    if (m.WidthX2 > m.WidthX1) overlay.lines.push_back({m.WidthX1, m.WidthLevel, m.WidthX2, m.WidthLevel});
    if (m.SlopeX2 != m.SlopeX1)
        overlay.lines.push_back({m.SlopeX1, LevelInSamples(rec, Val(form.Combo20)), m.SlopeX2,
                                 LevelInSamples(rec, Val(form.Combo19))});
}

void AppendRow(Session& s, const GrpAnalForm& form, const TraceStore& store, std::int32_t trace,
               const ApMeasurement& m) {
    const Recording& rec = s.recording;
    ResultRow& row = AppendResultRow(
        s.results, IdentifierStart(s, form) + " T" + CStr(trace) + " AP");
    auto& v = row.Values;
    v[0] = rec.Bit2pA2(m.Amp);
    v[1] = TraceEventTime(s, store, trace);
    v[2] = rec.Bit2pA(m.Base);
    v[3] = m.Rise;
    v[4] = m.PositiveArea;
    v[5] = m.HalfWidth;
    if (form.Combo1 == "254" && trace > 0 && std::size_t(trace) < store.TraceEvent.size()) {
        const std::int32_t ev = store.TraceEvent[std::size_t(trace)];
        if (ev >= 1 && ev <= s.events.EventCount()) {
            v[6] = s.events[ev].BurstNumber;
            v[7] = s.events[ev].BurstEventNumber;
        }
    }
    v[8] = m.Slope;
    v[9] = rec.Bit2pA(store.At(trace, m.IPeak));
    v[10] = m.PeakTo90AHP;
    v[11] = rec.Bit2pA(m.ThreshValue);
    v[12] = m.Width;
    v[13] = m.AHPArea;
    v[14] = rec.Bit2pA2(m.AHPAmp);
    v[15] = m.Decay;
}

const char* IdleCaption(ApRoutine routine) {
    return routine == ApRoutine::ThirdDifferential ? kApCaption1 : kApCaption2;
}

std::string& Caption(GrpAnalForm& form, ApRoutine routine) {
    return routine == ApRoutine::ThirdDifferential ? form.Command17 : form.Command4;
}

}  // namespace

void ApWaveAnalysis(Session& s, UserDialogs& ui, GroupWindow& w, ApRoutine routine) {
    GrpAnalForm& form = w.form;
    if (Val(form.Combo20) >= Val(form.Combo19)) {
        ui.Message("Incorrect values",
                   "Yt cannot be larger or equal to Ym for slope measurement.  Please readjust "
                   "these values and try again.");
        return;
    }
    // The picture is drawn afresh before a run, which loses what the last run printed.
    GroupDisplay(s, w);
    const TraceStore& store = w.store;
    const std::vector<std::int32_t> traces = TracesToAnalyse(form, store);
    if (traces.empty()) return;
    std::vector<double> second;
    if (routine == ApRoutine::HeavyFiltering) {
        // Always the current trace, also when another trace is measured.
        const std::int32_t current = std::clamp(store.CurrentTrace, 0, store.TraceCount);
        second = SharpenedSecondDifferential(
            std::span<const std::int16_t>(store.Row(current), std::size_t(store.TracePoints)),
            ToInt32Clamped(Val(form.Text6)));
    }
    std::string& caption = Caption(form, routine);
    const bool prints = !IsSuperimposeType(form.Combo2);
    for (std::int32_t t : traces) {
        caption = kInterruptCaption;
        const ApMeasurement m = MeasureActionPotential(s, form, store, t, routine, second);
        if (prints) PrintMeasurement(s, form, store, t, m, w.overlay);
        AppendRow(s, form, store, t, m);
        ui.Yield();
        if (caption != kInterruptCaption) break;
    }
    caption = IdleCaption(routine);
}

void ApWaveButton(Session& s, UserDialogs& ui, GroupWindow& w, ApRoutine routine) {
    std::string& caption = Caption(w.form, routine);
    if (caption == kInterruptCaption) {
        caption = IdleCaption(routine);
        return;
    }
    ApWaveAnalysis(s, ui, w, routine);
}

}  // namespace ardel::group
