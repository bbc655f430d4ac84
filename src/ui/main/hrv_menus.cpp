#include "ui/main/hrv_menus.h"

#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include "ui/main/window_helpers.h"

namespace ardel {

HrvWindows* AddHrvMenu(QMainWindow* window, Forms& forms, RunHandler run) {
    using mainwindow::AddHandlerItem;
    QMenu* menu = window->menuBar()->addMenu("Heart &Rate Variability");
    menu->setObjectName("menu_HRV");
    QMenu* tachogram = menu->addMenu("&Tachogram");
    tachogram->setObjectName("menu_Tachogram");
    AddHandlerItem(tachogram, "Generate Plot", "menu_TachogramPlot", run);
    AddHandlerItem(tachogram, "Save as ASCII", "menu_TachogramASCII", run);
    AddHandlerItem(tachogram, "Save as ABF File", "menu_TachogramABF", run);
    AddHandlerItem(menu, "RR Interval Histogram", "menu_RRHisto", run);
    AddHandlerItem(menu, "Delta RR Interval Histogram", "menu_DeltaRRHisto", run);
    AddHandlerItem(menu, "Lorenz Plot", "menu_LorenzPlot", run);
    menu->addSeparator();
    AddHandlerItem(menu, "Scan and Reject Spurious RR Intervals", "menu_ScanRejectRRIntervals", run);
    AddHandlerItem(menu, "Scan Missing Beats", "menu_ScanMissingBeats", run);
    menu->addSeparator();
    AddHandlerItem(menu, "Time Domain", "menu_TimeDomainHRV", run);
    AddHandlerItem(menu, "Spectral Analysis", "menu_SpectralHRV", run);
    AddHandlerItem(menu, "Geometrical Methods", "menu_GeoHRV", run);
    return new HrvWindows(window, forms, std::move(run));
}

}  // namespace ardel
