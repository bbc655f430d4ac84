// Menu items of the timing analyses: the correlograms of the Data Arrays, the coastline of the
// trace, and the burst analysis of the event list. Every item runs its handler by name.
#pragma once

#include <functional>
#include <string>

class QMenu;

namespace ardel {

// "Auto-correlogram" and "Cross-correlogram" sub-menus (menu_AutoCorrelogram(1/2),
// menu_CrossCorrelogram(1/2)) and the "Coastline" sub-menu (menu_CoastlineM(0/1)).
void AddCorrelogramItems(QMenu* menu, const std::function<void(const std::string&)>& run);
// The Plot menu's correlogram items (menu_AutoCorrelogram2(1/2), menu_CrossCorrelogram2(1/2)).
void AddPlotCorrelogramItems(QMenu* plot, const std::function<void(const std::string&)>& run);
// "Burst Analysis and Reports" (menu_groupBursts), which opens the Criteria window on its tab.
void AddBurstItem(QMenu* eventList, const std::function<void(const std::string&)>& run);

}  // namespace ardel
