// The fitting tab and the results grid as widgets: bound to the form both ways, buttons and
// menu entries running their handlers by name, the grid showing the table with its captions.
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>

#include <gtest/gtest.h>

#include "ui/group/fitting_tab.h"
#include "ui/group/results_grid.h"

namespace ardel {
namespace {

TEST(FittingTab, BindsTheFormBothWaysAndRunsButtonsByName) {
    group::GrpAnalForm form;
    std::vector<std::string> ran;
    FittingTab tab(form, [&](const std::string& name) { ran.push_back(name); });
    auto* exps = tab.findChild<QComboBox*>("Combo9");
    auto* range = tab.findChild<QComboBox*>("Combo8");
    auto* offset = tab.findChild<QCheckBox*>("Check3");
    auto* tau2 = tab.findChild<QLineEdit*>("Tau(1)");
    auto* start = tab.findChild<QPushButton*>("Command2");
    ASSERT_TRUE(exps && range && offset && tau2 && start);
    EXPECT_EQ(exps->currentText(), "2");
    EXPECT_EQ(tau2->text(), "100");

    range->setCurrentText("Custom Range");
    offset->setChecked(true);
    tau2->setText("42");
    emit tau2->textEdited("42");
    EXPECT_EQ(form.Combo8, "Custom Range");
    EXPECT_TRUE(form.Check3);
    EXPECT_EQ(form.Tau[1], "42");

    // A command changes the form; the tab follows on Refresh.
    form.Combo9 = "3";
    form.Command2 = "Interrupt Fitting";
    form.Label10 = "Trace#=1  # of Iteration=20";
    tab.Refresh();
    EXPECT_EQ(exps->currentText(), "3");
    EXPECT_EQ(start->text(), "Interrupt Fitting");
    EXPECT_EQ(tab.findChild<QLabel*>("Label10")->text(), "Trace#=1  # of Iteration=20");

    start->click();
    tab.findChild<QPushButton*>("Command19")->click();
    tab.findChild<QPushButton*>("Command11")->click();
    EXPECT_EQ(ran, (std::vector<std::string>{"GrpAnal.Command2", "GrpAnal.Command19", "GrpAnal.Command11"}));
}

TEST(ResultsGrid, ShowsTheTableAndKeepsTheCurrentRow) {
    Session s;
    group::ResultsGrid grid;
    for (int k = 0; k < 30; ++k) {
        ResultRow r;
        r.Identifier = "cell.abf G1 T" + std::to_string(k);
        r.Values[6] = 2.5f;
        group::AppendResult(s.results, grid, r);
    }
    group::SetFittingRunCaptions(grid);
    std::vector<std::string> ran;
    ResultsGridWidget w(s, grid, [&](const std::string& name) { ran.push_back(name); });
    w.resize(600, 200);
    w.Refresh();
    QTableView* view = w.View();
    ASSERT_EQ(view->model()->rowCount(), 30);
    EXPECT_EQ(view->model()->headerData(12, Qt::Horizontal).toString(), "R-Sqr");
    EXPECT_EQ(view->model()->headerData(29, Qt::Vertical).toString(), "30");
    EXPECT_EQ(view->model()->data(view->model()->index(3, 7)).toString(), "2.5");
    // The new last row is current.
    EXPECT_EQ(view->currentIndex().row(), 29);
    view->setCurrentIndex(view->model()->index(4, 0));
    EXPECT_EQ(grid.row, 4);

    // The Results menu lists the captioned columns for the arrays, and its entries run by name.
    QMenu menu;
    FillResultsMenu(&menu, grid, [&](const std::string& name) { ran.push_back(name); });
    auto* put = menu.findChild<QMenu*>("GrpAnal.menu_Put2Array1");
    ASSERT_TRUE(put);
    EXPECT_EQ(put->actions().size(), 16);  // columns 1..16 have captions
    put->actions()[6]->trigger();
    EXPECT_EQ(ran.back(), "GrpAnal.menu_Put2Array1(7)");

    const QImage shot = w.grab().toImage();
    EXPECT_NE(shot.pixel(5, 5), shot.pixel(shot.width() / 2, shot.height() / 2 + 10));
}

}  // namespace
}  // namespace ardel
