#include "script/fitting_commands.h"

#include <thread>

#include "group/group_display.h"
#include "group/results_table.h"

namespace ardel {

group::FitHooks FitHooksFor(CommandContext& c) {
    group::FitHooks hooks;
    // No one can press Interrupt in a script run, and nothing is drawn per trace in a
    // Superimpose run, so its traces may be fitted on every core.
    if (c.headless) hooks.threads = int(std::max(1u, std::thread::hardware_concurrency()));
    // The fitting tab comes forward where a window shows it.
    hooks.selectFittingTab = [&c] {
        group::GroupWindow& w = c.forms.grpAnal;
        if (w.form.SSTab1 != group::kTabFitting) {
            w.form.SSTab1 = group::kTabFitting;
            group::SetResultTab(w.form.TDBGrid1, c.session.results, w.form.SSTab1, c.session.recording);
        }
        c.ShowForms();
    };
    hooks.groupDisplay = [&c] { group::GroupDisplay(c.session, c.forms.grpAnal); };
    return hooks;
}

void RegisterFittingCommands(CommandTable& t) {
    // The button is its own interrupt: a click while it reads "Interrupt Fitting" must get in
    // while the run yields.
    t.Add("GrpAnal.Command2", "Start Fitting", kLongRun | kDuringRun, [](CommandContext& c) {
        group::GrpAnal_Command2(c.session, c.ui, c.forms.grpAnal, FitHooksFor(c));
    });
    static const char* const kFitCaptions[] = {"", "Fit Decay to 1 Exponential",
                                               "Fit Decay to 2 Exponentials",
                                               "Fit Decay to 3 Exponentials"};
    for (int index = 1; index <= 3; ++index)
        t.Add(IndexedName("GrpAnal.menu_simplex_exp", index), kFitCaptions[index], kLongRun,
              [index](CommandContext& c) {
                  group::menu_simplex_exp(c.session, c.ui, c.forms.grpAnal, index, FitHooksFor(c));
              });
    t.Add("GrpAnal.Command19", "Compare Fits", kLongRun, [](CommandContext& c) {
        group::GrpAnal_Command19(c.session, c.ui, c.forms.grpAnal, FitHooksFor(c));
    });
    t.Add("GrpAnal.Command11", "Use Last Fit", kPlainCommand,
          [](CommandContext& c) { group::GrpAnal_Command11(c.session, c.forms.grpAnal); });
    t.Add("GrpAnal.menu_simplex_User", "Fit to User Defined Function", kPlainCommand,
          [](CommandContext& c) { group::menu_simplex_User(c.ui); });
    t.Add("GrpAnal.menu_extractcurvedata", "Copy Curve Data", kPlainCommand, [](CommandContext& c) {
        group::menu_extractcurvedata(c.session, c.ui, c.forms.grpAnal);
    });
    t.Add("GrpAnal.menu_savecurvedata", "Save Curve Data", kPlainCommand, [](CommandContext& c) {
        group::menu_savecurvedata(c.session, c.ui, c.forms.grpAnal);
    });
    for (int which = 1; which <= 2; ++which)
        for (int index = 0; index <= 1; ++index)
            t.Add(IndexedName(which == 1 ? "GrpAnal.menu_A1overSum" : "GrpAnal.menu_A2overSum", index),
                  index == 0 ? "Put into Array #1" : "Put into Array #2", kPlainCommand,
                  [which, index](CommandContext& c) { group::AoverSum(c.session, c.ui, which, index); });
}

}  // namespace ardel
