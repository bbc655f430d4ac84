#include "group/nonstationary_noise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "core/number_text.h"
#include "graph/graph_sink.h"
#include "group/analysis_traces.h"
#include "group/group_display.h"

namespace ardel::group {

namespace {

constexpr const char* kNoiseTitle = "Non-Stationary Noise Analysis";

// Each trace's scale: 1 for macroscopic currents, for synaptic currents its event's amplitude
// over the group's mean amplitude. A trace without an event (episodes) or a group without a
// mean amplitude keeps 1, since there is nothing to scale by.
std::vector<double> TraceScales(const Session& s, const GrpAnalForm& form, const TraceStore& store) {
    std::vector<double> scale(std::size_t(store.TraceCount) + 1, 1.0);
    if (form.Combo21 != "Synaptic Currents" || store.MeanAmplitude == 0) return scale;
    for (std::int32_t j = 1; j <= store.TraceCount; ++j) {
        const std::int32_t ev = store.TraceEvent[std::size_t(j)];
        if (ev >= 1 && ev <= s.events.EventCount())
            scale[std::size_t(j)] = double(s.events[ev].Amplitude) / store.MeanAmplitude;
    }
    return scale;
}

// Per trace, the mean it is compared with (Combo18 "All": the scaled average trace; otherwise
// the scaled mean of a window of consecutive traces, shifted back to end at the last trace and
// cut at the first; the sum is divided by the window's nominal size), and its deviation from it.
void MeansAndDeviations(const Session& s, const GrpAnalForm& form, const TraceStore& store,
                        std::vector<float>& meanJ, std::vector<float>& dev) {
    const Recording& rec = s.recording;
    const std::int32_t m = store.TraceCount, p = store.TracePoints;
    const std::size_t size = std::size_t(m) * std::size_t(p);
    meanJ.assign(size, 0.0f);
    dev.assign(size, 0.0f);
    const std::vector<double> scale = TraceScales(s, form, store);
    const bool all = form.Combo18 == "All";
    const std::int32_t n = all ? m : std::max(1, ToInt32Clamped(std::floor(Val(form.Combo18))));
    // Cumulative sums of the traces in the channel's unit, trace by trace.
    std::vector<double> cumulative;
    if (!all) {
        cumulative.assign(std::size_t(m + 1) * std::size_t(p), 0.0);
        for (std::int32_t j = 1; j <= m; ++j)
            for (std::int32_t k = 0; k < p; ++k)
                cumulative[std::size_t(j) * p + k] =
                    cumulative[std::size_t(j - 1) * p + k] + rec.Bit2pA(store.At(j, k));
    }
    for (std::int32_t j = 1; j <= m; ++j) {
        std::int32_t first = j, last = j + n - 1;
        if (last > m) {
            last = m;
            first = std::max(1, m - n + 1);
        }
        const double sc = scale[std::size_t(j)];
        for (std::int32_t k = 0; k < p; ++k) {
            const std::size_t at = std::size_t(j - 1) * p + std::size_t(k);
            const double mean =
                all ? sc * rec.Bit2pA(store.At(0, k))
                    : sc * (cumulative[std::size_t(last) * p + k] -
                            cumulative[std::size_t(first - 1) * p + k]) / n;
            meanJ[at] = float(mean);
            dev[at] = float(sc * rec.Bit2pA(store.At(j, k)) - double(meanJ[at]));
        }
    }
}

}  // namespace

NoiseBins BinNoise(const Session& s, const GrpAnalForm& form, const TraceStore& store,
                   const std::function<bool()>& yield) {
    NoiseBins b;
    const std::int32_t m = store.TraceCount, p = store.TracePoints, last = p - 1;
    const double interval = s.recording.SampleInterval;
    if (m < 1 || p < 1 || !(interval > 0)) return b;
    const int pol = Polarity(s.params);
    const std::int32_t nb = ToInt32Clamped(std::floor(Val(form.Text4)));

    std::vector<float> meanJ, dev;
    MeansAndDeviations(s, form, store, meanJ, dev);
    auto devSq = [&](std::int32_t j, std::int32_t k) {
        const float d = dev[std::size_t(j - 1) * p + std::size_t(k)];
        return float(d * d);
    };
    std::vector<double> meanCurrent(std::size_t(p), 0.0);
    for (std::int32_t j = 1; j <= m; ++j)
        for (std::int32_t k = 0; k < p; ++k) meanCurrent[std::size_t(k)] += meanJ[std::size_t(j - 1) * p + k];
    for (double& v : meanCurrent) v /= m;

    // Peak of the mean current from the end of the baseline period on; the first of equals.
    const std::int32_t back = PointsRounded(s.params.PeriodStartBaseline, interval);
    b.IPeak = std::clamp(back, 0, last);
    for (std::int32_t k = b.IPeak; k <= last; ++k)
        if (pol * meanCurrent[std::size_t(k)] > pol * meanCurrent[std::size_t(b.IPeak)]) b.IPeak = k;
    const std::int32_t avgPts = PointsFloor(s.params.PeriodBaselineAverage, interval);
    if (avgPts >= 1) {
        const std::int32_t from = b.IPeak - back;
        double sum = 0, var = 0;
        for (std::int32_t k = std::max(0, from); k < from + avgPts && k <= last; ++k) {
            sum += meanCurrent[std::size_t(k)];
            for (std::int32_t j = 1; j <= m; ++j) var += devSq(j, k);
        }
        b.BaseMean = sum / avgPts;
        b.BaseVariance = var / avgPts / m;
    }
    b.PeakAmp = meanCurrent[std::size_t(b.IPeak)] - b.BaseMean;
    b.PeakSq.assign(std::size_t(m) + 1, 0.0f);
    // Without bins or without a deflection in the peak direction there is no decay to bin.
    if (nb < 1 || !(pol * b.PeakAmp > 0)) return b;

    const std::size_t bins = std::size_t(nb) + 1;
    b.BinCurrent.assign(bins, 0.0);
    b.BinVariance.assign(bins, 0.0);
    b.BinVarianceSq.assign(bins, 0.0);
    b.BinCount.assign(bins, 0);
    const double peak = pol * b.PeakAmp;
    std::int32_t iBin = 1, start = b.IPeak;
    for (std::int32_t k = b.IPeak; k <= last; ++k) {
        if (yield && !yield()) break;
        for (std::int32_t j = 1; j <= m; ++j)
            b.PeakSq[std::size_t(j)] = std::max(b.PeakSq[std::size_t(j)], devSq(j, k));
        const double edge = peak * (1.0 - double(iBin) / nb);
        const double cur = pol * meanCurrent[std::size_t(k)];
        const std::int32_t end = edge > cur ? k - 1 : k;
        const std::int32_t count = end - start + 1;
        // A bin index above the peak's level or past the last bin holds nothing.
        if (count >= 1 && iBin >= 0 && iBin <= nb) {
            const std::size_t bi = std::size_t(iBin);
            for (std::int32_t j = 1; j <= m; ++j) {
                double sumSq = 0, sumCur = 0;
                for (std::int32_t i = start; i <= end; ++i) {
                    sumSq += devSq(j, i);
                    sumCur += meanJ[std::size_t(j - 1) * p + std::size_t(i)];
                }
                const double meanSq = sumSq / count;
                b.BinCount[bi] += 1;
                b.BinCurrent[bi] += (sumCur / count - b.BinCurrent[bi]) / b.BinCount[bi];
                b.BinVariance[bi] += meanSq;
                b.BinVarianceSq[bi] += meanSq * meanSq;
            }
        }
        start = k;
        iBin = ToInt32Clamped(std::floor(nb * (1.0 - cur / peak)));
        if (iBin >= nb) break;
    }
    for (std::size_t bi = 0; bi < bins; ++bi) {
        const std::int32_t c = b.BinCount[bi];
        if (c < 1) continue;
        const double mean = b.BinVariance[bi] / c;
        b.current.push_back(b.BinCurrent[bi]);
        b.variance.push_back(mean - (form.Check5 ? b.BaseVariance : 0.0));
        const double ss = std::max(0.0, b.BinVarianceSq[bi] - c * mean * mean);
        b.stdError.push_back(c > 1 ? std::sqrt(ss / (c - 1) / c) : 0.0);
    }
    return b;
}

namespace {

constexpr int kDim = 3;
using Vertex = std::array<float, kDim>;

double ParabolaSse(const std::vector<double>& x, const std::vector<double>& y, const Vertex& v,
                   bool includeOffset) {
    double sum = 0;
    for (std::size_t k = 0; k < x.size(); ++k) {
        // No channels is no parabola: the squared current term is left out, as a failed
        // division would leave it.
        const double quad = v[1] != 0 ? x[k] * x[k] / double(v[1]) : 0.0;
        const double model = double(v[0]) * std::abs(x[k]) - quad + (includeOffset ? double(v[2]) : 0.0);
        sum += (model - y[k]) * (model - y[k]);
    }
    // An overflowing trial point ranks as the worst there is, and the search moves away.
    return std::isfinite(sum) ? sum : std::numeric_limits<double>::max() / 4;
}

}  // namespace

ParabolaFit FitParabola(const std::vector<double>& current, const std::vector<double>& variance,
                        bool includeOffset, double ftol, std::int32_t nmax,
                        const std::function<void(std::int32_t, double, double)>& progress) {
    // The start vertex and three more, each a third of the start's value away in a pattern
    // that spans all three directions.
    std::array<Vertex, kDim + 1> p{};
    p[0] = {8.466f, 44.872f, 121.035f};
    const Vertex& s = p[0];
    p[1] = {s[0] - s[0] / 3, s[1] + s[1] / 3, s[2] - s[2] / 3};
    p[2] = {s[0] + s[0] / 3, s[1] - s[1] / 3, s[2] - s[2] / 3};
    p[3] = {s[0] - s[0] / 3, s[1] - s[1] / 3, s[2] + s[2] / 3};
    std::array<double, kDim + 1> y{};
    auto f = [&](const Vertex& v) { return ParabolaSse(current, variance, v, includeOffset); };
    for (int i = 0; i <= kDim; ++i) y[std::size_t(i)] = f(p[std::size_t(i)]);
    std::array<double, kDim> psum{};
    auto sums = [&] {
        for (int j = 0; j < kDim; ++j) {
            psum[std::size_t(j)] = 0;
            for (int i = 0; i <= kDim; ++i) psum[std::size_t(j)] += p[std::size_t(i)][std::size_t(j)];
        }
    };
    // The trial point through the face opposite the highest vertex (amotry3).
    auto amotry3 = [&](int iHi, double fac) {
        const double fac1 = (1 - fac) / kDim, fac2 = fac1 - fac;
        Vertex trial{};
        for (int j = 0; j < kDim; ++j)
            trial[std::size_t(j)] = float(psum[std::size_t(j)] * fac1 - p[std::size_t(iHi)][std::size_t(j)] * fac2);
        const double yTry = f(trial);
        if (yTry < y[std::size_t(iHi)]) {
            y[std::size_t(iHi)] = yTry;
            for (int j = 0; j < kDim; ++j) {
                psum[std::size_t(j)] += trial[std::size_t(j)] - p[std::size_t(iHi)][std::size_t(j)];
                p[std::size_t(iHi)][std::size_t(j)] = trial[std::size_t(j)];
            }
        }
        return yTry;
    };
    sums();
    std::int32_t nfunk = 0;
    for (;;) {
        int iLo = 0, iHi, inHi;
        if (y[0] > y[1]) {
            iHi = 0;
            inHi = 1;
        } else {
            iHi = 1;
            inHi = 0;
        }
        for (int i = 0; i <= kDim; ++i) {
            const double yi = y[std::size_t(i)];
            if (yi <= y[std::size_t(iLo)]) iLo = i;
            if (yi > y[std::size_t(iHi)]) {
                inHi = iHi;
                iHi = i;
            } else if (yi > y[std::size_t(inHi)] && i != iHi) {
                inHi = i;
            }
        }
        const double rtol = 2 * std::abs(y[std::size_t(iHi)] - y[std::size_t(iLo)]) /
                            (std::abs(y[std::size_t(iHi)]) + std::abs(y[std::size_t(iLo)]) + 1e-10);
        if (progress) progress(nfunk, y[std::size_t(iLo)], rtol);
        // A simplex whose vertices all score alike cannot move any more, whatever the
        // tolerance asks.
        if (rtol < ftol || rtol == 0 || nfunk >= nmax) {
            std::swap(y[0], y[std::size_t(iLo)]);
            std::swap(p[0], p[std::size_t(iLo)]);
            break;
        }
        nfunk += 2;
        const double yTry = amotry3(iHi, -1.0);
        if (yTry <= y[std::size_t(iLo)]) {
            amotry3(iHi, 2.0);
        } else if (yTry >= y[std::size_t(inHi)]) {
            const double ySave = y[std::size_t(iHi)];
            if (amotry3(iHi, 0.5) >= ySave) {
                for (int i = 0; i <= kDim; ++i) {
                    if (i == iLo) continue;
                    for (int j = 0; j < kDim; ++j)
                        p[std::size_t(i)][std::size_t(j)] = float(
                            0.5 * (p[std::size_t(i)][std::size_t(j)] + p[std::size_t(iLo)][std::size_t(j)]));
                    y[std::size_t(i)] = f(p[std::size_t(i)]);
                }
                nfunk += kDim;
                sums();
            }
        } else {
            nfunk -= 1;
        }
    }
    ParabolaFit fit;
    fit.i = p[0][0];
    fit.N = p[0][1];
    fit.Offset = includeOffset ? double(p[0][2]) : 0.0;
    fit.iterations = nfunk;
    fit.sse = ParabolaSse(current, variance, p[0], includeOffset);
    const std::size_t n = variance.size();
    double mean = 0;
    for (double v : variance) mean += v;
    if (n > 0) mean /= double(n);
    double ssTot = 0;
    for (double v : variance) ssTot += (v - mean) * (v - mean);
    fit.r2 = ssTot > 0 ? 1 - fit.sse / ssTot : 0.0;
    fit.stdev = n > 1 ? std::sqrt(fit.sse / double(n - 1)) : 0.0;
    return fit;
}

double ConfidenceZ(std::string_view combo30) {
    static constexpr std::array<double, 10> z = {2.575, 2.327, 2.17, 2.054, 1.96,
                                                 1.881, 1.812, 1.7505, 1.6955, 1.645};
    const double level = Val(combo30);
    for (int k = 0; k < 10; ++k)
        if (level == 99 - k) return z[std::size_t(k)];
    return z[0];
}

namespace {

GraphModel VariancePlot(const NoiseBins& b, const ParabolaFit& fit) {
    GraphModel g;
    g.Caption = "Graph Window";
    g.GraphTitle = GraphTitleText("Variance-Current Plot");
    g.BottomTitle = "Amplitude";
    g.LeftTitle = "Variance";
    g.GraphStyle = kStyleScatter;
    const int n = int(b.current.size());
    // Set 1 the bins (their standard errors kept as the points' errors); set 2 the fitted
    // parabola stepped evenly over the plotted currents.
    g.SetSetCount(2);
    g.SetPointCount(n);
    g.SetSymbol(1) = kSymbolCircle;
    g.SetSymbol(2) = kSymbolCross;
    const auto [lo, hi] = std::minmax_element(b.current.begin(), b.current.end());
    for (int k = 0; k < n; ++k) {
        const double se = b.stdError[std::size_t(k)];
        g.Point(1, k + 1) = {float(b.current[std::size_t(k)]), float(b.variance[std::size_t(k)]),
                             float(se), float(se)};
        const double x = n > 1 ? *lo + (*hi - *lo) * k / (n - 1) : *lo;
        const double model = fit.i * std::abs(x) - (fit.N != 0 ? x * x / fit.N : 0.0) + fit.Offset;
        g.Point(2, k + 1) = {float(x), float(model), 0, 0};
    }
    g.Redraw();
    return g;
}

void Report(Session& s, GroupWindow& w, const NoiseBins& b, const ParabolaFit& fit, double popen) {
    auto f = [](double v) { return Format(v, "0.000"); };
    auto& text = w.overlay.text;
    text.push_back(kNoiseTitle);
    text.push_back("Unitary Current = " + f(fit.i) + "  Total # Channels = " + f(fit.N));
    text.push_back("Maximum Current = " + f(b.PeakAmp) + "  Offset = " + f(fit.Offset));
    text.push_back("P(open, peak) = " + f(popen));
    text.push_back("R^2=" + Format(fit.r2, "0.00000") + "  Iteration =" + CStr(fit.iterations) +
                   "  Stdev = " + f(fit.stdev));
    ResultRow& row = AppendResultRow(s.results, IdentifierStart(s, w.form) + " NSNA");
    row.Values[0] = float(fit.i);
    row.Values[1] = float(fit.N);
    row.Values[2] = float(b.PeakAmp);
    row.Values[3] = float(fit.Offset);
    row.Values[4] = float(popen);
    row.Values[5] = float(fit.r2);
    row.Values[6] = float(fit.iterations);
    row.Values[7] = float(fit.stdev);
    row.Values[8] = float(b.BaseVariance);
}

void AutoReject(Session& s, UserDialogs& ui, GroupWindow& w, NoiseBins& b) {
    const std::int32_t m = w.store.TraceCount;
    double logMean = 0;
    for (std::int32_t j = 1; j <= m; ++j) {
        float& v = b.PeakSq[std::size_t(j)];
        // The logarithm of a trace without any deviation does not exist; it stays 0.
        if (v > 0) v = std::log(v);
        logMean += double(v) / m;
    }
    double sq = 0;
    for (std::int32_t j = 1; j <= m; ++j) sq += std::pow(b.PeakSq[std::size_t(j)] - logMean, 2);
    const double logSd = std::sqrt(sq / m);
    if (!(logSd > 0)) return;
    const double z = ConfidenceZ(w.form.Combo30);
    std::vector<std::int32_t> found;
    std::string list;
    for (std::int32_t j = 1; j <= m; ++j) {
        if ((b.PeakSq[std::size_t(j)] - logMean) / logSd > z) {
            found.push_back(j);
            list += CStr(j) + ",";
        }
    }
    if (found.empty()) return;
    const std::string text =
        "Found " + CStr(std::int64_t(found.size())) +
        " events that qualify the automatic rejection criterion.  The following is the list of "
        "events:" + list +
        ".  Would you like to remove these events from this group?  After events are rejected, "
        "you need to display the group again in Display tab and then press the Start button to "
        "reanalyze.";
    if (ui.Ask("Auto-rejection", text, Buttons::YesNo) != Answer::Yes) return;
    for (std::int32_t j : found) {
        const std::int32_t ev = w.store.TraceEvent[std::size_t(j)];
        if (ev >= 1 && ev <= s.events.EventCount()) s.events[ev].GroupNumber = 0;
    }
}

}  // namespace

void NonStationaryNoiseAnalysis(Session& s, UserDialogs& ui, GroupWindow& w) {
    GrpAnalForm& form = w.form;
    GroupDisplay(s, w);
    if (w.store.Empty() || w.store.TracePoints < 1) return;
    if (w.store.TraceCount < 2) {
        ui.Message(kNoiseTitle, "At least two traces are needed for the variance.");
        return;
    }
    form.Command18 = kInterruptCaption;
    NoiseBins b = BinNoise(s, form, w.store, [&] {
        ui.Yield();
        return form.Command18 != kNoiseIdle;
    });
    if (form.Command18 == kNoiseIdle) return;
    form.Command18 = kNoiseIdle;
    // Three parameters need at least three points.
    if (b.current.size() < 3) {
        ui.Message(kNoiseTitle,
                   "Too few amplitude bins were filled to fit the variance-current relationship.");
        return;
    }
    form.Label10 = "Fitting the variance-current relationship.....";
    const ParabolaFit fit = FitParabola(
        b.current, b.variance, form.Check6, Val(form.Text5),
        ToInt32Clamped(Val(form.Combo11)), [&](std::int32_t n, double sse, double tol) {
            form.Label10 = "Iteration =" + CStr(n);
            form.Label11 = "Sum of Squares=" + Format(sse, "0.00000") + " Tolerance=" + Format(tol, "0.00000");
            ui.Yield();
        });
    const double ipeak = std::abs(b.PeakAmp);
    const double popen = fit.i * fit.N != 0 ? ipeak / (fit.i * fit.N) : 0.0;
    form.Graph1 = OpenGraph(s, VariancePlot(b, fit));
    Report(s, w, b, fit, popen);
    if (form.Check12) AutoReject(s, ui, w, b);
}

void NoiseButton(Session& s, UserDialogs& ui, GroupWindow& w) {
    if (w.form.Command18 == kInterruptCaption) {
        w.form.Command18 = kNoiseIdle;
        return;
    }
    NonStationaryNoiseAnalysis(s, ui, w);
    w.form.Command18 = kNoiseIdle;
}

void CopyVarianceMeanPlotData(const Session& s, UserDialogs& ui, const GroupWindow& w) {
    const GraphModel* g = w.form.Graph1.get();
    if (!g || g->SetCount() < 2 || g->PointCount() < 1) return;
    const int n = g->PointCount();
    // Normalised to the largest current and the largest variance of the plot.
    double maxAmp = 0, maxVar = 0;
    for (int k = 1; k <= n; ++k) {
        maxAmp = std::max(maxAmp, std::abs(double(g->Point(1, k).x)));
        maxVar = std::max(maxVar, std::abs(double(g->Point(1, k).y)));
    }
    const bool withError = n >= 3;
    std::string text = "ATF\t1.0\r\n3\t" + CStr(withError ? 5 : 4) + "\r\n";
    text += "\"Group Analysis: " + s.recording.DataFilePath.string() + " Group # " + w.form.Combo1 + "\"\r\n";
    text += "\"Variance-Current Plot\"\r\n\r\n";
    text += "\"Amp(Fit)\"\t\"Fit\"\t\"Norm Amp\"\t\"Norm Var\"";
    if (withError) text += "\t\"Std Error\"";
    text += "\r\n";
    for (int k = 1; k <= n; ++k) {
        const GraphPoint& d = g->Point(1, k);
        const GraphPoint& c = g->Point(2, k);
        text += Str(c.x) + "\t" + Str(c.y) + "\t" + Str(float(maxAmp > 0 ? d.x / maxAmp : 0.0)) +
                "\t" + Str(float(maxVar > 0 ? d.y / maxVar : 0.0));
        if (withError) text += "\t" + Str(float(maxVar > 0 ? d.high / maxVar : 0.0));
        text += "\r\n";
    }
    ui.SetClipboardText(text);
}

}  // namespace ardel::group
