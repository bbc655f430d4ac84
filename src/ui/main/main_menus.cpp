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
#include "detect/suggested_parameters.h"
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
    AddAction(file, "menu_OpenRecording", "Open &Recording...",
              [this] { menu_OpenRecording_Click(); })
        ->setShortcut(QKeySequence::Open);
    menuRecent_ = file->addMenu("Open Recen&t");
    menuRecent_->setObjectName("menu_RecentFiles");
    RebuildRecentMenu();
    file->addSeparator();
    AddAction(file, "menu_OpenEvent", "&Open Event File", [this] { menu_OpenEvent_Click(); });
    AddAction(file, "menu_SaveEvent", "&Save Event File", [this] { menu_SaveEvent_Click(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    file->addSeparator();
    AddAction(file, "menu_SaveParameter", "Save &Parameters",
              [this] { menu_SaveParameter_Click(); });
    AddAction(file, "menu_LoadParameter", "&Load Parameters",
              [this] { menu_LoadParameter_Click(); });
    AddAction(file, "menu_FileComments", "File &Comments", [this] { menu_FileComments_Click(); });
    file->addSeparator();
    QMenu* saveSettings = file->addMenu("Save Settings");
    saveSettings->setObjectName("menu_SaveSettingsMenu");
    AddAction(saveSettings, "menu_SaveSettingsArdel", "in Ardelvan.ini",
              [this] { Command6_Click(); });
    AddAction(saveSettings, "menu_SaveSettingsCustom", "in Custom Settings File",
              [this] { menu_SaveSettingsCustom_Click(); });
    AddAction(file, "menu_LoadSettings", "Load Settings", [this] { menu_LoadSettings_Click(); });
    file->addSeparator();
    AddAction(file, "menu_DatInfo", "DAT File &Info", [this] { menu_DatInfo_Click(); });
    QMenu* synch = file->addMenu("Extract Synch Array");
    synch->setObjectName("menu_ExtractSynchArray");
    const char* targets[3] = {"into Data Array #1", "into Data Array #2",
                              "into Event Table (Relative Time)"};
    for (int i = 0; i < 3; ++i) {
        AddAction(synch, QString("menu_ExtractSynchArray(%1)").arg(i).toUtf8().constData(),
                  targets[i], [this, i] { menu_ExtractSynchArray_Click(i); });
    }
    file->addSeparator();
    AddAction(file, "menu_batch", "&Batch Analysis", [this] { menu_batch_Click(); });
    file->addSeparator();
    AddAction(file, "menu_Exit", "E&xit", [this] { close(); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

    QMenu* analysis = menuBar()->addMenu("&Analysis");
    analysis->setObjectName("menu_Analysis");
    QMenu* suggest = analysis->addMenu("Suggest Analysis Parameters");
    suggest->setObjectName("menu_SuggParamMenu");
    for (int i = 1; i <= 3; ++i) {
        AddAction(suggest, QString("menu_SuggParam(%1)").arg(i).toUtf8().constData(),
                  MenuText(kSuggParamCaptions[std::size_t(i)]),
                  [this, i] { menu_SuggParam_Click(i); });
    }
    AddAction(analysis, "menu_RMSNoise", "Measure RMS Noise", [this] { menu_RMSNoise_Click(); });
    analysis->addSeparator();
    AddAction(analysis, "menu_DoublePeak_Click", "Analyse &Double Peak",
              [this] { menu_DoublePeak_Click(); });
    AddAction(analysis, "menu_ScanDoublePeak", "Scan and Detect Double Peaks",
              [this] { menu_ScanDoublePeak_Click(); });
    AddAction(analysis, "menu_ScanAdjustBaseline", "Scan and Adjust Baseline to Threshold",
              [this] { menu_ScanAdjustBaseline_Click(); });

    // The popup of an event on the trace. Marking and unmarking come with the list
    // operations.
    menuEventEdit_ = new QMenu(this);
    menuEventEdit_->setObjectName("menu_EventEdit");
    AddAction(menuEventEdit_, "menu_RejectThisEvent", kEventEditMenuCaptions[0],
              [this] { menu_RejectThisEvent_Click(); });
    QAction* deleteThis = AddAction(menuEventEdit_, "menu_DeletEvent", kEventEditMenuCaptions[1],
                                    [this] { menu_DeletEvent_Click(); });
    // The grid's popup deletes the selected event through the same action; the other list
    // operations join it with grouping.
    menuEvents_->addAction(deleteThis);
    AddAction(menuEventEdit_, "menu_RecalculatePeak", kEventEditMenuCaptions[2],
              [this] { menu_RecalculatePeak_Click(); });
    AddAction(menuEventEdit_, "menu_DoublePeak", kEventEditMenuCaptions[3],
              [this] { menu_DoublePeak_Click(); });
    AddAction(menuEventEdit_, "menu_BaselineThreshold", kEventEditMenuCaptions[4],
              [this] { menu_BaselineThreshold_Click(); });

    QMenu* nav = menuBar()->addMenu("&Navigate");
    nav->setObjectName("menu_Navigates");
    for (int i = 1; i <= kNavigationItemCount; ++i) {
        const auto item = NavigationItem(i);
        const QByteArray name = QString("menu_Navigates(%1)").arg(i).toUtf8();
        if (IsSeparator(item)) {
            nav->addSeparator()->setObjectName(QString::fromUtf8(name));
            continue;
        }
        // The key is shown beside the item but stays the window's own: a shortcut of the menu
        // would also take the letter from the text boxes.
        AddAction(nav, name.constData(),
                  MenuText(NavigationCaption(item)) + "\t" + Q(NavigationKeyText(item)),
                  [this, i] { menu_Navigates_Click(i); });
    }

    QMenu* display = menuBar()->addMenu("&Display");
    display->setObjectName("menu_Display");
    AddAction(display, "menu_DisplayContinously", MenuText(kTimedDisplayCaption),
              [this] { menu_DisplayContinously_Click(); });
    AddAction(display, "menu_AutoScale", "&Auto Scale", [this] { menu_AutoScale_Click(); })
        ->setShortcut(QKeySequence(Qt::Key_F4));

    QMenu* help = menuBar()->addMenu("&Help");
    help->setObjectName("menu_Help");
    QMenu* shortcuts = help->addMenu("Short &Cuts");
    shortcuts->setObjectName("menu_ShortCuts");
    int index = 0;
    for (const ShortcutHelpEntry& e : ShortcutHelpText()) {
        const QByteArray name = QString("menu_ShortCuts(%1)").arg(index++).toUtf8();
        AddAction(shortcuts, name.constData(), MenuText(e.caption),
                  [this, e] { ui_->Message(e.caption, e.detail); });
    }
    AddAction(help, "menu_FilterHelp", "Digital Filter",
              [this] { ui_->Message("Digital Filter", FilterHelpText()); });
}


void Ardelvantine::RebuildRecentMenu() {
    menuRecent_->clear();
    const QStringList files = RecentFiles::List();
    int n = 0;
    for (const QString& f : files) {
        ++n;
        const QString caption = QString("&%1 %2").arg(n).arg(QFileInfo(f).fileName());
        QAction* a = AddAction(menuRecent_, QString("menu_RecentFiles(%1)").arg(n).toUtf8().constData(),
                               caption, [this, f] { OpenFileAsClick(fs::path(S(f))); });
        a->setToolTip(f);
        a->setStatusTip(f);
    }
    menuRecent_->setEnabled(!files.isEmpty());
}

}  // namespace ardel
