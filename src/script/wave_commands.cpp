#include "script/wave_commands.h"

#include "group/ap_wave.h"
#include "group/multi_peak.h"
#include "group/nonstationary_noise.h"

namespace ardel {

namespace {

// The runs yield per trace (or per point of the decay), and a second click on the same button
// must get in then to interrupt them.
constexpr unsigned kRun = kLongRun | kDuringRun;

void AddApRun(CommandTable& t, const char* name, const char* title, group::ApRoutine routine) {
    t.Add(name, title, kRun, [routine](CommandContext& c) {
        group::ApWaveButton(c.session, c.ui, c.forms.grpAnal, routine);
    });
}

}  // namespace

void RegisterWaveCommands(CommandTable& t) {
    AddApRun(t, "GrpAnal.Command17", group::kApCaption1, group::ApRoutine::ThirdDifferential);
    AddApRun(t, "GrpAnal.menu_APWaveAnalysis", "Old AP Wave Analysis",
             group::ApRoutine::ThirdDifferential);
    AddApRun(t, "GrpAnal.Command4", group::kApCaption2, group::ApRoutine::HeavyFiltering);
    AddApRun(t, "GrpAnal.menu_APAnalysis", "New AP Wave Analysis",
             group::ApRoutine::HeavyFiltering);

    for (const char* name : {"GrpAnal.Command18", "GrpAnal.Command21"}) {
        t.Add(name, "Non-Stationary Noise Analysis", kRun, [](CommandContext& c) {
            group::NoiseButton(c.session, c.ui, c.forms.grpAnal);
        });
    }
    t.Add("GrpAnal.menu_CopyVMPlotData", "Copy Variance-Mean Plot Data", kPlainCommand,
          [](CommandContext& c) {
              group::CopyVarianceMeanPlotData(c.session, c.ui, c.forms.grpAnal);
          });

    for (const char* name : {"GrpAnal.Command16", "GrpAnal.menu_multipeak"}) {
        t.Add(name, "Multi Peak Analysis", kRun, [](CommandContext& c) {
            group::MultiPeakButton(c.session, c.ui, c.forms.grpAnal);
        });
    }
}

void RegisterWaveControls(ControlRegistry& r, Forms& forms) {
    group::GrpAnalForm& f = forms.grpAnal.form;
    r.AddCombo("GrpAnal.Combo21", f.Combo21);
    r.AddCheck("GrpAnal.Check12", f.Check12);
    r.AddCombo("GrpAnal.Combo30", f.Combo30);
    r.AddLabel("GrpAnal.Command4.Caption", f.Command4);
    r.AddLabel("GrpAnal.Command16.Caption", f.Command16);
    r.AddLabel("GrpAnal.Command17.Caption", f.Command17);
    r.AddLabel("GrpAnal.Command18.Caption", f.Command18);
}

}  // namespace ardel
