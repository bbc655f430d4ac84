// The results grid of the group window (TDBGrid1): the results table with the captions of the
// analysis tab, the row number in the row marker, the current row kept in the form, and the
// Results menu on the right button. Every entry runs its handler by name.
#pragma once

#include <QWidget>

#include "core/session.h"
#include "group/results_table.h"
#include "ui/run_handler.h"

class QMenu;
class QTableView;

namespace ardel {

class CommandTable;

class ResultsTableModel;

class ResultsGridWidget : public QWidget {
    Q_OBJECT
  public:
    ResultsGridWidget(const Session& session, group::ResultsGrid& grid, RunHandler run,
                      QWidget* parent = nullptr);
    // The grid follows the table: rows, captions and the current row, scrolled into view.
    void Refresh();
    QTableView* View() const { return view_; }

  private:
    group::ResultsGrid& grid_;
    RunHandler run_;
    ResultsTableModel* model_ = nullptr;
    QTableView* view_ = nullptr;
    bool refreshing_ = false;
};

// The Results menu's entries (deletions, copy and files, columns to the arrays, A / sum,
// statistics) and the Plot menu's, built from the grid's captions as each menu opens.
void FillResultsMenu(QMenu* menu, const group::ResultsGrid& grid, const RunHandler& run);
void FillResultsPlotMenu(QMenu* menu, const group::ResultsGrid& grid, const RunHandler& run);

// The desktop's own print, preview ("Fitting Results Print Preview") and page setup of the
// grid, registered over the script's GrpAnal.menu_PrintResults, menu_preview, menu_PageSetup.
// The session, grid and parent must outlive the table's entries.
void RegisterResultsPrintCommands(CommandTable& table, const Session& session,
                                  const group::ResultsGrid& grid, QWidget* parent);

}  // namespace ardel
