#include "detect/suggested_parameters.h"

#include <cmath>

#include "core/event_commands.h"
#include "core/number_text.h"

namespace ardel {

DetectionFrameTexts DetectionTexts(const DetectionParameters& p) {
    DetectionFrameTexts t;
    t.Text4 = {CStr(p.ThresholdAmplitude),  CStr(p.PeriodToSearchMax),
               CStr(p.PeriodStartBaseline), CStr(p.PeriodFindDecayTime),
               CStr(p.DecayPercent),        CStr(p.PeriodBaselineAverage),
               CStr(p.AreaThreshold)};
    t.Combo1 = p.PeakDirection == -1 ? "Negative" : "Positive";
    return t;
}

std::optional<DetectionFrameTexts> menu_SuggParam(
    Session& s, UserDialogs& ui, int index,
    const std::function<void(const DetectionFrameTexts&)>& showTexts) {
    if (!s.recording.FileIsOpen || index < 1 || index > 3) return std::nullopt;
    // Events measured with the old parameters must not stand beside new ones.
    if (s.events.EventCount() > 0) {
        Command5(s, ui);
        // Without the reset the old events would stand beside the new parameters: the preset
        // is not applied at all.
        if (s.events.EventCount() > 0) return std::nullopt;
    }

    struct Preset {
        float threshold;
        std::int32_t searchMax, startBaseline, findDecay;
        float decayPercent;
        float areaThreshold;
        std::int16_t direction;  // the item data of Combo1: "Negative" -1, "Positive" +1
    };
    static constexpr Preset kPresets[4] = {
        {},
        {5, 10000, 5000, 20000, 0.37f, 20, -1},
        {5, 20000, 10000, 40000, 0.37f, 50, -1},
        {20, 10000, 10000, 40000, 0.37f, 50, 1},
    };
    const Preset& pr = kPresets[index];
    DetectionParameters& p = s.params;
    p.ThresholdAmplitude = pr.threshold;
    p.PeriodToSearchMax = pr.searchMax;
    p.PeriodStartBaseline = pr.startBaseline;
    p.PeriodFindDecayTime = pr.findDecay;
    p.DecayPercent = pr.decayPercent;
    // Ten sample intervals of the open recording: the one value that depends on the file.
    if (auto avg = ToInt32(10.0 * double(s.recording.SampleInterval)))
        p.PeriodBaselineAverage = *avg;
    p.AreaThreshold = pr.areaThreshold;
    p.PeakDirection = pr.direction;
    const DetectionFrameTexts texts = DetectionTexts(p);
    if (showTexts) showTexts(texts);

    ui.Message("Suggest Analysis Parameters",
               "The analysis parameters are set according to the typical waveform kinetics.  "
               "After detecting several peaks, please readjust the amplitude threshold and area "
               "threshold as well as other paramters as needed.  Also, please make sure the "
               "direction of peak is appropriately set.");
    return texts;
}

double RmsNoise(const Recording& rec, double blocks) {
    const double points = 256.0 * blocks;
    double sum = 0;
    for (std::int32_t k = 0; k <= points - 1; ++k) sum += rec.GetSampleValue(k);
    const double mean = double(rec.Bit2pA(sum / points));
    double squares = 0;
    for (std::int32_t k = 0; k <= points - 1; ++k) {
        const double d = double(rec.Bit2pA(rec.GetSampleValue(k))) - mean;
        squares += d * d;
    }
    // Adding 0 turns the -0 of an empty range into 0.
    return std::sqrt(squares / points) + 0.0;
}

std::optional<RmsNoiseResult> menu_RMSNoise(Session& s, UserDialogs& ui,
                                            const std::function<void()>& bringDetectionTab) {
    Recording& rec = s.recording;
    if (!rec.FileIsOpen) return std::nullopt;
    const std::string answer = ui.InputText(
        "Measure RMS Noise",
        "This function will measure the RMS(root mean square) noise level.  It will take data "
        "points ranging from the beginning of this window to the number of blocks (1 block = "
        "256 data points) you enter below.  Please make sure you locate a flat region with no "
        "visible event.  Please enter the number of blocks to measure.",
        "1");
    const double blocks = Val(answer);
    if (blocks > rec.BlocksPerScreen) {
        ui.Message("Invalid Block Number",
                   "The value you enter is not valid or greater than the number of blocks "
                   "displayed.  Please try again.");
        return std::nullopt;
    }
    // No points: the mean is a division by zero, which ends the command.
    if (blocks == 0) return std::nullopt;

    RmsNoiseResult result;
    result.rms = RmsNoise(rec, blocks);
    const Answer a = ui.Ask("RMS Noise",
                            "The RMS noise is " + Format(result.rms, "0.000") + rec.ADCUnits +
                                ".  Would you like to set the detection thresholds based on this "
                                "value?",
                            Buttons::YesNo);
    if (a != Answer::Yes) return result;

    if (bringDetectionTab) bringDetectionTab();
    const double factor =
        Val(ui.InputText("Set Threshold", "Enter mulitplication factor for threshold.", "5"));
    // The same number goes into both boxes, though one is an amplitude and the other an area.
    const double threshold = result.rms * factor;
    s.params.ThresholdAmplitude = float(threshold);
    s.params.AreaThreshold = float(threshold);
    result.threshold = threshold;
    // The boxes show the stored single as the program writes numbers, not 16 digits of the
    // double.
    result.thresholdText = CStr(float(threshold));
    return result;
}

}  // namespace ardel
