#include "ui/main/array_menus.h"

#include <QMenu>
#include <QMenuBar>

#include "arrays/data_arrays.h"
#include "script/forms.h"
#include "ui/arrays/array_statistics_window.h"
#include "ui/arrays/math_operation_dialog.h"

namespace ardel {

namespace {

void Item(QMenu* menu, const std::string& name, const QString& caption, const RunHandler& run) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(QString::fromStdString(name));
    QObject::connect(a, &QAction::triggered, menu, [run, name] { run(name); });
}

// One submenu per fill command, each listing all field captions.
void FieldMenu(QMenu* parent, const std::string& name, const QString& caption,
               const RunHandler& run) {
    QMenu* sub = parent->addMenu(caption);
    sub->setObjectName(QString::fromStdString(name));
    for (int i = 0; i < kArrayFieldCount; ++i) {
        const std::string_view field = ArrayFieldCaption(i);
        Item(sub, name + "(" + std::to_string(i) + ")",
             QString::fromUtf8(field.data(), qsizetype(field.size())).replace("&", "&&"), run);
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
        Item(menu, "menu_InterEventArray" + a, "Inter-event Intervals into" + array, run);
        menu->addSeparator();
    }
    Item(menu, "menu_ClearArray1", "Clear Array #1", run);
    Item(menu, "menu_ClearArray2", "Clear Array #2", run);
    menu->addSeparator();
    Item(menu, "menu_ArrayCopy", "Copy Arrays to Clipboard", run);
    QMenu* paste = menu->addMenu("Paste from Clipboard");
    paste->setObjectName("menu_PasteArray");
    Item(paste, "menu_PasteArray(1)", "into Array #1", run);
    Item(paste, "menu_PasteArray(2)", "into Array #2", run);
    Item(menu, "menu_ArrayAscii", "Save Array Data as ASCII", run);
    Item(menu, "menu_importAscii", "Open ASCII to import data into Arrays", run);
    menu->addSeparator();
    Item(menu, "menu_ArrayStat", "Statistics of Arrays", run);
    Item(menu, "menu_MathOperation", "Mathematical Operation", run);
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
