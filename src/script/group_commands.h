// The group analysis window's handlers and controls by name ("GrpAnal.Command1",
// "GrpAnal.menu_copydata(0)", "GrpAnal.Combo4"), and the main window's menu item that opens it
// (menu_AnalyseGp, F3). Every control of every tab of the window is registered here.
#pragma once

#include <string_view>

#include "script/command_table.h"
#include "script/control_registry.h"
#include "script/forms.h"

namespace ardel {

// The window's keys of the individual display types run as "GrpAnal.KeyA" ... "GrpAnal.KeyY".
inline constexpr std::string_view kGroupKeys = "ASDFKUY";

// What a script is told by the picture items, which need a screen.
inline constexpr std::string_view kPictureNeedsDesktop =
    "Pictures of the traces need the desktop program; the traces can be saved as text instead.";

// The window as a handler finds it: its settings read when it is first used.
group::GroupWindow& UseGroupWindow(CommandContext& c);

void RegisterGroupCommands(CommandTable& table);
void RegisterGroupControls(ControlRegistry& r, Forms& forms);

}  // namespace ardel
