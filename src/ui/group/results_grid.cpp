#include "ui/group/results_grid.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QTableView>
#include <QVBoxLayout>

#include "core/number_text.h"
#include "script/command_table.h"
#include "ui/print/event_list_printer.h"
#include "ui/qt_text.h"

namespace ardel {

// The table as the grid asks for it, cell by cell.
class ResultsTableModel : public QAbstractTableModel {
  public:
    ResultsTableModel(const Session& s, const group::ResultsGrid& grid, QObject* parent)
        : QAbstractTableModel(parent), s_(s), grid_(grid) {}
    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : int(s_.results.rows.size());
    }
    int columnCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : group::kGridColumns;
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole || !index.isValid() ||
            std::size_t(index.row()) >= s_.results.rows.size())
            return {};
        return Q(group::ResultCellText(s_.results.rows[std::size_t(index.row())], index.column()));
    }
    QVariant headerData(int section, Qt::Orientation o, int role) const override {
        if (role != Qt::DisplayRole) return {};
        if (o == Qt::Vertical) return section + 1;
        if (section < 0 || section >= group::kGridColumns) return {};
        return Q(grid_.captions[std::size_t(section)]);
    }
    void Reset() {
        beginResetModel();
        endResetModel();
    }

  private:
    const Session& s_;
    const group::ResultsGrid& grid_;
};

namespace {

void AddEntry(QMenu* menu, const QString& caption, const std::string& handler, const RunHandler& run) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(Q(handler));
    QObject::connect(a, &QAction::triggered, menu, [run, handler] {
        if (run) run(handler);
    });
}

// A submenu of the grid's captioned columns 1..19 (the first named by its caption always).
QMenu* ColumnMenu(QMenu* parent, const QString& title, const char* handler,
                  const group::ResultsGrid& grid, const RunHandler& run, bool arrays) {
    QMenu* sub = parent->addMenu(title);
    sub->setObjectName(handler);
    for (int c = 1; c < group::kGridColumns; ++c) {
        const std::string& caption = grid.captions[std::size_t(c)];
        if (c > 1 && Trim(caption).empty()) continue;
        AddEntry(sub, Q(caption), IndexedName(handler, c), run);
    }
    if (arrays) {
        AddEntry(sub, "Data Array #1", IndexedName(handler, group::kPlotArray1), run);
        AddEntry(sub, "Data Array #2", IndexedName(handler, group::kPlotArray2), run);
    }
    return sub;
}

}  // namespace

void FillResultsMenu(QMenu* menu, const group::ResultsGrid& grid, const RunHandler& run) {
    AddEntry(menu, "Delete Last Result", "GrpAnal.menu_LastResult", run);
    AddEntry(menu, "Delete Selected Result", "GrpAnal.menu_DeleteSelected", run);
    AddEntry(menu, "Delete Even Results", "GrpAnal.menu_DeleteEven", run);
    AddEntry(menu, "Delete Odd Results", "GrpAnal.menu_DeleteOdd", run);
    AddEntry(menu, "Clear Results", "GrpAnal.menu_ClearResults", run);
    menu->addSeparator();
    AddEntry(menu, "Copy Results", "GrpAnal.menu_copyresults", run);
    AddEntry(menu, "Save as ASCII File (*.Fit)...", "GrpAnal.menu_copyasciifile", run);
    AddEntry(menu, "Save Results (*.RSL)...", "GrpAnal.menu_SaveResults", run);
    AddEntry(menu, "Load Results (*.RSL)...", "GrpAnal.menu_LoadResults", run);
    menu->addSeparator();
    ColumnMenu(menu, "Put into Array #1", "GrpAnal.menu_Put2Array1", grid, run, false);
    ColumnMenu(menu, "Put into Array #2", "GrpAnal.menu_Put2Array2", grid, run, false);
    const std::pair<const char*, const char*> ratios[] = {{"GrpAnal.menu_A1overSum", "A1/(A1+A2)"},
                                                          {"GrpAnal.menu_A2overSum", "A2/(A1+A2)"}};
    for (const auto& [name, title] : ratios) {
        QMenu* sub = menu->addMenu(title);
        AddEntry(sub, "Put into Array #1", IndexedName(name, 0), run);
        AddEntry(sub, "Put into Array #2", IndexedName(name, 1), run);
    }
    AddEntry(menu, "Column Statistics", "GrpAnal.menu_ColumnStat", run);
}

void FillResultsPlotMenu(QMenu* menu, const group::ResultsGrid& grid, const RunHandler& run) {
    ColumnMenu(menu, "Frequency Histogram", "GrpAnal.menu_FreqHisto", grid, run, true);
    ColumnMenu(menu, "Cumulative Histogram", "GrpAnal.menu_CumulHisto", grid, run, true);
    ColumnMenu(menu, "Time Course Plot", "GrpAnal.menu_TimeCoursePlot", grid, run, true);
}

void RegisterResultsPrintCommands(CommandTable& table, const Session& session,
                                  const group::ResultsGrid& grid, QWidget* parent) {
    auto printer = std::make_shared<EventListPrinter>(
        [&session, &grid](int) {
            PrintedTable t;
            for (const std::string& caption : grid.captions) t.captions.push_back(Q(caption));
            for (const ResultRow& row : session.results.rows) {
                QStringList cells;
                for (int c = 0; c < group::kGridColumns; ++c) cells.push_back(Q(group::ResultCellText(row, c)));
                t.rows.push_back(cells);
            }
            return t;
        },
        "Fitting Results Print Preview", "ResultsPrintPreview");
    table.Add("GrpAnal.menu_PrintResults", "Print Results", kPlainCommand, [printer](CommandContext& c) {
        if (!printer->Print(0)) c.ui.Message("Print", "No printer is available.");
    });
    table.Add("GrpAnal.menu_preview", "Print Preview", kPlainCommand,
              [printer, parent](CommandContext&) { printer->Preview(0, parent); });
    table.Add("GrpAnal.menu_PageSetup", "Page Setup", kPlainCommand,
              [printer, parent](CommandContext&) { printer->PageSetup(parent); });
}

ResultsGridWidget::ResultsGridWidget(const Session& session, group::ResultsGrid& grid,
                                     RunHandler run, QWidget* parent)
    : QWidget(parent), grid_(grid), run_(std::move(run)) {
    setObjectName("ResultsGrid");
    view_ = new QTableView;
    view_->setObjectName("TDBGrid1");
    model_ = new ResultsTableModel(session, grid_, this);
    view_->setModel(model_);
    view_->setSelectionBehavior(QAbstractItemView::SelectRows);
    view_->setSelectionMode(QAbstractItemView::SingleSelection);
    view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view_->horizontalHeader()->setDefaultSectionSize(90);
    view_->setColumnWidth(0, 260);
    view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 6);
    // Room for the captions and four rows, so that the newest results stay readable below the
    // drawing area; more rows scroll.
    constexpr int kRowsInView = 4;
    view_->setMinimumHeight(view_->horizontalHeader()->sizeHint().height() +
                            kRowsInView * view_->verticalHeader()->defaultSectionSize() +
                            view_->horizontalScrollBar()->sizeHint().height() +
                            2 * view_->frameWidth());
    view_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(view_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) {
                if (!refreshing_) grid_.row = current.isValid() ? current.row() : -1;
            });
    connect(view_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        QMenu menu(this);
        FillResultsMenu(&menu, grid_, run_);
        menu.addSeparator();
        FillResultsPlotMenu(menu.addMenu("Plot"), grid_, run_);
        menu.exec(view_->viewport()->mapToGlobal(at));
    });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view_);
}

void ResultsGridWidget::Refresh() {
    refreshing_ = true;
    model_->Reset();
    if (grid_.row >= 0 && grid_.row < model_->rowCount({})) {
        const QModelIndex at = model_->index(grid_.row, 0);
        view_->setCurrentIndex(at);
        view_->scrollTo(at);
    }
    refreshing_ = false;
}

}  // namespace ardel
