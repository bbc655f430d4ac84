// The Data Array menu, the statistics window and the Mathematical Operation form, offscreen:
// menu items run their handlers by name, and the windows follow the engine's forms.
#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>

#include "script/command_table.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"
#include "ui/arrays/array_statistics_window.h"
#include "ui/arrays/math_operation_dialog.h"
#include "ui/main/array_menus.h"

namespace ardel::testing {
namespace {

// A session, its forms and the command table, run as the desktop runs them.
struct Rig {
    Session session;
    Forms forms;
    ScriptedDialogs ui;
    CommandTable table;
    std::vector<std::string> ran;
    QMenuBar bar;
    std::unique_ptr<ArrayWindows> windows;

    Rig() {
        RegisterAllCommands(table);
        const RunHandler run = [this](const std::string& name) {
            ran.push_back(name);
            const CommandEntry* entry = table.Find(name);
            ASSERT_NE(entry, nullptr) << name;
            CommandContext c(session, ui, forms);
            RunCommand(c, *entry);
            windows->FollowForms();
        };
        AddArrayMenus(&bar, run);
        windows = std::make_unique<ArrayWindows>(nullptr, forms, run);
    }

    void Trigger(const char* name) {
        QAction* a = bar.findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
    }
};

TEST(ArrayMenus, EveryItemIsARegisteredHandlerAndFieldListsShowAllCaptions) {
    Rig rig;
    const QList<QAction*> actions = rig.bar.findChildren<QAction*>();
    int named = 0;
    for (QAction* a : actions) {
        if (a->objectName().isEmpty()) continue;  // separators and submenu titles
        ++named;
        EXPECT_NE(rig.table.Find(a->objectName().toStdString()), nullptr)
            << a->objectName().toStdString();
    }
    EXPECT_EQ(named, 4 * 17 + 2 + 2 + 1 + 2 + 2 + 2);
    for (const char* list : {"menu_PutAllArray1", "menu_PutHLArray2"}) {
        QMenu* sub = rig.bar.findChild<QMenu*>(list);
        ASSERT_NE(sub, nullptr);
        EXPECT_EQ(sub->actions().size(), 17);
        EXPECT_EQ(sub->actions().back()->text(), "Relative Time");
    }
}

TEST(ArrayWindows, StatisticsWindowShowsTheGridOfTheArrays) {
    Rig rig;
    rig.session.dataArray2.values = {0, 1, 2, 3, 4};
    rig.Trigger("menu_ArrayStat");
    ArrayStatisticsWindow* w = rig.windows->statistics();
    ASSERT_TRUE(w->isVisible());
    EXPECT_EQ(w->objectName(), "CStat");
    EXPECT_EQ(w->windowTitle(), "Data Array Statistics");
    auto* grid = w->findChild<QTableWidget*>("Grid1");
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->rowCount(), 12);
    EXPECT_EQ(grid->horizontalHeaderItem(1)->text(), "Array #2");
    EXPECT_EQ(grid->verticalHeaderItem(11)->text(), "n");
    EXPECT_EQ(grid->item(0, 1)->text(), "2.500");  // Average of array #2
    EXPECT_EQ(grid->item(0, 0)->text(), "");       // array #1 is empty
}

TEST(ArrayWindows, MathOperationFormRunsItsHandlersAndFollowsTheForm) {
    Rig rig;
    rig.session.dataArray1.values = {0, 3, -4};
    rig.Trigger("menu_MathOperation");
    MathOperationDialog* d = rig.windows->mathOperation();
    ASSERT_TRUE(d->isVisible());
    EXPECT_EQ(d->windowTitle(), "Mathematical Operation");
    auto* combo2 = d->findChild<QComboBox*>("Combo2");
    auto* operand1 = d->findChild<QComboBox*>("Combo1(0)");
    auto* text1 = d->findChild<QLineEdit*>("Text1(0)");
    ASSERT_TRUE(combo2 && operand1 && text1);
    EXPECT_FALSE(text1->isVisibleTo(d));
    operand1->setCurrentIndex(kOperandArray1);
    emit operand1->activated(kOperandArray1);
    combo2->setCurrentIndex(kOperationSquared);
    emit combo2->activated(kOperationSquared);
    EXPECT_EQ(d->findChild<QLabel*>("Label5")->text(), "Squared");
    EXPECT_FALSE(d->findChild<QComboBox*>("Combo1(1)")->isEnabled());

    // The unused second operand still counts for the length: array #2 holds one 0.
    auto* operand2 = d->findChild<QComboBox*>("Combo1(1)");
    operand2->setCurrentIndex(kOperandArray2);
    rig.ui.ExpectMessage("Mathematical Operation Finished");
    d->findChild<QPushButton*>("Command2")->click();
    EXPECT_EQ(rig.session.dataArray1.values, (std::vector<float>{0, 9, 16}));

    d->findChild<QPushButton*>("Command1")->click();
    EXPECT_FALSE(d->isVisible());
    EXPECT_FALSE(rig.forms.mathOperationShown);
}

}  // namespace
}  // namespace ardel::testing
