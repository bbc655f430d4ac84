#include "group/curve_fitting.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/number_text.h"

namespace ardel::group {

// The start vertices as the window has always built them: not unit steps, but a third or two
// thirds of a row-1 value, with cross terms that mix taus and amplitudes on purpose. Row r of
// the table is vertex r + 2, column c parameter c + 1; sources are 1-based columns of row 1.
const std::array<std::array<StartStep, 7>, 7> kStartSteps = {{
    {{{-1.0 / 3, 1}, {1.0 / 3, 2}, {-2.0 / 3, 3}, {2.0 / 3, 2}, {2.0 / 3, 5}, {2.0 / 3, 6}, {2.0 / 3, 7}}},
    {{{1.0 / 3, 1}, {-2.0 / 3, 2}, {2.0 / 3, 2}, {-1.0 / 3, 1}, {-1.0 / 3, 5}, {-1.0 / 3, 6}, {-1.0 / 3, 7}}},
    {{{-2.0 / 3, 1}, {2.0 / 3, 2}, {-1.0 / 3, 1}, {1.0 / 3, 2}, {1.0 / 3, 5}, {1.0 / 3, 6}, {1.0 / 3, 7}}},
    {{{2.0 / 3, 1}, {-1.0 / 3, 2}, {1.0 / 3, 2}, {-2.0 / 3, 3}, {-2.0 / 3, 5}, {-2.0 / 3, 6}, {-2.0 / 3, 7}}},
    {{{2.0 / 3, 3}, {2.0 / 3, 4}, {2.0 / 3, 1}, {-2.0 / 3, 2}, {-2.0 / 3, 3}, {-2.0 / 3, 4}, {-2.0 / 3, 6}}},
    {{{-2.0 / 3, 3}, {-2.0 / 3, 4}, {-1.0 / 3, 3}, {2.0 / 3, 1}, {2.0 / 3, 3}, {2.0 / 3, 4}, {2.0 / 3, 6}}},
    {{{1.0 / 3, 3}, {1.0 / 3, 4}, {1.0 / 3, 3}, {-2.0 / 3, 1}, {-1.0 / 3, 3}, {-1.0 / 3, 4}, {-1.0 / 3, 6}}},
}};

double FitProblem::Evaluate(const FitParameters& p, std::vector<double>& model,
                            std::int32_t last) const {
    const std::int32_t n = std::int32_t(FitData.size());
    last = std::min(last, n - 1);
    const int terms = std::clamp(numberExponential, 1, 3);
    // exp(-t / tau) at t = k * dt is r^k: one multiplication a point instead of a power. A tau
    // of 0 failed in exp() and its term kept out of the sum, and so does a term once it has
    // overflowed (a negative tau).
    std::array<double, 3> e{}, ratio{}, amp{};
    std::array<bool, 3> live{};
    for (int k = 0; k < terms; ++k) {
        const double tau = p[std::size_t(2 * k)];
        amp[std::size_t(k)] = p[std::size_t(2 * k + 1)];
        live[std::size_t(k)] = tau != 0 && std::isfinite(tau);
        ratio[std::size_t(k)] = live[std::size_t(k)] ? std::exp(-dt / tau) : 0.0;
        e[std::size_t(k)] = 1.0;
    }
    const double offset = includeOffset ? double(p[std::size_t(NDim() - 1)]) : 0.0;
    for (std::int32_t i = std::max(FitStart, 0); i <= last; ++i) {
        double m = 0;
        for (std::size_t k = 0; k < std::size_t(terms); ++k) {
            if (!live[k]) continue;
            if (!std::isfinite(e[k])) {
                live[k] = false;
                continue;
            }
            m += amp[k] * e[k];
            e[k] *= ratio[k];
        }
        model[std::size_t(i)] = m + offset;
    }
    double sum = 0;
    const std::int32_t end = std::min(FitEnd, n - 1);
    for (std::int32_t i = std::max(FitStart, 0); i <= end; ++i) {
        const double d = model[std::size_t(i)] - double(FitData[std::size_t(i)]);
        sum += d * d;
    }
    return sum;
}

namespace {

// The simplex of the search: P(1..21, 1..20) in single precision, Y and PSum in double, all
// 1-based as the routine indexes them.
class Search {
  public:
    Search(const FitProblem& problem, bool fixAmplitude, float a0)
        : problem_(problem), nDim_(problem.NDim()), fix_(fixAmplitude), a0_(a0),
          model_(problem.FitData.size(), 0.0),
          evalLast_(std::min<std::int32_t>(problem.FitEnd, std::int32_t(problem.FitData.size()) - 1)) {}

    SimplexOutcome Run(const FitParameters& start, std::int32_t nMax, double fTol,
                       const FitProgress& progress) {
        const int mpts = nDim_ + 1;
        for (int c = 1; c <= kMaxParameters; ++c) P_[1][std::size_t(c)] = start[std::size_t(c - 1)];
        for (int r = 2; r <= mpts; ++r)
            for (int c = 1; c <= nDim_; ++c) {
                const StartStep& step = kStartSteps[std::size_t(r - 2)][std::size_t(c - 1)];
                P_[std::size_t(r)][std::size_t(c)] =
                    float(double(P_[1][std::size_t(c)]) +
                          step.coefficient * double(P_[1][std::size_t(step.source)]));
            }
        // The start vertices are evaluated as they are, without the fixed-amplitude rule.
        for (int r = 1; r <= mpts; ++r) Y_[std::size_t(r)] = EvaluateRow(r);
        std::int32_t nFunk = 0;
        ColumnSums();
        for (;;) {
            int iLo = 1;
            int iHi = Y_[1] > Y_[2] ? 1 : 2;
            int iNHi = Y_[1] > Y_[2] ? 2 : 1;
            for (int i = 1; i <= mpts; ++i) {
                if (Y_[std::size_t(i)] <= Y_[std::size_t(iLo)]) iLo = i;
                if (Y_[std::size_t(i)] > Y_[std::size_t(iHi)]) {
                    iNHi = iHi;
                    iHi = i;
                } else if (Y_[std::size_t(i)] > Y_[std::size_t(iNHi)] && i != iHi) {
                    iNHi = i;
                }
            }
            const double yHi = Y_[std::size_t(iHi)], yLo = Y_[std::size_t(iLo)];
            const double rTol = 2.0 * std::abs(yHi - yLo) / (std::abs(yHi) + std::abs(yLo) + 1e-10);
            if (progress)
                progress(nFunk,
                         std::sqrt(yLo / double(problem_.FitEnd - problem_.FitStart - 1)), rTol);
            // The limit and convergence end the search alike; the best vertex is the result.
            if (rTol < fTol || nFunk >= nMax) {
                std::swap(Y_[1], Y_[std::size_t(iLo)]);
                std::swap(P_[1], P_[std::size_t(iLo)]);
                break;
            }
            nFunk += 2;
            double yTry = Amotry2(iHi, -1.0);
            if (yTry <= Y_[std::size_t(iLo)]) {
                Amotry2(iHi, 2.0);
            } else if (yTry >= Y_[std::size_t(iNHi)]) {
                const double ySave = Y_[std::size_t(iHi)];
                yTry = Amotry2(iHi, 0.5);
                if (yTry >= ySave) {
                    for (int i = 1; i <= mpts; ++i) {
                        if (i == iLo) continue;
                        for (int j = 1; j <= nDim_; ++j) {
                            PSum_[std::size_t(j)] = 0.5 * (double(P_[std::size_t(i)][std::size_t(j)]) +
                                                           double(P_[std::size_t(iLo)][std::size_t(j)]));
                            P_[std::size_t(i)][std::size_t(j)] = float(PSum_[std::size_t(j)]);
                        }
                        Y_[std::size_t(i)] = EvaluateRow(i);
                    }
                    nFunk += nDim_;
                    ColumnSums();
                }
            } else {
                nFunk -= 1;
            }
        }
        SimplexOutcome out;
        for (int c = 1; c <= kMaxParameters; ++c) out.best[std::size_t(c - 1)] = P_[1][std::size_t(c)];
        out.NFunk = nFunk;
        out.lastTrial = lastTrial_;
        return out;
    }

  private:
    double Evaluate(const FitParameters& p) {
        lastTrial_ = p;
        // Only the fit range counts in the search; the model's tail is filled once at the end
        // from the last trial point, which gives the same values as filling it every time.
        return problem_.Evaluate(p, model_, evalLast_);
    }
    double EvaluateRow(int r) {
        FitParameters p{};
        for (int c = 1; c <= kMaxParameters; ++c) p[std::size_t(c - 1)] = P_[std::size_t(r)][std::size_t(c)];
        return Evaluate(p);
    }
    void ColumnSums() {
        for (int j = 1; j <= nDim_; ++j) {
            double sum = 0;
            for (int i = 1; i <= nDim_ + 1; ++i) sum += double(P_[std::size_t(i)][std::size_t(j)]);
            PSum_[std::size_t(j)] = sum;
        }
    }
    double Amotry2(int iHi, double fac) {
        const double fac1 = (1.0 - fac) / nDim_;
        const double fac2 = fac1 - fac;
        FitParameters trial{};
        for (int j = 1; j <= nDim_; ++j)
            trial[std::size_t(j - 1)] =
                float(PSum_[std::size_t(j)] * fac1 - double(P_[std::size_t(iHi)][std::size_t(j)]) * fac2);
        if (fix_) {
            // The last amplitude follows the others. The three forms differ on purpose: with two
            // exponentials the data point at the range's end stands where the offset would.
            const double off = problem_.includeOffset ? 1.0 : 0.0;
            switch (problem_.numberExponential) {
                case 1: trial[1] = float(double(a0_) - double(trial[std::size_t(nDim_ - 1)]) * off); break;
                case 2: trial[3] = float(double(a0_) - double(trial[1]) - EndData() * off); break;
                case 3: trial[5] = float(double(a0_) - double(trial[1]) - double(trial[3])); break;
                default: break;
            }
        }
        const double yTry = Evaluate(trial);
        if (yTry < Y_[std::size_t(iHi)]) {
            Y_[std::size_t(iHi)] = yTry;
            for (int j = 1; j <= nDim_; ++j) {
                PSum_[std::size_t(j)] += double(trial[std::size_t(j - 1)]) -
                                         double(P_[std::size_t(iHi)][std::size_t(j)]);
                P_[std::size_t(iHi)][std::size_t(j)] = trial[std::size_t(j - 1)];
            }
        }
        return yTry;
    }
    double EndData() const {
        const std::int32_t e = problem_.FitEnd;
        if (e < 0 || e >= std::int32_t(problem_.FitData.size())) return 0.0;
        return problem_.FitData[std::size_t(e)];
    }

    const FitProblem& problem_;
    const int nDim_;
    const bool fix_;
    const float a0_;
    std::array<std::array<float, kMaxParameters + 1>, kMaxParameters + 2> P_{};
    std::array<double, kMaxParameters + 2> Y_{};
    std::array<double, kMaxParameters + 1> PSum_{};
    std::vector<double> model_;
    std::int32_t evalLast_;
    FitParameters lastTrial_{};
};

std::optional<double> SqrtOf(double sse, double divisor) {
    if (divisor == 0) return std::nullopt;
    const double q = sse / divisor;
    if (!(q >= 0)) return std::nullopt;  // a negative quotient or NaN failed in Sqr()
    return std::sqrt(q);
}

}  // namespace

SimplexOutcome Simplex(const FitProblem& problem, const FitParameters& start, std::int32_t nMax,
                       double fTol, bool fixAmplitude, float a0, const FitProgress& progress) {
    Search search(problem, fixAmplitude, a0);
    return search.Run(start, nMax, fTol, progress);
}

TraceFit FitTrace(std::span<const std::int16_t> trace, const FitSettings& s, const Recording& r,
                  const FitProgress& progress) {
    TraceFit f;
    const std::int32_t n = std::int32_t(trace.size());
    f.measure = MeasureTrace(trace, s.measure, r);
    const TraceMeasure& m = f.measure;
    if (s.fitRange == "Peak to End") {
        f.FitStart = m.IPeak;
        f.FitEnd = n - 1;
    } else if (s.fitRange == "Decay 10%-90%") {
        f.FitStart = m.IPeak + m.D90;
        f.FitEnd = m.IPeak + m.D10;
    } else if (s.fitRange == "Decay 20%-80%") {
        f.FitStart = m.IPeak + m.D80;
        f.FitEnd = m.IPeak + m.D20;
    } else if (s.fitRange == "Custom Range") {
        const std::int32_t a = ToInt32Clamped(s.measure.cursor0);
        const std::int32_t b = ToInt32Clamped(s.measure.cursor1);
        f.FitStart = std::min(a, b);
        f.FitEnd = std::max(a, b);
    }
    const int base = m.Base;
    auto inTrace = [n](std::int32_t i) { return i >= 0 && i < n; };

    FitProblem problem;
    problem.FitData.resize(std::size_t(n));
    for (std::int32_t i = 0; i < n; ++i)
        problem.FitData[std::size_t(i)] = r.Bit2pA2(double(trace[std::size_t(i)] - base));
    problem.FitStart = f.FitStart;
    problem.FitEnd = f.FitEnd;
    problem.dt = double(s.measure.interval) / 1000.0;
    problem.numberExponential = std::clamp(s.numberExponential, 1, 3);
    problem.includeOffset = s.includeOffset;
    const int nExp = problem.numberExponential;
    const int nDim = problem.NDim();

    if (inTrace(f.FitStart)) f.A0 = r.Bit2pA2(double(trace[std::size_t(f.FitStart)] - base));
    FitParameters start{};
    for (int k = 1; k <= nExp; ++k) {
        start[std::size_t(2 * k - 2)] =
            float(std::pow(10.0, k - 1) * double(m.D37 - m.D90) * s.measure.interval / 1000.0);
        start[std::size_t(2 * k - 1)] = float(double(f.A0) / nExp);
    }
    float offset = 0;
    if (s.includeOffset && inTrace(f.FitEnd))
        offset = r.Bit2pA2(double(trace[std::size_t(f.FitEnd)] - base));
    if (s.useGuess) {
        // All six boxes are read whatever the number of exponentials.
        for (std::size_t k = 0; k < 3; ++k) {
            start[2 * k] = s.tauGuess[k];
            start[2 * k + 1] = s.ampGuess[k];
        }
    }
    if (s.includeOffset) start[std::size_t(nDim - 1)] = offset;

    const SimplexOutcome out = Simplex(problem, start, s.nMax, s.fTol, s.fixAmplitude, f.A0, progress);
    f.params = out.best;
    f.NFunk = out.NFunk;
    f.FitModel.assign(std::size_t(n), 0.0);
    problem.Evaluate(out.lastTrial, f.FitModel, n - 1);

    // Statistics of the last trial point.
    double mean = 0;
    {
        double sse = 0, sum = 0;
        for (std::int32_t i = std::max(f.FitStart, 0); i <= std::min(f.FitEnd, n - 1); ++i) {
            const double d = f.FitModel[std::size_t(i)] - double(problem.FitData[std::size_t(i)]);
            sse += d * d;
            sum += problem.FitData[std::size_t(i)];
        }
        f.SSE = sse;
        // One less than the count, as the window divides; an empty division leaves the mean 0.
        if (f.FitEnd != f.FitStart) mean = sum / double(f.FitEnd - f.FitStart);
    }
    double ssTot = 0;
    for (std::int32_t i = 0; i < n; ++i) {
        const double d = double(problem.FitData[std::size_t(i)]) - mean;
        ssTot += d * d;
    }
    if (ssTot != 0) f.rSquared = 1.0 - f.SSE / ssTot;
    f.stdevPicture = SqrtOf(f.SSE, double(f.FitEnd - f.FitStart));
    f.stdevRow = SqrtOf(f.SSE, double(f.FitEnd - f.FitStart - 1));

    // The curve in sample units: the inverse of Bit2pA2, plus the baseline.
    const auto& h = r.header;
    if (h.fADCRange != 0 && h.lADCResolution != 0) {
        const double toBits = double(h.lADCResolution) / double(h.fADCRange) * double(r.ChannelGain);
        f.curve.resize(std::size_t(n));
        for (std::int32_t i = 0; i < n; ++i) {
            const double v = RoundHalfEven(f.FitModel[std::size_t(i)] * toBits + base);
            f.curve[std::size_t(i)] =
                std::isnan(v) ? std::int16_t(base) : std::int16_t(std::clamp(v, -32768.0, 32767.0));
        }
    }
    if (s.diffArea && !f.curve.empty()) {
        std::int64_t sum = 0;
        for (std::int32_t i = 0; i < n; ++i)
            sum += (i < f.FitStart ? trace[std::size_t(i)] : f.curve[std::size_t(i)]) - base;
        f.diffArea = m.Area - double(r.Bit2pA2(double(sum))) * s.measure.interval / 1000.0;
    }
    return f;
}

}  // namespace ardel::group
