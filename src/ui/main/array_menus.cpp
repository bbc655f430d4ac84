#include "ui/main/array_menus.h"

#include <QMenu>
#include <QMenuBar>

#include "arrays/data_arrays.h"
#include "script/command_table.h"
#include "script/forms.h"
#include "ui/arrays/array_statistics_window.h"
#include "ui/arrays/math_operation_dialog.h"
#include "ui/main/window_helpers.h"

namespace ardel {

namespace {

// One submenu per fill command, each listing all field captions.
void FieldMenu(QMenu* parent, const std::string& name, const QString& caption,
               const RunHandler& run) {
    QMenu* sub = parent->addMenu(caption);
    sub->setObjectName(QString::fromStdString(name));
    for (int i = 0; i < kArrayFieldCount; ++i) {
        const std::string_view field = ArrayFieldCaption(i);
        mainwindow::AddHandlerItem(
            sub, QString::fromUtf8(field.data(), qsizetype(field.size())).replace("&", "&&"),
            IndexedName(name, i), run);
    }
}

}  // namespace

QMenu* AddArrayMenus(QMenuBar* bar, RunHandler run) {
    QMenu* menu = bar->addMenu("&Data Array");
    menu->setObjectName("menu_dataarray");
    for (int n = 1; n <= 2; ++n) {
        const std::string a = std::to_string(n);
        const QString array = QString(" Array #%1").arg(n);
        FieldMenu(menu, "menu_PutAllArray" + a, "Put All Events into" + array, run);
        FieldMenu(menu, "menu_PutHLArray" + a, "Put Highlighted Events into" + array, run);
        mainwindow::AddHandlerItem(menu, "Inter-event Intervals into" + array,
                                   "menu_InterEventArray" + a, run);
        menu->addSeparator();
    }
    mainwindow::AddHandlerItem(menu, "Clear Array #1", "menu_ClearArray1", run);
    mainwindow::AddHandlerItem(menu, "Clear Array #2", "menu_ClearArray2", run);
    menu->addSeparator();
    mainwindow::AddHandlerItem(menu, "Copy Arrays to Clipboard", "menu_ArrayCopy", run);
    QMenu* paste = menu->addMenu("Paste from Clipboard");
    paste->setObjectName("menu_PasteArray");
    mainwindow::AddHandlerItem(paste, "into Array #1", "menu_PasteArray(1)", run);
    mainwindow::AddHandlerItem(paste, "into Array #2", "menu_PasteArray(2)", run);
    mainwindow::AddHandlerItem(menu, "Save Array Data as ASCII", "menu_ArrayAscii", run);
    mainwindow::AddHandlerItem(menu, "Open ASCII to import data into Arrays", "menu_importAscii",
                               run);
    menu->addSeparator();
    mainwindow::AddHandlerItem(menu, "Statistics of Arrays", "menu_ArrayStat", run);
    mainwindow::AddHandlerItem(menu, "Mathematical Operation", "menu_MathOperation", run);
    return menu;
}

ArrayWindows::ArrayWindows(QWidget* parent, Forms& forms, RunHandler run)
    : forms_(forms),
      statistics_(new ArrayStatisticsWindow(parent)),
      mathOperation_(new MathOperationDialog(forms.mathOperation, std::move(run), parent)) {}

void ArrayWindows::FollowForms() {
    if (forms_.cstatShown) {
        forms_.cstatShown = false;
        statistics_->ShowForm(forms_.cstat);
        statistics_->show();
        statistics_->raise();
    }
    if (forms_.mathOperationShown) {
        mathOperation_->FromForm();
        if (!mathOperation_->isVisible()) mathOperation_->show();
    } else if (mathOperation_->isVisible()) {
        mathOperation_->hide();
    }
}

}  // namespace ardel
