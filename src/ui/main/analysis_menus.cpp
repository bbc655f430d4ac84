#include "ui/main/analysis_menus.h"

#include <QMenu>

#include "ui/main/window_helpers.h"

namespace ardel {

namespace {

using Run = std::function<void(const std::string&)>;

// The auto- and cross-correlogram sub-menus under the handler names base and crossBase.
void AddCorrelogramMenus(QMenu* menu, const std::string& base, const std::string& crossBase,
                         const Run& run) {
    QMenu* autoMenu = menu->addMenu("Auto-correlogram");
    autoMenu->setObjectName(QString::fromStdString(base));
    mainwindow::AddHandlerItem(autoMenu, "Array #1", base + "(1)", run);
    mainwindow::AddHandlerItem(autoMenu, "Array #2", base + "(2)", run);
    QMenu* cross = menu->addMenu("Cross-correlogram");
    cross->setObjectName(QString::fromStdString(crossBase));
    mainwindow::AddHandlerItem(cross, "Array #1 against Array #2", crossBase + "(1)", run);
    mainwindow::AddHandlerItem(cross, "Array #2 against Array #1", crossBase + "(2)", run);
}

}  // namespace

void AddCorrelogramItems(QMenu* menu, const Run& run) {
    AddCorrelogramMenus(menu, "menu_AutoCorrelogram", "menu_CrossCorrelogram", run);
    QMenu* coastline = menu->addMenu("Coastline");
    coastline->setObjectName("menu_Coastline");
    mainwindow::AddHandlerItem(coastline, "Time Course of Whole Record", "menu_CoastlineM(0)", run);
    mainwindow::AddHandlerItem(coastline, "Display Window", "menu_CoastlineM(1)", run);
}

void AddPlotCorrelogramItems(QMenu* plot, const Run& run) {
    AddCorrelogramMenus(plot, "menu_AutoCorrelogram2", "menu_CrossCorrelogram2", run);
}

void AddBurstItem(QMenu* eventList, const Run& run) {
    mainwindow::AddHandlerItem(eventList, "Burst Analysis and Reports", "menu_groupBursts", run);
}

}  // namespace ardel
