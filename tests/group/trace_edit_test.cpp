// Editing the group through its traces, the keys of the individual types, the traces' text
// (clipboard and ATF) and the window's settings in the order the file keeps them.
#include "group/trace_edit.h"

#include <gtest/gtest.h>

#include "core/ini_file.h"
#include "group/group_display.h"
#include "group/group_settings.h"
#include "group/trace_export.h"
#include "group_fixture.h"

namespace ardel::group {
namespace {

constexpr const char* kRegroupPrompt = "Please enter the group number to regroup this trace.";

class TraceEditTest : public testing::GroupFixture {
  protected:
    void SetUp() override {
        OpenRamp();
        for (float t : {10.0f, 20.0f, 30.0f}) AddEvent(t);
        w.form.Combo2 = "Individual";
        ASSERT_TRUE(StartDisplay(s, ui, w));
    }
};

TEST_F(TraceEditTest, KeysStepThroughTheTracesWithBeepsAtTheEnds) {
    GroupKey(s, ui, w, 'S');
    EXPECT_EQ(ui.beeps, 1);
    GroupKey(s, ui, w, 'D');
    GroupKey(s, ui, w, 'D');
    EXPECT_EQ(w.store.CurrentTrace, 2);
    EXPECT_EQ(w.form.Label6, "Trace: 2 of 3");
    GroupKey(s, ui, w, 'D');
    EXPECT_EQ(w.store.CurrentTrace, 3);
    EXPECT_EQ(ui.beeps, 2);
    GroupKey(s, ui, w, 'A');
    EXPECT_EQ(w.store.CurrentTrace, 0);
    GroupKey(s, ui, w, 'F');
    EXPECT_EQ(w.store.CurrentTrace, 3);
    // Y: empty, negative and too large answers do nothing.
    for (const char* answer : {"", "-1", "4"}) {
        ui.ExpectInput("Jump to Trace",
                       "Please specify the trace number to jump to (Trace 0 is the average "
                       "trace).  Range: 0 to 3.",
                       answer);
        GroupKey(s, ui, w, 'Y');
        EXPECT_EQ(w.store.CurrentTrace, 3);
    }
    ui.ExpectInput("Jump to Trace", std::nullopt, "1");
    GroupKey(s, ui, w, 'Y');
    EXPECT_EQ(w.store.CurrentTrace, 1);
    // Not in the other types.
    w.form.Combo2 = "Average";
    GroupKey(s, ui, w, 'D');
    EXPECT_EQ(w.store.CurrentTrace, 1);
}

TEST_F(TraceEditTest, RemoveAndRegroupByKeyAndByMenu) {
    // K on trace 0 is refused with a message.
    ui.ExpectMessage("Average Trace", "Cannot remove the averaged trace.");
    GroupKey(s, ui, w, 'K');
    EXPECT_EQ(w.store.TraceCount, 3);
    // K on the last trace: the event leaves the group; back on the new last, with a beep.
    GroupKey(s, ui, w, 'F');
    GroupKey(s, ui, w, 'K');
    EXPECT_EQ(s.events[3].GroupNumber, 0);
    EXPECT_EQ(w.store.TraceCount, 2);
    EXPECT_EQ(w.store.CurrentTrace, 2);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(w.form.Label6, "Trace: 2 of 2");
    ui.beeps = 0;

    // The menu ignores groups outside 0..255; the key takes any byte and overflows beyond.
    w.HighlightTrace = 1;
    ui.ExpectInput("Group Number", kRegroupPrompt, "300");
    menu_trace_regroup(s, ui, w);
    EXPECT_EQ(s.events[1].GroupNumber, 1);
    ui.ExpectInput("Group Number", kRegroupPrompt, std::nullopt);  // cancelled
    menu_trace_regroup(s, ui, w);
    EXPECT_EQ(s.events[1].GroupNumber, 1);
    ui.ExpectInput("Group Number", kRegroupPrompt, "7");
    menu_trace_regroup(s, ui, w);
    EXPECT_EQ(s.events[1].GroupNumber, 7);
    EXPECT_EQ(w.store.TraceCount, 1);
    GroupKey(s, ui, w, 'D');
    ui.ExpectInput("Group Number", kRegroupPrompt, "256");
    ui.ExpectMessage("Ardelvantine", "Overflow");
    GroupKey(s, ui, w, 'U');
    ui.ExpectInput("Group Number", kRegroupPrompt, "4");
    GroupKey(s, ui, w, 'U');
    EXPECT_EQ(s.events[2].GroupNumber, 4);

    // The menu's remove, on the trace the right button hit.
    w.form.Combo1 = "4";
    ASSERT_TRUE(StartDisplay(s, ui, w));
    w.HighlightTrace = 0;
    ui.ExpectMessage("Average Trace", "Cannot remove the averaged trace.");
    menu_trace_remove(s, ui, w);
    w.HighlightTrace = 1;
    menu_trace_remove(s, ui, w);
    EXPECT_EQ(s.events[2].GroupNumber, 0);
}

TEST_F(TraceEditTest, TraceTextOnTheClipboardAndAsAtf) {
    w.form.Combo4 = "0.01";  // 3 points
    ASSERT_TRUE(StartDisplay(s, ui, w));
    const std::string path = s.recording.DataFilePath.string();
    ui.ExpectInput("Normalize Trace", std::nullopt, "50");  // divide by 0.5
    menu_copydata(s, ui, w, 0, dir.path());
    EXPECT_EQ(ui.clipboard, "Group Analysis: " + path +
                                " Group # 1 Trace # 0\r\nTime (ms) \tAmplitude (pA)\r\n"
                                " 0\t .3710938\r\n .1\t .3730469\r\n .2\t .375\r\n");
    EXPECT_EQ(*ReadFileBytes(dir / "Temp.txt"), ui.clipboard);

    TraceSelection all{2, 0, 1};
    EXPECT_EQ(TraceAtfText(s, w, all),
              "ATF\t1.0\r\n3\t5\r\n\"Group Analysis: " + path +
                  " Group # 1 Trace # 1-3\"\r\n\"Individual\"\r\n\r\n"
                  "\"Time(ms)\"\t\"Amplitude #1\"\t\"Amplitude #2\"\t\"Amplitude #3\"\r\n"
                  " 0\t .08789062\t .1855469\t .2832031\r\n"
                  " .1\t .08886719\t .1865234\t .2841797\r\n"
                  " .2\t .08984375\t .1875\t .2851562\r\n");

    // One trace: the number asked for; an answer beyond the count gives up.
    ui.ExpectInput("Copy Trace Data", std::nullopt, "9");
    EXPECT_FALSE(menu_saveascii(s, ui, w, 1));
    ui.ExpectInput("Copy Trace Data", std::nullopt, "2");
    ui.ExpectSaveFile(dir / "trace.txt");
    EXPECT_TRUE(menu_saveascii(s, ui, w, 1));
    EXPECT_EQ(ReadFileBytes(dir / "trace.txt")->substr(0, 14), "ATF\t1.0\r\n3\t2\r\n");
    // An existing file is replaced only on Yes.
    ui.ExpectInput("Copy Trace Data", std::nullopt, "2");
    ui.ExpectSaveFile(dir / "trace.txt");
    ui.ExpectAsk("Replace File", "File already exist.  Do you want to replace this file?",
                 Answer::No);
    EXPECT_FALSE(menu_saveascii(s, ui, w, 1));

    // Extract: the window's caption and CR-ended lines of the hit trace.
    w.HighlightTrace = 3;
    menu_trace_extract(s, ui, w);
    EXPECT_EQ(ui.clipboard, "Group Analysis and Curve Fitting\r 0\t .2832031\r .1\t .2841797\r"
                            " .2\t .2851562\r");
}

TEST(GroupSettingsTest, SavesEveryKeyInTheFileOrderAndLoadsItBack) {
    testing::TempDir dir;
    testing::ScriptedDialogs ui;
    GroupWindow w;
    GrpAnalForm& f = w.form;
    f.Option2_0 = false;
    f.Option2_1 = true;
    f.Combo4 = "4";
    f.Combo29 = 2;
    f.Check4 = true;
    f.Tau[1] = "80";
    f.Text1[7] = "3e-6";
    f.Check6 = true;
    const auto ini = dir / "Ardelvan.ini";
    ui.ExpectMessage("Settings Saved", "The settings are saved into Ardelvan.ini file.");
    menu_SaveSettings(w, ui, ini);
    const std::string text = *ReadFileBytes(ini);
    // The save order of Fitting: IncludeOffset, FixAmplitude and NumberExponential before
    // Tolerance.
    const auto at = [&](const char* key) { return text.find(key); };
    EXPECT_LT(at("MaxIteration="), at("IncludeOffset="));
    EXPECT_LT(at("IncludeOffset="), at("FixAmplitude="));
    EXPECT_LT(at("FixAmplitude="), at("NumberExponential="));
    EXPECT_LT(at("NumberExponential="), at("Tolerance="));
    EXPECT_NE(text.find("DisplayGroup=False"), std::string::npos);
    EXPECT_NE(text.find("Rise=2"), std::string::npos);

    // The first use reads the file, and a value set before it outlasts the reading.
    GroupWindow fresh;
    fresh.pendingSets.push_back([&fresh] { fresh.form.Combo1 = "9"; });
    LoadGroupWindow(fresh, ini);
    EXPECT_EQ(fresh.form.Combo1, "9");
    EXPECT_EQ(fresh.form.Combo32, "2");  // from the group read, before the value set
    f.Combo1 = "9";
    EXPECT_TRUE(SettingsFromForm(fresh.form) == SettingsFromForm(f));
    EXPECT_TRUE(fresh.form.Option2_1);
    fresh.form.Combo4 = "1";
    LoadGroupWindow(fresh, ini);  // only once
    EXPECT_EQ(fresh.form.Combo4, "1");
}

}  // namespace
}  // namespace ardel::group
