// The correlograms' and the coastline's handlers, by name.
#pragma once

#include "script/command_table.h"

namespace ardel {

// menu_AutoCorrelogram(1/2), menu_CrossCorrelogram(1/2), the Plot menu's
// menu_AutoCorrelogram2(1/2) and menu_CrossCorrelogram2(1/2) that forward to them, and
// menu_CoastlineM(0) (whole recording) and menu_CoastlineM(1) (display window).
void RegisterCorrelogramCommands(CommandTable& table);

}  // namespace ardel
