// The heart rate variability handlers by name: the main menu's tachogram, histograms, Lorenz
// plot and scans, the spurious-interval form ("HRVSpurious.Command1") and the time-domain
// window ("HRV.Command1", "HRV.TDBGrid1"), and their controls.
#pragma once

#include "script/command_table.h"
#include "script/control_registry.h"
#include "script/forms.h"

namespace ardel {

void RegisterHrvCommands(CommandTable& table);
void RegisterHrvControls(ControlRegistry& r, Forms& forms, const Session& s);

// The time-domain window's opener: reads its settings the first time and shows it.
void ShowTimeDomainWindow(CommandContext& c);

}  // namespace ardel
