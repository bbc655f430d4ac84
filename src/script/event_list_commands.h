// The event list's handlers and the Criteria form's handlers and controls, by name.
#pragma once

#include "script/command_table.h"
#include "script/control_registry.h"

namespace ardel {

// menu_sort(1..17), menu_RemoveDuplicates, the delete/reject/group/unmark family,
// menu_copytoclipboard(0/1), menu_savetoAsciiFile(0/1), the three menu items that open the
// Criteria form on their tab, and Criteria.Command1..3.
void RegisterEventListCommands(CommandTable& table);
// Criteria.Combo1(0..15), Criteria.Combo2(0..15), the check boxes, the group combos, the
// text boxes, the tab and the caption of the selection's button.
void RegisterCriteriaControls(ControlRegistry& registry, Forms& forms);

}  // namespace ardel
