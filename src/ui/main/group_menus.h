// The main window's item that opens the group analysis window: "Group Analysis" (F3,
// menu_AnalyseGp), and the window itself as the main window keeps it.
#pragma once

#include <functional>
#include <string>

class QMenu;
class QWidget;

namespace ardel {

struct Forms;
struct Session;
class GroupAnalysisWindow;

// Adds "Group Analysis" to menu; it runs menu_AnalyseGp. F3 reaches the same handler through
// the main window's key table, so the item only shows the key.
void AddGroupAnalysisItem(QMenu* menu, const std::function<void(const std::string&)>& run);

// The window, hidden until a handler shows it (Forms::grpAnal.shown); FollowForms() on it after
// every command.
GroupAnalysisWindow* CreateGroupAnalysisWindow(Session& session, Forms& forms,
                                               std::function<void(const std::string&)> run,
                                               QWidget* parent);

}  // namespace ardel
