// The group window's fitting handlers by name: Start Fitting / Interrupt, the fit menu's
// entries, Compare Fits, Use Last Fit, the curve export and the A / sum menus.
#pragma once

#include "group/fit_run.h"
#include "script/command_table.h"

namespace ardel {

// The hooks of a run from a command: fits spread over the cores where no one watches them.
group::FitHooks FitHooksFor(CommandContext& c);

// GrpAnal.Command2, GrpAnal.menu_simplex_exp(1..3), GrpAnal.Command19, GrpAnal.Command11,
// GrpAnal.menu_simplex_User, GrpAnal.menu_extractcurvedata, GrpAnal.menu_savecurvedata,
// GrpAnal.menu_A1overSum(0/1), GrpAnal.menu_A2overSum(0/1).
void RegisterFittingCommands(CommandTable& table);

}  // namespace ardel
