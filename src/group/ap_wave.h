// Action potential waveform analysis of the group window's traces: threshold, peak, rise, width
// at a level above threshold, decay, afterhyperpolarisation and slope, one results row per
// trace. Two routines differ only in how they find the threshold: the third differential of the
// trace, or the second differential of a sharpened and heavily filtered copy of the current
// trace.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

enum class ApRoutine { ThirdDifferential, HeavyFiltering };

inline constexpr const char* kApCaption1 = "AP Wave Analysis 1";
inline constexpr const char* kApCaption2 = "AP Wave Analysis 2";

// The decay fractions in the order of their distances in ApMeasurement::decayDistance.
inline constexpr std::array<double, 7> kApDecayFractions = {0.9, 0.8, 0.5, 0.368, 0.2, 0.1, 0.001};

// Everything one trace's analysis finds. Indices and distances in points, levels in samples,
// times in ms, amplitudes in the channel's unit where the name says so.
struct ApMeasurement {
    std::int32_t IPeak = 0;
    std::int32_t Base = 0;
    std::int32_t Amp = 0;
    std::int32_t ThreshIndex = 0;
    std::int32_t ThreshValue = 0;
    // Distances back from the peak to 90 %, 50 %, 10 % and 0.1 % of the amplitude.
    std::int32_t D90R = 0, RiseHalf = 0, D10R = 0, D0R = 0;
    float Rise = 0;
    // Slope between the Yt and Ym crossings (x in points), unit per ms, and its intercept.
    double SlopeX1 = 0, SlopeX2 = 0;
    float Slope = 0, Intercept = 0;
    // Width at Combo14 above threshold: the interpolated crossings and their distance in ms.
    double WidthX1 = 0, WidthX2 = 0;
    double WidthLevel = 0;  // in samples
    float Width = 0;
    // Forward distances from the peak to each of kApDecayFractions, with the sample found.
    std::array<std::int32_t, 7> decayDistance{};
    std::array<std::int32_t, 7> decaySample{};
    float Decay = 0;
    float HalfWidth = 0;
    // The AHP window: IPeak + D0 to IPeak + WEnd.
    std::int32_t D0 = 0, WEnd = 0;
    std::int32_t AHPValue = 0, AHPIndex = 0;
    std::int64_t AHPSum = 0;
    std::int32_t AHPAmp = 0, PeakToAHP = 0;
    float AHPArea = 0;
    float PeakTo90AHP = 0;
    float PositiveArea = 0;
};

// The start and end fraction that Combo12's text ("90-37%", "80-0%", ...) picks, as indices
// into kApDecayFractions; 90-37 for a text it does not know.
std::pair<int, int> DecayPair(std::string_view combo12);

// The second differential of the sharpened, filtered trace that the second routine searches
// for the threshold: three rounds of adding the scaled difference, storing as 16 bits, the
// Gaussian low-pass at a tenth of the sampling rate and a centred moving average of half-width
// smoothing / 2; the second round's result differenced once more.
std::vector<double> SharpenedSecondDifferential(std::span<const std::int16_t> trace,
                                                std::int32_t smoothing);

// Measures one trace. secondDifferential is used by the filtering routine only.
ApMeasurement MeasureActionPotential(const Session& s, const GrpAnalForm& form,
                                     const TraceStore& store, std::int32_t trace,
                                     ApRoutine routine,
                                     std::span<const double> secondDifferential);

// One run over the traces of the display type: the Yt/Ym check, then per trace the measurement,
// the picture text (average and individual types) and a results row. Yields between traces and
// stops when the button's caption has been set back by a click.
void ApWaveAnalysis(Session& s, UserDialogs& ui, GroupWindow& w, ApRoutine routine);

// A click on the routine's button: while it reads "Interrupt" the click sets it back (the run
// stops after its current trace); otherwise it reads "Interrupt" for the run.
void ApWaveButton(Session& s, UserDialogs& ui, GroupWindow& w, ApRoutine routine);

}  // namespace ardel::group
