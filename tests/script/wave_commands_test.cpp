#include "script/wave_commands.h"

#include <cmath>

#include <gtest/gtest.h>

#include "group/analysis_fixture.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"

namespace ardel {
namespace {

using testing::ScriptedDialogs;

struct WaveContext {
    WaveContext() {
        testing::ScaleRecording(session, 100);
        session.params.PeakDirection = 1;
        // Overlapping bumps of 50 mV at point 60 (the peak period's end) and 30 mV at 150.
        std::vector<std::int16_t> t(512, 0);
        for (int i = 0; i < 512; ++i)
            t[std::size_t(i)] = testing::ToSamples(50 * std::exp(-0.5 * std::pow((i - 60) / 25.0, 2)) +
                                                   30 * std::exp(-0.5 * std::pow((i - 150) / 25.0, 2)));
        testing::FillStore(forms.grpAnal.store, {t, t});
        RegisterAllCommands(table);
        RegisterAllControls(controls, forms, session);
    }
    void Run(const char* name) {
        const CommandEntry* e = table.Find(name);
        ASSERT_NE(e, nullptr) << name;
        EXPECT_TRUE(RunCommand(c, *e));
    }
    Session session;
    Forms forms;
    ScriptedDialogs ui;
    CommandContext c{session, ui, forms};
    CommandTable table;
    ControlRegistry controls;
};

TEST(WaveCommands, HandlersRunTheAnalysesOnTheGroupWindowsStore) {
    WaveContext w;
    w.Run("GrpAnal.Command17");
    w.Run("GrpAnal.menu_APAnalysis");
    w.forms.grpAnal.form.Combo22 = "3";
    w.forms.grpAnal.form.Check1 = true;
    w.forms.grpAnal.form.Line1X = {20, 300};
    w.Run("GrpAnal.menu_multipeak");
    const auto& rows = w.session.results.rows;
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].Identifier, "cell.abf G1 T0 AP");
    EXPECT_EQ(rows[1].Identifier, "cell.abf G1 T0 AP");
    EXPECT_EQ(rows[2].Identifier, "cell.abf G1 T0 MP");
    EXPECT_NEAR(rows[0].Values[9], 50.05, 0.02);  // the peak, with the second bump's tail
    // Peak, trough, peak.
    EXPECT_NEAR(rows[2].Values[2], 6.0, 0.1 + 1e-4);
    EXPECT_GT(rows[2].Values[4], 6.0f);
    EXPECT_LT(rows[2].Values[4], 15.0f);
    EXPECT_NEAR(rows[2].Values[6], 15.0, 0.1 + 1e-4);
    EXPECT_EQ(w.controls.Find("GrpAnal.Command17.Caption")->get(), "AP Wave Analysis 1");

    // Yt at Ym: the message through the same path; the noise run on two equal traces has no
    // variance to bin.
    w.forms.grpAnal.form.Combo20 = "5";
    w.ui.ExpectMessage("Incorrect values");
    w.Run("GrpAnal.Command4");
    w.controls.Find("GrpAnal.Combo21")->set("Macroscopic Currents");
    w.ui.ExpectMessage("Non-Stationary Noise Analysis");
    w.Run("GrpAnal.Command18");
    EXPECT_EQ(rows.size(), 3u);
    EXPECT_EQ(w.controls.Find("GrpAnal.Command18.Caption")->get(), "Start");
}

}  // namespace
}  // namespace ardel
