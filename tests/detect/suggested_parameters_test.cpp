// The parameter presets and the RMS noise measure, with their exact questions and messages.
#include "detect/suggested_parameters.h"

#include <gtest/gtest.h>

#include "core/open_file.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedDialogs;
using testing::TempDir;

const char* const kSuggestText =
    "The analysis parameters are set according to the typical waveform kinetics.  After "
    "detecting several peaks, please readjust the amplitude threshold and area threshold as well "
    "as other paramters as needed.  Also, please make sure the direction of peak is "
    "appropriately set.";

class SuggestedParametersTest : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;
    ScriptedDialogs ui;

    // One raw bit is two amplitude units; the first 512 points alternate 110 and 90, the rest
    // of the screen is far from flat.
    void Open(int channels = 1) {
        std::vector<std::int16_t> x(4096, 0);
        for (std::size_t i = 0; i < x.size(); ++i)
            x[i] = std::int16_t(i < 512 ? (i % 2 ? 90 : 110) : 3000 + int(i % 7) * 100);
        AbfBuildSpec spec;
        spec.units.assign(std::size_t(channels), "pA");
        spec.scaleFactors.assign(std::size_t(channels), 10.0f / 65536.0f);
        const fs::path file =
            testing::WriteAbf(dir / "rec.abf", spec,
                              std::vector<std::vector<std::int16_t>>(std::size_t(channels), x));
        if (channels > 1) ui.ExpectInput("Enter Channel Number", std::nullopt, "0");
        ASSERT_TRUE(OpenDataFile(s, ui, file));
    }

    static std::string RmsQuestion(const std::string& value) {
        return "The RMS noise is " + value +
               "pA.  Would you like to set the detection thresholds based on this value?";
    }
};

TEST_F(SuggestedParametersTest, PresetsResetTheEventsFirstAndSetTheTable) {
    EXPECT_FALSE(menu_SuggParam(s, ui, 1));  // no recording
    Open(2);                                 // 50 us a sample, 100 us a channel
    s.events.Add().Time = 3;
    s.params.NumberPointsPeak = 3;

    ui.ExpectAsk("Confrim Reset",
                 "1 events analysed.  Are you sure you want to erase the event data?", Answer::OK)
        .ExpectMessage("Suggest Analysis Parameters", kSuggestText);
    auto texts = menu_SuggParam(s, ui, 3);
    ASSERT_TRUE(texts);
    EXPECT_EQ(s.events.EventCount(), 0);
    const DetectionParameters& p = s.params;
    EXPECT_EQ(p.ThresholdAmplitude, 20.0f);
    EXPECT_EQ(p.PeriodToSearchMax, 10000);
    EXPECT_EQ(p.PeriodStartBaseline, 10000);
    EXPECT_EQ(p.PeriodFindDecayTime, 40000);
    EXPECT_EQ(p.DecayPercent, 0.37f);
    EXPECT_EQ(p.PeriodBaselineAverage, 1000);  // ten intervals of the channel
    EXPECT_EQ(p.AreaThreshold, 50.0f);
    EXPECT_EQ(p.PeakDirection, 1);
    EXPECT_EQ(p.NumberPointsPeak, 3);  // not part of a preset
    EXPECT_EQ(texts->Text4,
              (std::array<std::string, 7>{"20", "10000", "10000", "40000", "0.37", "1000", "50"}));
    EXPECT_EQ(texts->Combo1, "Positive");

    // Without events there is no question; presets 1 and 2 look for downward events.
    ui.ExpectMessage("Suggest Analysis Parameters", kSuggestText);
    texts = menu_SuggParam(s, ui, 1);
    EXPECT_EQ(texts->Combo1, "Negative");
    EXPECT_EQ(texts->Text4[2], "5000");
    EXPECT_EQ(s.params.AreaThreshold, 20.0f);
    ui.ExpectMessage("Suggest Analysis Parameters", kSuggestText);
    menu_SuggParam(s, ui, 2);
    EXPECT_EQ(s.params.PeriodToSearchMax, 20000);
    EXPECT_EQ(s.params.PeakDirection, -1);
    EXPECT_FALSE(menu_SuggParam(s, ui, 4));
}

TEST_F(SuggestedParametersTest, RmsIsTakenAroundTheMeanOverThePointCount) {
    Open();
    // Two blocks of 110/90: deviations of 10 bits, 20 units, around a mean of 100 bits. With
    // one less than the point count as divisor it would read 20.020.
    EXPECT_DOUBLE_EQ(RmsNoise(s.recording, 2), 20.0);
    EXPECT_NEAR(RmsNoise(s.recording, 1.0 / 256), 0.0, 1e-12);  // one point

    bool tabShown = false;
    ui.ExpectInput("Measure RMS Noise", std::nullopt, "2")
        .ExpectAsk("RMS Noise", RmsQuestion("20.000"), Answer::Yes)
        .ExpectInput("Set Threshold", "Enter mulitplication factor for threshold.", "2.5");
    const auto r = menu_RMSNoise(s, ui, [&] { tabShown = true; });
    ASSERT_TRUE(r);
    EXPECT_TRUE(tabShown);
    EXPECT_EQ(r->threshold, 50.0);
    EXPECT_EQ(r->thresholdText, "50");
    // The same number goes into both thresholds.
    EXPECT_EQ(s.params.ThresholdAmplitude, 50.0f);
    EXPECT_EQ(s.params.AreaThreshold, 50.0f);
}

TEST_F(SuggestedParametersTest, RmsQuestionsEndTheCommandAsAnswered) {
    Open();
    const DetectionParameters before = s.params;
    // More blocks than the screen holds.
    ui.ExpectInput("Measure RMS Noise", std::nullopt, "5")
        .ExpectMessage("Invalid Block Number",
                       "The value you enter is not valid or greater than the number of blocks "
                       "displayed.  Please try again.");
    EXPECT_FALSE(menu_RMSNoise(s, ui));
    // Nothing, or no number: no points, no measure.
    ui.ExpectInput("Measure RMS Noise", std::nullopt, std::nullopt);
    EXPECT_FALSE(menu_RMSNoise(s, ui));
    ui.ExpectInput("Measure RMS Noise", std::nullopt, "many");
    EXPECT_FALSE(menu_RMSNoise(s, ui));
    // All the blocks of the screen are accepted; No keeps the thresholds.
    ui.ExpectInput("Measure RMS Noise", std::nullopt, "4")
        .ExpectAsk("RMS Noise", std::nullopt, Answer::No);
    const auto r = menu_RMSNoise(s, ui);
    ASSERT_TRUE(r);
    EXPECT_GT(r->rms, 100.0);
    EXPECT_FALSE(r->threshold);
    EXPECT_EQ(s.params, before);
    EXPECT_TRUE(ui.Done());
}

TEST_F(SuggestedParametersTest, APresetWhoseResetIsRefusedChangesNothing) {
    Open();
    s.events.Add().Time = 3;
    const DetectionParameters before = s.params;
    ui.ExpectAsk("Confrim Reset", std::nullopt, Answer::Cancel);
    bool shown = false;
    EXPECT_FALSE(menu_SuggParam(s, ui, 3, [&](const DetectionFrameTexts&) { shown = true; }));
    EXPECT_EQ(s.params, before);
    EXPECT_FALSE(shown);
    EXPECT_EQ(s.events.EventCount(), 1);
    EXPECT_TRUE(ui.Done());
}

TEST_F(SuggestedParametersTest, ThresholdBoxesGetTheProgramsNumberText) {
    Open();
    // 20 x 1.1 is 22.000000000000004 as a double; the boxes show the stored single.
    ui.ExpectInput("Measure RMS Noise", std::nullopt, "2")
        .ExpectAsk("RMS Noise", std::nullopt, Answer::Yes)
        .ExpectInput("Set Threshold", std::nullopt, "1.1");
    const auto r = menu_RMSNoise(s, ui);
    ASSERT_TRUE(r);
    EXPECT_EQ(r->thresholdText, "22");
    ui.ExpectInput("Measure RMS Noise", std::nullopt, "2")
        .ExpectAsk("RMS Noise", std::nullopt, Answer::Yes)
        .ExpectInput("Set Threshold", std::nullopt, "0.0123456789");
    EXPECT_EQ(menu_RMSNoise(s, ui)->thresholdText, "0.2469136");
}

}  // namespace
}  // namespace ardel
