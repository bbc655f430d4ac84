// The spectral and the geometrical heart rate windows' handlers and controls by name
// ("HRVSpectral.Command1", "HRVGeo.Combo2", "HRVSpectral.CWGraph1"), and the menu items that
// open them.
#pragma once

#include "script/command_table.h"
#include "script/control_registry.h"
#include "script/forms.h"

namespace ardel {

void RegisterHrvSpectralCommands(CommandTable& table);
void RegisterHrvSpectralControls(ControlRegistry& r, Forms& forms);

}  // namespace ardel
