// The main window's "&Data Array" menu and the two windows its items open. Every item runs its
// handler by name through the command table, so the desktop and scripts share one path.
#pragma once

#include "ui/run_handler.h"

class QMenu;
class QMenuBar;
class QWidget;

namespace ardel {

struct Forms;
class ArrayStatisticsWindow;
class MathOperationDialog;


// Adds the menu with every fill, clear, clipboard, file, statistics and arithmetic item; each
// QAction carries its handler's name as objectName ("menu_PutAllArray1(0)").
QMenu* AddArrayMenus(QMenuBar* bar, RunHandler run);

// Shows the statistics window and the arithmetic form when a command asked for them
// (Forms::cstatShown, Forms::mathOperationShown). Call after every command.
class ArrayWindows {
  public:
    ArrayWindows(QWidget* parent, Forms& forms, RunHandler run);
    void FollowForms();
    ArrayStatisticsWindow* statistics() const { return statistics_; }
    MathOperationDialog* mathOperation() const { return mathOperation_; }

  private:
    Forms& forms_;
    ArrayStatisticsWindow* statistics_;
    MathOperationDialog* mathOperation_;
};

}  // namespace ardel
