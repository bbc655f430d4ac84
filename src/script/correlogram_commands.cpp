#include "script/correlogram_commands.h"

#include <string>

#include "graph/coastline.h"
#include "graph/correlograms.h"

namespace ardel {

void RegisterCorrelogramCommands(CommandTable& t) {
    for (int index = 1; index <= 2; ++index) {
        const std::string n = "(" + std::to_string(index) + ")";
        const std::string array = std::to_string(index);
        const std::string cross = index == 1 ? "Array #1 against Array #2" : "Array #2 against Array #1";
        auto autoCorrelogram = [index](CommandContext& c) {
            menu_AutoCorrelogram(c.session, c.ui, index);
        };
        auto crossCorrelogram = [index](CommandContext& c) {
            menu_CrossCorrelogram(c.session, c.ui, index);
        };
        t.Add("menu_AutoCorrelogram" + n, "Array #" + array, kPlainCommand, autoCorrelogram);
        t.Add("menu_AutoCorrelogram2" + n, "Array #" + array, kPlainCommand, autoCorrelogram);
        t.Add("menu_CrossCorrelogram" + n, cross, kPlainCommand, crossCorrelogram);
        t.Add("menu_CrossCorrelogram2" + n, cross, kPlainCommand, crossCorrelogram);
    }
    t.Add("menu_CoastlineM(0)", "Time Course of Whole Record", kPlainCommand,
          [](CommandContext& c) { menu_CoastlineM(c.session, c.ui, 0); });
    t.Add("menu_CoastlineM(1)", "Display Window", kPlainCommand,
          [](CommandContext& c) { menu_CoastlineM(c.session, c.ui, 1); });
}

}  // namespace ardel
