// The decay fit of one trace: a sum of one to three exponentials, with or without a constant
// offset, found by the downhill simplex search (amotry2) from the window's fixed start vertices.
// No drawing and no table here: the run over the traces (fit_run.h) does that, so the fits of
// different traces can run side by side.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/recording.h"
#include "group/trace_measure.h"

namespace ardel::group {

// The simplex's size is fixed by this constant: rows 1..21 and columns 1..20 of P.
inline constexpr int kMaxParameters = 20;

struct FitSettings {
    int numberExponential = 1;      // 1, 2 or 3
    std::string fitRange = "Peak to End";  // Combo8's text
    std::int32_t nMax = 1000;       // limit of the function evaluation count
    double fTol = 0.001;
    bool includeOffset = false;     // Check3
    bool fixAmplitude = false;      // Check4
    bool useGuess = false;
    std::array<float, 3> tauGuess{};
    std::array<float, 3> ampGuess{};
    bool diffArea = false;          // Check16
    MeasureSettings measure;

    int NDim() const { return 2 * numberExponential + (includeOffset ? 1 : 0); }
};

// One row of P: Tau1, A1, Tau2, A2, Tau3, A3, then the offset in column NDim (1-based columns
// stored from index 0).
using FitParameters = std::array<float, kMaxParameters>;

// The progress of a search, once per pass: the count of function evaluations, the stdev of the
// lowest vertex and the relative tolerance. The window shows it and lets the interface run.
using FitProgress = std::function<void(std::int32_t nFunk, double stdev, double rTol)>;

struct TraceFit {
    TraceMeasure measure;
    std::int32_t FitStart = 0, FitEnd = 0;
    float A0 = 0;
    FitParameters params{};       // row 1 after the search
    std::int32_t NFunk = 0;
    // Statistics of the last trial point, not of the best vertex. nullopt where the old code's
    // division failed and the variable kept what it held before.
    double SSE = 0;
    std::optional<double> rSquared;
    std::optional<double> stdevPicture;  // sqrt(SSE / (FitEnd - FitStart))
    std::optional<double> stdevRow;      // sqrt(SSE / (FitEnd - FitStart - 1))
    double diffArea = 0;
    // The model of the last trial point at every point (0 before FitStart).
    std::vector<double> FitModel;
    // The curve in sample units, as row TraceCount + 1 of the store receives it.
    std::vector<std::int16_t> curve;
};

// The objective of the search at a parameter vector; exposed for tests and the benchmark.
struct FitProblem {
    std::vector<float> FitData;   // Bit2pA2(sample - Base) at every point
    std::int32_t FitStart = 0, FitEnd = 0;
    double dt = 0;                // ms per point
    int numberExponential = 1;
    bool includeOffset = false;
    int NDim() const { return 2 * numberExponential + (includeOffset ? 1 : 0); }
    // Fills model[FitStart..last] for the parameters and returns the sum of squares over
    // FitStart..FitEnd.
    double Evaluate(const FitParameters& p, std::vector<double>& model, std::int32_t last) const;
};

// The search from row 1 of P (start) with the fixed table of start vertices; returns the best
// vertex, the evaluation count and the last trial point.
struct SimplexOutcome {
    FitParameters best{};
    std::int32_t NFunk = 0;
    FitParameters lastTrial{};
};
SimplexOutcome Simplex(const FitProblem& problem, const FitParameters& start, std::int32_t nMax,
                       double fTol, bool fixAmplitude, float a0, const FitProgress& progress);

// The start vertices: row r (2..8) of column c (1..7) is P(1,c) plus this coefficient times
// P(1, source).
struct StartStep {
    double coefficient;
    int source;
};
extern const std::array<std::array<StartStep, 7>, 7> kStartSteps;

// Measures and fits one trace.
TraceFit FitTrace(std::span<const std::int16_t> trace, const FitSettings& s, const Recording& r,
                  const FitProgress& progress = {});

}  // namespace ardel::group
