// The main window's menus.
#include "ui/main_window.h"

#include <QAction>
#include <QFileInfo>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QKeySequence>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include "detect/digital_filter.h"
#include "detect/manual_edit.h"
#include "events/event_list.h"
#include "detect/suggested_parameters.h"
#include "ui/dataanalysis/data_analysis_window.h"
#include "ui/main/group_menus.h"
#include "ui/main/hrv_menus.h"
#include "ui/main/analysis_menus.h"
#include "ui/main/array_menus.h"
#include "ui/main/plot_menus.h"
#include "ui/main/recent_files.h"
#include "ui/main/window_helpers.h"
#include "view/navigation.h"
#include "view/trace_scene.h"

namespace ardel {

namespace fs = std::filesystem;
using namespace mainwindow;

void Ardelvantine::BuildMenus() {
    QMenu* file = menuBar()->addMenu("&File");
    file->setObjectName("menu_File");
    AddAction(file, "menu_OpenRecording", "Open &Recording...")->setShortcut(QKeySequence::Open);
    menuRecent_ = file->addMenu("Open Recen&t");
    menuRecent_->setObjectName("menu_RecentFiles");
    RebuildRecentMenu();
    file->addSeparator();
    AddAction(file, "menu_OpenEvent", "&Open Event File");
    AddAction(file, "menu_SaveEvent", "&Save Event File")
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    file->addSeparator();
    AddAction(file, "menu_SaveParameter", "Save &Parameters");
    AddAction(file, "menu_LoadParameter", "&Load Parameters");
    AddAction(file, "menu_FileComments", "File &Comments");
    file->addSeparator();
    QMenu* saveSettings = file->addMenu("Save Settings");
    saveSettings->setObjectName("menu_SaveSettingsMenu");
    AddAction(saveSettings, "menu_SaveSettingsArdel", "in Ardelvan.ini");
    AddAction(saveSettings, "menu_SaveSettingsCustom", "in Custom Settings File");
    AddAction(file, "menu_LoadSettings", "Load Settings");
    file->addSeparator();
    AddAction(file, "menu_DatInfo", "DAT File &Info");
    QMenu* synch = file->addMenu("Extract Synch Array");
    synch->setObjectName("menu_ExtractSynchArray");
    const char* targets[3] = {"into Data Array #1", "into Data Array #2",
                              "into Event Table (Relative Time)"};
    for (int i = 0; i < 3; ++i)
        AddAction(synch, "menu_ExtractSynchArray(" + std::to_string(i) + ")", targets[i]);
    file->addSeparator();
    AddAction(file, "menu_batch", "&Batch Analysis");
    file->addSeparator();
    // Closing the window asks what Exit asks; the window's close runs menu_Exit.
    auto* exit = new QAction("E&xit", this);
    exit->setObjectName("menu_Exit");
    exit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(exit, &QAction::triggered, this, [this] { close(); });
    file->addAction(exit);

    QMenu* analysis = menuBar()->addMenu("&Analysis");
    analysis->setObjectName("menu_Analysis");
    QMenu* suggest = analysis->addMenu("Suggest Analysis Parameters");
    suggest->setObjectName("menu_SuggParamMenu");
    for (int i = 1; i <= 3; ++i) {
        AddAction(suggest, "menu_SuggParam(" + std::to_string(i) + ")",
                  MenuText(kSuggParamCaptions[std::size_t(i)]));
    }
    AddAction(analysis, "menu_RMSNoise", "Measure RMS Noise");
    analysis->addSeparator();
    AddAction(analysis, "menu_DoublePeak_Click", "Analyse &Double Peak");
    AddAction(analysis, "menu_ScanDoublePeak", "Scan and Detect Double Peaks");
    AddAction(analysis, "menu_ScanAdjustBaseline", "Scan and Adjust Baseline to Threshold");
    analysis->addSeparator();
    AddGroupAnalysisItem(analysis, [this](const std::string& name) { RunHandler(name); });

    BuildEventMenus();

    QMenu* nav = menuBar()->addMenu("&Navigate");
    nav->setObjectName("menu_Navigates");
    for (int i = 1; i <= kNavigationItemCount; ++i) {
        const auto item = NavigationItem(i);
        const std::string name = "menu_Navigates(" + std::to_string(i) + ")";
        if (IsSeparator(item)) {
            nav->addSeparator()->setObjectName(Q(name));
            continue;
        }
        // The key is shown beside the item but stays the window's own: a shortcut of the menu
        // would also take the letter from the text boxes.
        AddAction(nav, name, MenuText(NavigationCaption(item)) + "\t" + Q(NavigationKeyText(item)));
    }

    QMenu* display = menuBar()->addMenu("&Display");
    display->setObjectName("menu_Display");
    AddAction(display, "menu_DisplayContinously", MenuText(kTimedDisplayCaption));
    AddAction(display, "menu_AutoScale", "&Auto Scale")->setShortcut(QKeySequence(Qt::Key_F4));

    const auto run = [this](const std::string& name) { RunHandler(name); };
    QMenu* arrays = AddArrayMenus(menuBar(), run);
    AddArrayPlotItems(arrays, run);
    arrays->addSeparator();
    QMenu* tests = arrays->addMenu("Statistical &Tests");
    tests->setObjectName("menu_StatisticalTests");
    AddDataAnalysisItems(tests, run);
    AddCorrelogramItems(arrays, run);
    AddPlotMenu(menuBar(), session_, run);
    hrv_ = AddHrvMenu(this, forms_, run);

    QMenu* help = menuBar()->addMenu("&Help");
    help->setObjectName("menu_Help");
    QMenu* shortcuts = help->addMenu("Short &Cuts");
    shortcuts->setObjectName("menu_ShortCuts");
    int index = 0;
    for (const ShortcutHelpEntry& e : ShortcutHelpText())
        AddAction(shortcuts, "menu_ShortCuts(" + std::to_string(index++) + ")", MenuText(e.caption));
    AddAction(help, "menu_FilterHelp", "Digital Filter");
}

void Ardelvantine::BuildEventMenus() {
    // The popup of an event on the trace.
    menuEventEdit_ = new QMenu(this);
    menuEventEdit_->setObjectName("menu_EventEdit");
    const char* editHandlers[7] = {"menu_RejectThisEvent", "menu_DeletEvent",
                                   "menu_RecalculatePeak", "menu_DoublePeak",
                                   "menu_BaselineThreshold", "menu_markasgp", "menu_Unmark"};
    QAction* deleteThis = nullptr;
    for (int i = 0; i < 7; ++i) {
        QAction* a = AddAction(menuEventEdit_, editHandlers[i], kEventEditMenuCaptions[std::size_t(i)]);
        if (i == 1) deleteThis = a;
    }

    // The list's operations: in the main menu, and in the grid's popup, which starts with the
    // deletion of the selected event.
    menuEventList_ = menuBar()->addMenu("&Events");
    menuEventList_->setObjectName("menu_EventList");
    menuEvents_->addAction(deleteThis);
    menuEvents_->addSeparator();
    QMenu* sort = new QMenu("Sort Events by", this);
    sort->setObjectName("menu_SortMenu");
    for (int i = 1; i <= kSortColumnCount; ++i)
        AddAction(sort, "menu_sort(" + std::to_string(i) + ")", MenuText(SortCaption(i)));
    const auto both = [&](auto&& add) {
        add(menuEventList_);
        add(menuEvents_);
    };
    // "All Events" (Index 0) and "Highlighted Events" (Index 1) of one output.
    const auto rowSets = [this](const char* caption, const char* objectName, const char* handler) {
        auto* m = new QMenu(caption, this);
        m->setObjectName(objectName);
        AddAction(m, std::string(handler) + "(0)", "All Events");
        AddAction(m, std::string(handler) + "(1)", "Highlighted Events");
        return m;
    };
    QMenu* outputs[] = {
        rowSets("&Copy to Clipboard", "menu_CopyMenu", "menu_copytoclipboard"),
        rowSets("Save as &ASCII File", "menu_SaveAsciiMenu", "menu_savetoAsciiFile"),
        rowSets("&Print", "menu_PrintMenu", "menu_printeventsdirect"),
        rowSets("Print Pre&view", "menu_PreviewMenu", "menu_EventsPrintPreview")};

    both([&](QMenu* m) { m->addMenu(sort); });
    QAction* duplicates = AddAction(menuEventList_, "menu_RemoveDuplicates", "Remove Duplicates");
    menuEvents_->addAction(duplicates);
    both([](QMenu* m) { m->addSeparator(); });
    menuEventList_->addAction(deleteThis);
    const std::pair<const char*, const char*> editItems[] = {
        {"menu_deleteevents", "&Delete Highlighted Events"},
        {"menu_RejectEvents", "Re&ject Highlighted Events"},
        {"menu_DeleteRejected", "Delete All Rejected Events"},
        {nullptr, nullptr},
        {"menu_Group", "Mark Events as &Group"},
        {"menu_MarkAllEvents", "Mark All Events as Group\tN"},
        {"menu_MarkAllWindow", "Mark All Events in this Window\tM"},
        {"menu_unmarkgp", "&Unmark Highlighted Events"},
        {"menu_UnmarkGrouped", "Unmark Grouped Events"},
    };
    for (const auto& [handler, caption] : editItems) {
        if (!handler) {
            both([](QMenu* m) { m->addSeparator(); });
            continue;
        }
        QAction* a = AddAction(menuEventList_, handler, caption);
        menuEvents_->addAction(a);
    }
    both([](QMenu* m) { m->addSeparator(); });
    both([&](QMenu* m) {
        for (QMenu* sub : outputs) m->addMenu(sub);
    });
    QAction* setup = AddAction(menuEventList_, "menu_eventspagesetup", "Print Page &Setup");
    menuEvents_->addAction(setup);
    menuEventList_->addSeparator();
    AddAction(menuEventList_, "menu_CriteriaSearch", "&Group by Criteria Search");
    AddAction(menuEventList_, "menu_groupbyrandom", "Group by &Random Selection");
    AddAction(menuEventList_, "menu_groupEpisodic", "Group by &Episodes");
    AddBurstItem(menuEventList_, [this](const std::string& name) { RunHandler(name); });
}

void Ardelvantine::RebuildRecentMenu() {
    menuRecent_->clear();
    const QStringList files = RecentFiles::List();
    int n = 0;
    for (const QString& f : files) {
        ++n;
        const QString caption = QString("&%1 %2").arg(n).arg(QFileInfo(f).fileName());
        // A recent file opens as a click on it in the file list.
        auto* a = new QAction(caption, this);
        a->setObjectName(QString("menu_RecentFiles(%1)").arg(n));
        connect(a, &QAction::triggered, this, [this, f] { OpenFileAsClick(fs::path(S(f))); });
        menuRecent_->addAction(a);
        a->setToolTip(f);
        a->setStatusTip(f);
    }
    menuRecent_->setEnabled(!files.isEmpty());
}

}  // namespace ardel
