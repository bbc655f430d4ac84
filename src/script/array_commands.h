// The Data Array menu's handlers, the statistics window's and the Mathematical Operation
// form's controls, by name.
#pragma once

#include "script/command_table.h"
#include "script/control_registry.h"

namespace ardel {

// menu_PutAllArray1(0..16), menu_PutAllArray2(..), menu_PutHLArray1(..), menu_PutHLArray2(..),
// menu_InterEventArray1/2, menu_ClearArray1/2, menu_ArrayCopy, menu_PasteArray(1/2),
// menu_ArrayAscii, menu_importAscii, menu_ArrayStat, menu_MathOperation and the form's
// MathOperation.Command1/Command2 and change handlers.
void RegisterArrayCommands(CommandTable& table);
// MathOperation.Combo1(0/1), Text1(0/1), Combo2, Combo3, Label5; CStat.Caption and CStat.Grid1.
void RegisterArrayControls(ControlRegistry& registry, Forms& forms);

}  // namespace ardel
