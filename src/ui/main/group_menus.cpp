#include "ui/main/group_menus.h"

#include <QMenu>
#include <QMenuBar>

#include "script/forms.h"
#include "ui/group/fitting_tab.h"
#include "ui/group/group_analysis_window.h"
#include "ui/group/results_grid.h"
#include "ui/group/wave_tabs.h"
#include "ui/main/window_helpers.h"

namespace ardel {

void AddGroupAnalysisItem(QMenu* menu, const std::function<void(const std::string&)>& run) {
    mainwindow::AddHandlerItem(menu, "&Group Analysis and Curve Fitting\tF3", "menu_AnalyseGp", run);
}

GroupAnalysisWindow* CreateGroupAnalysisWindow(Session& session, Forms& forms,
                                               std::function<void(const std::string&)> run,
                                               QWidget* parent) {
    // A window of its own beside the main window, not a child drawn inside it.
    auto* window = new GroupAnalysisWindow(session, forms, run, parent);
    window->setWindowFlag(Qt::Window);
    group::GrpAnalForm& form = forms.grpAnal.form;

    auto* fitting = new FittingTab(form, run);
    window->AddTab(fitting, "Curve Fitting", group::kTabFitting, [fitting] { fitting->Refresh(); });
    auto* ap = new ApWaveTab(form, run);
    window->AddTab(ap, "AP Wave Analysis", group::kTabApWave, [ap] { ap->Refresh(); });
    auto* noise = new NoiseTab(form, run);
    window->AddTab(noise, "Non-Stationary Noise", group::kTabNonStationary, [noise] { noise->Refresh(); });
    auto* multi = new MultiPeakTab(form, run);
    window->AddTab(multi, "Multi Peak", group::kTabMultiPeak, [multi] { multi->Refresh(); });
    auto* grid = new ResultsGridWidget(session, form.TDBGrid1, run);
    window->SetResultsGrid(grid);
    window->AddRefresher([grid] { grid->Refresh(); });

    // The analyses' menus; the results menus follow the grid's captions as they open.
    QMenuBar* bar = window->menuBar();
    QAction* exit = bar->actions().isEmpty() ? nullptr : bar->actions().last();
    auto addMenu = [window, bar, exit](const char* title) {
        auto* menu = new QMenu(title, window);
        bar->insertMenu(exit, menu);
        return menu;
    };
    QMenu* analysis = addMenu("&Analysis");
    QMenu* fit = analysis->addMenu("&Curve Fitting");
    FillFitMenu(fit, run);
    AddWaveMenuItems(analysis, run);
    QMenu* results = addMenu("&Results");
    QObject::connect(results, &QMenu::aboutToShow, results, [results, &form, run] {
        results->clear();
        FillResultsMenu(results, form.TDBGrid1, run);
    });
    QMenu* plot = addMenu("&Plot");
    QObject::connect(plot, &QMenu::aboutToShow, plot, [plot, &form, run] {
        plot->clear();
        FillResultsPlotMenu(plot, form.TDBGrid1, run);
    });
    window->Refresh();
    return window;
}

}  // namespace ardel
