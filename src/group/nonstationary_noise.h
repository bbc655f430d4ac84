// Non-stationary noise analysis: the fluctuation of repeated responses about their mean, binned
// along the decay by amplitude, and the parabola Var = i*|I| - I^2/N + Offset fitted to the
// variance-current points by a three-parameter simplex. Gives the unitary current i, the number
// of channels N and the peak open probability.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

inline constexpr const char* kNoiseIdle = "Start";

// The binning stage of one run.
struct NoiseBins {
    std::int32_t IPeak = 0;
    double BaseMean = 0;
    double PeakAmp = 0;  // MeanCurrent(IPeak) - BaseMean, in the channel's unit
    // Mean over the traces of each trace's mean squared deviation in the baseline window.
    double BaseVariance = 0;
    // Per bin 0..NB: the running mean current, the summed mean squared deviations of the
    // bin's entries (one entry per trace each time a bin is closed), their count, and the sum
    // of their squares for the standard error.
    std::vector<double> BinCurrent, BinVariance, BinVarianceSq;
    std::vector<std::int32_t> BinCount;
    // Per trace, the largest squared deviation from the peak on.
    std::vector<float> PeakSq;
    // The points of the plot: filled bins in bin order, a bin's MEAN variance (its summed
    // variance divided by its entries; the baseline variance taken off with Check5), and the
    // standard error of that mean.
    std::vector<double> current, variance, stdError;
};

// The mean current, the deviations and the binning of the store's traces 1..TraceCount.
// `yield` is called once per point of the decay; binning stops when it returns false (the run
// was interrupted and its result will not be used).
NoiseBins BinNoise(const Session& s, const GrpAnalForm& form, const TraceStore& store,
                   const std::function<bool()>& yield);

struct ParabolaFit {
    double i = 0, N = 0, Offset = 0;
    std::int32_t iterations = 0;
    double sse = 0, r2 = 0, stdev = 0;
};

// Fits Var = i*|I| - I^2/N (+ Offset with includeOffset) from the start vertex 8.466, 44.872,
// 121.035 by the downhill simplex of the curve fits. progress gets the iteration count, the
// lowest sum of squares and the tolerance reached, once per iteration.
ParabolaFit FitParabola(const std::vector<double>& current, const std::vector<double>& variance,
                        bool includeOffset, double ftol, std::int32_t nmax,
                        const std::function<void(std::int32_t, double, double)>& progress);

// Command18 and Command21 ("Start", "Interrupt" while it runs): a click while running asks the
// run to stop after the binning; otherwise the whole analysis runs: bins, plot, fit, report,
// results row and the auto-rejection question.
void NoiseButton(Session& s, UserDialogs& ui, GroupWindow& w);
void NonStationaryNoiseAnalysis(Session& s, UserDialogs& ui, GroupWindow& w);

// "Copy Variance-Mean Plot Data": the last plot as ATF text on the clipboard. Nothing without
// a plot.
void CopyVarianceMeanPlotData(const Session& s, UserDialogs& ui, const GroupWindow& w);

// The Z value of Combo30's confidence level (99 .. 90); 2.575 for a text outside the list.
double ConfidenceZ(std::string_view combo30);

}  // namespace ardel::group
