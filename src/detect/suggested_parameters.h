// Filling the detection parameters for the user: presets for typical signals, and thresholds
// from the RMS noise of a flat stretch of the trace.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Captions of menu_SuggParam(1..3); index 0 is unused.
inline constexpr std::array<const char*, 4> kSuggParamCaptions = {
    "", "AMPA Receptor EPSCs", "GABAA Receptor IPSCs", "Action Potential"};

// What the detection frame shows after a preset: the seven boxes Text4(0)..Text4(6) in the
// order of the settings file, and the text of Combo1.
struct DetectionFrameTexts {
    std::array<std::string, 7> Text4;
    std::string Combo1;
};

// The texts of the detection frame for the parameters as they stand.
DetectionFrameTexts DetectionTexts(const DetectionParameters& p);

// "Suggest Analysis Parameters" preset 1, 2 or 3. Resets the events first (with Command5's
// question) when there are any, sets the parameters, and tells the user to readjust them.
// nullopt without an open file, for another index, or when the reset question was not
// answered with a reset: then nothing changes. showTexts, when given, puts the new
// values into the frame before the message comes up, so that the user reads them beside it.
std::optional<DetectionFrameTexts> menu_SuggParam(
    Session& s, UserDialogs& ui, int index,
    const std::function<void(const DetectionFrameTexts&)>& showTexts = {});

// RMS of the active channel over the first 256 x blocks points of the current screen, in
// amplitude units, around the mean of the same points. The divisor is the number of points.
double RmsNoise(const Recording& rec, double blocks);

struct RmsNoiseResult {
    double rms = 0;
    // Set when the user took the value for the thresholds: RMS times the factor, unrounded,
    // and the text both boxes Text4(0) and Text4(6) show.
    std::optional<double> threshold;
    std::string thresholdText;
};

// "Measure RMS Noise": asks for the number of blocks, shows the RMS value and, when the user
// wants it, sets the amplitude and area thresholds both to RMS times a factor. The window
// brings its detection tab forward through bringDetectionTab before the factor is asked.
// nullopt when nothing was measured (no file, a refused or empty answer).
std::optional<RmsNoiseResult> menu_RMSNoise(Session& s, UserDialogs& ui,
                                            const std::function<void()>& bringDetectionTab = {});

}  // namespace ardel
