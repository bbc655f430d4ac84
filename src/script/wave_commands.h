// The group window's handlers of the AP wave, non-stationary noise and multi-peak tabs by name
// ("GrpAnal.Command17", "GrpAnal.menu_multipeak"), and the controls those tabs add.
#pragma once

#include "script/command_table.h"
#include "script/control_registry.h"
#include "script/forms.h"

namespace ardel {

void RegisterWaveCommands(CommandTable& table);
// Only the controls of these tabs that the group window's own registration does not hold:
// the recording type, the auto-rejection and the run buttons' captions.
void RegisterWaveControls(ControlRegistry& r, Forms& forms);

}  // namespace ardel
