// The Data Analysis form's handlers and controls by name ("DataAnalysis.Command1",
// "DataAnalysis.Grid1"), and the menu items that open it with a test.
#pragma once

#include "script/command_table.h"
#include "script/control_registry.h"
#include "script/forms.h"

namespace ardel {

void RegisterDataAnalysisCommands(CommandTable& table);
void RegisterDataAnalysisControls(ControlRegistry& r, Forms& forms);

}  // namespace ardel
