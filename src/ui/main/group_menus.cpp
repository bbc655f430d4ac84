#include "ui/main/group_menus.h"

#include <QMenu>

#include "ui/group/group_analysis_window.h"
#include "ui/main/window_helpers.h"

namespace ardel {

void AddGroupAnalysisItem(QMenu* menu, const std::function<void(const std::string&)>& run) {
    mainwindow::AddHandlerItem(menu, "&Group Analysis and Curve Fitting\tF3", "menu_AnalyseGp", run);
}

GroupAnalysisWindow* CreateGroupAnalysisWindow(Session& session, Forms& forms,
                                               std::function<void(const std::string&)> run,
                                               QWidget* parent) {
    // A window of its own beside the main window, not a child drawn inside it.
    auto* window = new GroupAnalysisWindow(session, forms, std::move(run), parent);
    window->setWindowFlag(Qt::Window);
    return window;
}

}  // namespace ardel
