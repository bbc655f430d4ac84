// The event list's print, print preview and page setup. They need a printer and a screen, so
// the desktop registers its own over these; a script that runs them is told so.
#pragma once

#include <string>
#include <string_view>

#include "script/command_table.h"

namespace ardel {

inline constexpr std::string_view kPrintNeedsDesktop =
    "Printing needs the desktop program; the list can be saved or copied instead.";

void RegisterPrintCommands(CommandTable& table);

}  // namespace ardel
