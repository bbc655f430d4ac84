// The Data Analysis window offscreen: the menu items open it with their test, the Test button
// fills the grid and the graph, typing selects "Mean", and an edited cell in manual entry goes
// into its array.
#include <gtest/gtest.h>

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

#include "script/command_table.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"
#include "ui/dataanalysis/data_analysis_window.h"

namespace ardel::testing {
namespace {

struct AnalysisRig {
    Session session;
    Forms forms;
    ScriptedDialogs ui;
    CommandTable table;
    QMenu menu;
    std::unique_ptr<DataAnalysisWindow> window;

    AnalysisRig() {
        RegisterAllCommands(table);
        const auto run = [this](const std::string& name) {
            const CommandEntry* entry = table.Find(name);
            ASSERT_NE(entry, nullptr) << name;
            CommandContext c(session, ui, forms);
            RunCommand(c, *entry);
            window->FollowForms();
        };
        AddDataAnalysisItems(&menu, run);
        window = std::make_unique<DataAnalysisWindow>(forms, run);
    }
    void Trigger(const char* name) {
        QAction* a = menu.findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
    }
    QString Cell(int row, int col) const {
        auto* grid = window->findChild<QTableWidget*>("Grid1");
        return grid->item(row, col) ? grid->item(row, col)->text() : QString();
    }
};

TEST(DataAnalysisWindow, TestsFillTheGridAndTheGraph) {
    AnalysisRig rig;
    rig.session.dataArray1.values = {0, 1, 2, 3, 4, 5};
    rig.session.dataArray2.values = {0, 2, 2, 4, 5, 7};
    rig.Trigger("menu_ttest_paired");
    ASSERT_TRUE(rig.window->isVisible());
    EXPECT_EQ(rig.window->windowTitle(), "1.  T-test Paired 2 Samples");
    rig.window->findChild<QPushButton*>("Command1")->click();
    EXPECT_EQ(rig.Cell(0, 0), "Mean");
    EXPECT_EQ(rig.Cell(4, 0), "t Stat");
    EXPECT_EQ(rig.Cell(4, 1), "-3.1623");

    rig.Trigger("menu_KStest");
    rig.window->findChild<QPushButton*>("Command1")->click();
    EXPECT_EQ(rig.Cell(1, 0), "Max. Abs(Difference)");
    EXPECT_FALSE(rig.window->findChild<QLabel*>("Graph1")->pixmap().isNull());

    // Typing into a sample's box selects its "Mean" option.
    auto* mean = rig.window->findChild<QLineEdit*>("Text3(0)");
    mean->setText("4");
    emit mean->textEdited("4");
    EXPECT_TRUE(rig.window->findChild<QRadioButton*>("Option2(1)")->isChecked());
    EXPECT_EQ(rig.forms.dataAnalysis.Text[1][0], "4");

    rig.window->findChild<QPushButton*>("Command2")->click();
    EXPECT_FALSE(rig.window->isVisible());
}

TEST(DataAnalysisWindow, ManualEntryWritesAnEditedCellIntoItsArray) {
    AnalysisRig rig;
    rig.session.dataArray1.values = {0, 1, 2};
    rig.Trigger("menu_ManualDataEntry");
    EXPECT_EQ(rig.window->windowTitle(), "20.  Manual Data Entry");
    auto* grid = rig.window->findChild<QTableWidget*>("Grid1");
    ASSERT_EQ(grid->rowCount(), 2);
    EXPECT_EQ(rig.Cell(1, 1), "2.000");
    ASSERT_TRUE(grid->item(1, 2)->flags() & Qt::ItemIsEditable);
    EXPECT_FALSE(grid->item(1, 0)->flags() & Qt::ItemIsEditable);
    grid->item(1, 2)->setText("6.5");
    ASSERT_EQ(rig.session.dataArray2.UpperBound(), 2);
    EXPECT_FLOAT_EQ(rig.session.dataArray2(2), 6.5f);
}

}  // namespace
}  // namespace ardel::testing
