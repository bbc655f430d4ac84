#include "ui/main_window.h"

#include <algorithm>
#include <cmath>
#include <system_error>

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCursor>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSet>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>
#include <QTimer>
#include <QUrl>

#include "core/open_file.h"
#include "detect/digital_filter.h"
#include "detect/manual_edit.h"
#include "script/main_form.h"
#include "script/print_commands.h"
#include "script/script_runner.h"
#include "ui/dataanalysis/data_analysis_window.h"
#include "ui/group/group_analysis_window.h"
#include "ui/group/results_grid.h"
#include "ui/hrv/geo_window.h"
#include "ui/hrv/hrv_window.h"
#include "ui/hrv/spectral_window.h"
#include "ui/main/group_menus.h"
#include "ui/main/array_menus.h"
#include "ui/criteria/criteria_window.h"
#include "ui/datinfo/dat_info_dialog.h"
#include "ui/event_grid_model.h"
#include "ui/main/recent_files.h"
#include "ui/main/window_helpers.h"
#include "ui/print/event_list_printer.h"
#include "ui/qt_user_dialogs.h"
#include "ui/trace_view.h"
#include "view/trace_axes.h"
#include "view/trace_scene.h"

namespace ardel {

namespace fs = std::filesystem;
using namespace mainwindow;

namespace {

Key KeyOfQt(int k) {
    if (k >= Qt::Key_A && k <= Qt::Key_Z) return KeyFromChar(char('A' + (k - Qt::Key_A)));
    if (k >= Qt::Key_0 && k <= Qt::Key_9) return KeyFromChar(char('0' + (k - Qt::Key_0)));
    static constexpr std::pair<int, Key> kOthers[] = {
        {Qt::Key_F3, Key::F3},         {Qt::Key_F5, Key::F5},      {Qt::Key_F6, Key::F6},
        {Qt::Key_F7, Key::F7},         {Qt::Key_F8, Key::F8},      {Qt::Key_F9, Key::F9},
        {Qt::Key_F10, Key::F10},       {Qt::Key_F11, Key::F11},    {Qt::Key_F12, Key::F12},
        {Qt::Key_PageUp, Key::PageUp}, {Qt::Key_PageDown, Key::PageDown},
        {Qt::Key_Home, Key::Home},     {Qt::Key_End, Key::End}};
    for (const auto& [qt, key] : kOthers)
        if (qt == k) return key;
    return Key::None;
}

bool IsFunctionKey(int k) {
    return k >= Qt::Key_F1 && k <= Qt::Key_F35;
}

// A control in which the user types: letters and digits are its own there, so that a
// threshold can be typed without moving the screen. The menu bar in keyboard mode takes its
// mnemonics likewise.
bool OwnsLetterKeys(const QWidget* w) {
    if (!w) return false;
    if (qobject_cast<const QMenuBar*>(w)) return true;
    if (qobject_cast<const QLineEdit*>(w) || qobject_cast<const QAbstractSpinBox*>(w) ||
        qobject_cast<const QTextEdit*>(w) || qobject_cast<const QPlainTextEdit*>(w))
        return true;
    if (const auto* combo = qobject_cast<const QComboBox*>(w)) return combo->isEditable();
    return false;
}

// Only a text that differs is written, so that the caret of a box stays where it is.
void SetText(QLineEdit* box, const std::string& text) {
    const QString q = Q(text);
    if (box->text() != q) box->setText(q);
}

void SetCheck(QCheckBox* box, bool on) {
    if (box->isChecked() != on) box->setChecked(on);
}

}  // namespace

// The window's dialogs for its commands: a command that yields (a random selection) has
// changed its button's caption, which shows before the window takes the next press.
class Ardelvantine::WindowDialogs final : public ForwardingDialogs {
  public:
    WindowDialogs(UserDialogs& inner, Ardelvantine& w) : ForwardingDialogs(inner), w_(w) {}
    void Yield() override {
        if (w_.criteria_) w_.criteria_->ShowCaptions(w_.forms_.criteria);
        inner_.Yield();
    }

  private:
    Ardelvantine& w_;
};

// ---------------------------------------------------------------------------------------------
// Construction

Ardelvantine::Ardelvantine(fs::path programDir, UserDialogs* dialogs, QWidget* parent)
    : QMainWindow(parent), programDir_(std::move(programDir)) {
    setObjectName("Ardelvantine");
    setWindowTitle("Ardelvantine");
    if (dialogs) {
        ui_ = dialogs;
    } else {
        ownDialogs_ = std::make_unique<QtUserDialogs>(this);
        ui_ = ownDialogs_.get();
    }
    runDialogs_ = std::make_unique<WindowDialogs>(*ui_, *this);
    iniPath_ = ArdelvanIniPath(programDir_);
    session_.CurrentFolder = programDir_;
    printer_ = std::make_unique<EventListPrinter>(session_);

    context_ = std::make_unique<CommandContext>(session_, *runDialogs_, forms_, programDir_);
    context_->showForms = [this] { ShowForms(); };
    RegisterAllCommands(table_);
    RegisterDesktopCommands();

    BuildUi();
    BuildMenus();
    arrayWindows_ = std::make_unique<ArrayWindows>(
        this, forms_, [this](const std::string& name) { RunHandler(name); });
    dataAnalysis_ = new DataAnalysisWindow(
        forms_, [this](const std::string& name) { RunHandler(name); }, this);
    hrvSpectral_ = new HrvSpectralWindow(
        forms_, [this](const std::string& name) { RunHandler(name); }, this);
    hrvGeo_ = new HrvGeoWindow(forms_, [this](const std::string& name) { RunHandler(name); }, this);
    groupWindow_ = CreateGroupAnalysisWindow(
        session_, forms_, [this](const std::string& name) { RunHandler(name); }, this);
    RegisterResultsPrintCommands(table_, session_, forms_.grpAnal.form.TDBGrid1, groupWindow_);
    context_->startTimedDisplay = [this](std::int32_t ms) { timer2_->start(ms); };

    session_.onDisplay = [this](Session&) { OnDisplay(); };
    session_.onLabel4 = [this](Session&, std::string_view text) {
        forms_.main.Label4 = std::string(text);
        label4_->setText(Q(forms_.main.Label4));
    };
    // Display filters the freshly loaded screens whenever the filter box is checked. It runs
    // on every redraw, so its warning about the cut-off comes once per command.
    filterMessages_ = std::make_unique<OncePerCommandMessages>(*ui_);
    InstallDigitalFilter(session_, *filterMessages_);
    setAcceptDrops(true);
    picture_->SetCursors(&forms_.main.cursors);
    qApp->installEventFilter(this);

    LoadStartupSettings(session_, forms_.main, *ui_, programDir_);
    ShowForms();
    RefreshAll();
    picture_->setFocus();
}

Ardelvantine::~Ardelvantine() {
    qApp->removeEventFilter(this);
    session_.onDisplay = nullptr;
    session_.onLabel4 = nullptr;
}

// The handlers only the desktop has: the list's printing, and those that show a window.
void Ardelvantine::RegisterDesktopCommands() {
    for (int index = 0; index <= 1; ++index) {
        table_.Add(IndexedName("menu_printeventsdirect", index), "Print", kPlainCommand,
                   [this, index](CommandContext& c) {
                       if (!printer_->Print(index)) c.ui.Message("Print", "No printer is available.");
                   });
        table_.Add(IndexedName("menu_EventsPrintPreview", index), "Print Preview",
                   kPlainCommand,
                   [this, index](CommandContext&) { printer_->Preview(index, this); });
    }
    table_.Add("menu_eventspagesetup", "Print Page Setup", kPlainCommand,
               [this](CommandContext&) { printer_->PageSetup(this); });
    // The header window shows what the command put into its form.
    for (const char* name : {"menu_DatInfo", "Label11"}) {
        const CommandEntry base = *table_.Find(name);
        table_.Add(name, base.title, base.flags, [this, body = base.body](CommandContext& c) {
            body(c);
            if (!session_.recording.FileIsOpen) return;
            if (!datInfo_) datInfo_ = new DatInfoDialog(this);
            datInfo_->Fill(forms_.datInfo);
            datInfo_->show();
            datInfo_->raise();
            datInfo_->activateWindow();
        });
    }
    table_.Add("menu_OpenRecording", "Open Recording", kPlainCommand, [](CommandContext& c) {
        FileDialogSpec spec;
        spec.title = "Open Recording";
        spec.filter =
            "ABF Data File (*.DAT *.ABF)|*.DAT;*.ABF|Event File (*.EVT)|*.EVT|All Files (*)|*";
        spec.initialDirectory = c.session.CurrentFolder;
        if (const auto chosen = c.ui.OpenFileName(spec)) ShowFolderAndOpen(c, *chosen);
    });
}

// ---------------------------------------------------------------------------------------------
// The one path of all handlers

Ardelvantine::RunKind Ardelvantine::RunKindOf(std::string_view name) {
    if (name == "Command3") return RunKind::NonStop;
    if (name == "menu_batch") return RunKind::Batch;
    if (name == "menu_ScanDoublePeak" || name == "menu_ScanAdjustBaseline")
        return RunKind::EventScan;
    if (name == "Criteria.Command2") return RunKind::Selection;
    return RunKind::None;
}

bool Ardelvantine::RunHandler(const std::string& name) {
    const CommandEntry* entry = table_.Find(name);
    if (!entry) return false;
    RunEntry(*entry, RunKindOf(name));
    return true;
}

void Ardelvantine::RunEntry(const CommandEntry& entry, RunKind kind) {
    if (runDepth_ > 0 && !(entry.flags & kDuringRun)) {
        // One long run at a time, and nothing that would pull the recording from under it.
        QApplication::beep();
        statusText_->setText("Busy: press Interrupt (F12) first.");
        return;
    }
    if (runDepth_ == 0) {
        // A new command: what the status bar said about the last one no longer holds.
        filterMessages_->NewCommand();
        forms_.main.StatusText.clear();
        statusText_->clear();
        statusText_->setToolTip(QString());
    }
    ReadWidgets();
    const bool longRun = entry.flags & kLongRun;
    if (longRun && runDepth_++ == 0) {
        runKind_ = kind;
        scanTotal_ = session_.events.EventCount();
        lastRepaint_.restart();
        progress_->setValue(0);
        progress_->setVisible(kind != RunKind::Selection);
        if (kind == RunKind::Selection)
            statusText_->setText("Random selection: press \"Stop\" to end it.");
    }
    RunCommand(*context_, entry);
    if (longRun && --runDepth_ == 0) {
        runKind_ = RunKind::None;
        progress_->hide();
    }
    ShowForms();
    if (session_.recording.FileIsOpen && session_.recording.DataFilePath != remembered_) {
        // A recording was opened: the recent list, the header window and the file list follow.
        remembered_ = session_.recording.DataFilePath;
        RememberRecording();
        if (datInfo_ && datInfo_->isVisible()) {
            datInfo_->Fill(DatInfoForm{DatInfoTitle(session_), DatInfoRows(session_)});
        }
        const auto found = fileList_->findItems(Q(remembered_.filename().string()), Qt::MatchExactly);
        if (!found.isEmpty()) fileList_->setCurrentItem(found.first());
    }
    RefreshAll();
    if (closePending_ && runDepth_ == 0) QTimer::singleShot(0, this, [this] { close(); });
}

// ---------------------------------------------------------------------------------------------
// The main form, both ways

void Ardelvantine::ReadWidgets() {
    MainForm& f = forms_.main;
    f.Text1 = S(text1_->text());
    f.Text3 = S(text3_->text());
    for (int i = 0; i < 7; ++i) f.Text4[std::size_t(i)] = S(text4_[i]->text());
    f.Combo1 = combo1_->currentIndex() == 1 ? 1 : 0;
    f.Combo2 = S(combo2_->currentText());
    f.ckComplexPeak = ckComplexPeak_->isChecked();
    f.ckSoundOn = ckSoundOn_->isChecked();
    f.ckTooltips = ckTooltips_->isChecked();
    f.ckLockBase = ckLockBase_->isChecked();
    f.cbFraction = S(cbFraction_->currentText());
    f.ckDisplayTrace = ckDisplayTrace_->isChecked();
    f.cbGpNav = S(cbGpNav_->currentText());
    f.cbInterval = S(cbInterval_->currentText());
    f.Check1 = check1_->isChecked();
    f.Combo4 = combo4_->currentIndex();
    f.Combo5 = S(combo5_->currentText());
    f.SSTab1 = tabs_->currentIndex();
    f.Slider1 = slider1_->value();
    f.Slider2 = slider2_->value();
    f.Combo3 = S(combo3_->currentText());
    f.ckCursors = ckCursors_->isChecked();
    if (criteria_) criteria_->Read(forms_.criteria);
}

void Ardelvantine::ShowForms() {
    const MainForm& f = forms_.main;
    ShowFileList();
    SetText(text1_, f.Text1);
    SetText(text3_, f.Text3);
    for (int i = 0; i < 7; ++i) SetText(text4_[i], f.Text4[std::size_t(i)]);
    combo1_->setCurrentIndex(f.Combo1);
    SetComboText(combo2_, f.Combo2);
    SetCheck(ckComplexPeak_, f.ckComplexPeak);
    SetCheck(ckSoundOn_, f.ckSoundOn);
    SetCheck(ckTooltips_, f.ckTooltips);
    SetCheck(ckLockBase_, f.ckLockBase);
    SetComboText(cbFraction_, f.cbFraction);
    SetCheck(ckDisplayTrace_, f.ckDisplayTrace);
    SetComboText(cbGpNav_, f.cbGpNav);
    SetComboText(cbInterval_, f.cbInterval);
    SetCheck(check1_, f.Check1);
    if (f.Combo4 >= 0 && f.Combo4 < combo4_->count()) combo4_->setCurrentIndex(f.Combo4);
    SetComboText(combo5_, f.Combo5);
    tabs_->setCurrentIndex(f.SSTab1);
    label4_->setText(Q(f.Label4));
    SetCheck(ckCursors_, f.ckCursors);
    lbCursor_->setText(Q(f.lbCursor));
    if (!f.StatusText.empty()) {
        statusText_->setText(Q(f.StatusText));
        // The warnings of an open, one a line, where the bar is too short for them.
        QStringList lines;
        if (f.StatusText.starts_with("Opened with warnings"))
            for (const std::string& w : session_.recording.warnings) lines << Q(w);
        statusText_->setToolTip(lines.join("\n"));
    }
    if (f.ckTooltips != tipsShown_) {
        ParkToolTips(!f.ckTooltips);
        tipsShown_ = f.ckTooltips;
    }
    ShowDisplayWidgets();
    if (criteria_) criteria_->Show(forms_.criteria);
    if (arrayWindows_) arrayWindows_->FollowForms();
    if (dataAnalysis_) dataAnalysis_->FollowForms();
    if (hrv_) hrv_->FollowForms();
    if (hrvSpectral_) hrvSpectral_->FollowForms();
    if (hrvGeo_) hrvGeo_->FollowForms();
    if (groupWindow_) groupWindow_->FollowForms();
    if (forms_.criteriaShown) {
        // A menu item asked for the window; it comes forward once.
        forms_.criteriaShown = false;
        ShowCriteriaWindow();
    }
}

void Ardelvantine::ShowDisplayWidgets() {
    MainForm& f = forms_.main;
    ShowDisplayControls(session_, f);
    const Recording& r = session_.recording;
    {
        const QSignalBlocker block(slider1_);
        slider1_->setValue(f.Slider1);
    }
    if (r.FileIsOpen) {
        const QSignalBlocker block(slider2_);
        slider2_->setRange(0, std::max(1, r.TotalBlocks));
        slider2_->setPageStep(r.TotalBlocks / 10 + 1);
        slider2_->setValue(f.Slider2);
    }
    if (r.FileIsOpen) {
        const QSignalBlocker block(combo3_);
        if (combo3_->count() != int(f.Combo3Items.size())) {
            combo3_->clear();
            for (const std::string& c : f.Combo3Items) combo3_->addItem(Q(c));
        }
        combo3_->setCurrentText(Q(f.Combo3));
    }
    label11_->setText(Q(f.Label11));
    setWindowTitle(f.Label11.empty() ? QString("Ardelvantine") : "Ardelvantine - " + Q(f.Label11));
}

void Ardelvantine::ParkToolTips(bool park) {
    // A tip is parked in the control's "Tag" and comes back from there.
    for (QWidget* w : findChildren<QWidget*>()) {
        if (park) {
            if (!w->toolTip().isEmpty()) {
                w->setProperty("Tag", w->toolTip());
                w->setToolTip(QString());
            }
        } else {
            const QVariant tag = w->property("Tag");
            if (tag.isValid() && w->toolTip().isEmpty()) {
                w->setToolTip(tag.toString());
                w->setProperty("Tag", QVariant());
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Keeping the window up to date

void Ardelvantine::OnDisplay() {
    if (runDepth_ == 0) {
        ShowDisplayWidgets();
        picture_->update();
        return;
    }
    // During a run the screens change far faster than anyone can look; drawing every one
    // would only slow the run down.
    const qint64 since = lastRepaint_.isValid() ? lastRepaint_.elapsed() : kRunRepaintMs;
    if (since >= kRunRepaintMs) {
        lastRepaint_.restart();
        ShowDisplayWidgets();
        RefreshProgress();
        SyncGrid();
        picture_->update();
    } else if (!refreshTimer_->isActive()) {
        refreshTimer_->start(int(kRunRepaintMs - since));
    }
}

void Ardelvantine::RefreshProgress() {
    const Recording& r = session_.recording;
    switch (runKind_) {
        case RunKind::NonStop:
        case RunKind::Batch: {
            const double done =
                r.TotalBlocks > 0 ? (r.ScreenBlock - r.header.lDataSectionPtr) / r.TotalBlocks : 0;
            progress_->setValue(int(std::clamp(done * 100.0, 0.0, 100.0)));
            statusText_->setText(
                QString("%1 %2: %3 events.  Interrupt (F12) stops.")
                    .arg(runKind_ == RunKind::Batch ? "Batch analysis," : "Non-stop analysis of")
                    .arg(Q(session_.Label11))
                    .arg(session_.events.EventCount()));
            break;
        }
        case RunKind::EventScan: {
            const int n = session_.events.CurrentEvent;
            progress_->setValue(scanTotal_ > 0 ? std::clamp(n * 100 / scanTotal_, 0, 100) : 0);
            statusText_->setText(QString("Scanning the events: event %1 of %2.  "
                                         "Interrupt (F12) stops.")
                                     .arg(n)
                                     .arg(scanTotal_));
            break;
        }
        case RunKind::Selection:
        case RunKind::None:
            break;
    }
}

void Ardelvantine::RefreshAll() {
    ShowDisplayWidgets();
    if (runDepth_ > 0) RefreshProgress();
    SyncGrid();
    picture_->update();
}

void Ardelvantine::SyncGrid() {
    syncingGrid_ = true;
    gridModel_->Sync();
    const std::int32_t count = session_.events.EventCount();
    const std::int32_t row = AgreeGridRow(session_.events, gridAgreement_);
    QItemSelectionModel* selection = grid_->selectionModel();
    if (row == 0) {
        if (selection->currentIndex().isValid() || selection->hasSelection()) {
            selection->clearSelection();
            selection->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
        }
    } else if (grid_->currentIndex().row() != row - 1) {
        // The highlighted row is the selected event, the one the next command acts on. A row
        // the user picked in the grid is current already, and the rows highlighted with it
        // stay.
        const QModelIndex index = gridModel_->index(row - 1, 0);
        selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                              QItemSelectionModel::Rows);
        if (count >= 2) grid_->scrollTo(index);
    }
    std::erase_if(session_.HighlightedRows, [count](std::int32_t n) { return n > count; });
    syncingGrid_ = false;
}

void Ardelvantine::ShowCriteriaWindow() {
    if (!criteria_) {
        // Closed, it opens again on the next menu item; its boxes keep their contents.
        criteria_ = new CriteriaWindow(this, [this](const std::string& name) { RunHandler(name); });
    }
    criteria_->Show(forms_.criteria);
    criteria_->show();
    criteria_->raise();
    criteria_->activateWindow();
}

// ---------------------------------------------------------------------------------------------
// File list

void Ardelvantine::ShowFolder(const fs::path& folder) {
    ardel::ShowFolder(session_, forms_.main, folder);
    ShowFileList();
}

void Ardelvantine::ShowFileList() {
    const MainForm& f = forms_.main;
    if (f.DirListBoxFETCH == folderShown_ && f.FListBoxFETCH == listShown_) return;
    const bool sameFolder = f.DirListBoxFETCH == folderShown_;
    // A file just written (an event file) shows at once; the list keeps its place.
    const int row = fileList_->currentRow();
    const int scroll = fileList_->verticalScrollBar()->value();
    folderShown_ = f.DirListBoxFETCH;
    listShown_ = f.FListBoxFETCH;
    folderBox_->setText(Q(folderShown_));
    if (!folderShown_.empty()) RecentFiles::SetLastFolder(Q(folderShown_));

    fileList_->clear();
    const fs::path dir(folderShown_);
    const QIcon folderIcon = style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon fileIcon = style()->standardIcon(QStyle::SP_FileIcon);
    for (const std::string& name : listShown_) {
        const fs::path path = name == ".." ? dir.parent_path() : dir / name;
        std::error_code ec;
        const bool isDir = name == ".." || fs::is_directory(path, ec);
        auto* item = new QListWidgetItem(isDir ? folderIcon : fileIcon, Q(name));
        item->setData(Qt::UserRole, Q(path.string()));
        item->setData(Qt::UserRole + 1, isDir);
        fileList_->addItem(item);
    }
    if (sameFolder) {
        if (row >= 0 && row < fileList_->count()) fileList_->setCurrentRow(row);
        fileList_->verticalScrollBar()->setValue(scroll);
    }
}

void Ardelvantine::FListBoxFETCH_Click(QListWidgetItem* item) {
    if (!item) return;
    const fs::path path(S(item->data(Qt::UserRole).toString()));
    if (item->data(Qt::UserRole + 1).toBool()) {
        if (runDepth_ == 0) ShowFolder(path);
        return;
    }
    RunEntry(OpenFileEntry(path));
    if (session_.recording.FileIsOpen) picture_->setFocus();
}

void Ardelvantine::OpenFileAsClick(const fs::path& file) {
    std::error_code ec;
    const fs::path full = fs::absolute(file, ec);
    ShowFolder(full.parent_path());
    const QString name = Q(full.filename().string());
    for (int i = 0; i < fileList_->count(); ++i) {
        QListWidgetItem* item = fileList_->item(i);
        if (!item->data(Qt::UserRole + 1).toBool() && item->text() == name) {
            fileList_->setCurrentItem(item);
            break;
        }
    }
    // A file the list does not show (another pattern) opens all the same.
    RunEntry(OpenFileEntry(full));
    if (session_.recording.FileIsOpen) picture_->setFocus();
}

void Ardelvantine::ShowLastFolder() {
    const QString last = RecentFiles::LastFolder();
    if (!last.isEmpty() && QFileInfo(last).isDir()) ShowFolder(fs::path(S(last)));
}

void Ardelvantine::RememberRecording() {
    RecentFiles::Add(Q(session_.recording.DataFilePath.string()));
    RebuildRecentMenu();
}

void Ardelvantine::dragEnterEvent(QDragEnterEvent* event) {
    const auto urls = event->mimeData()->urls();
    if (!urls.isEmpty() && urls.first().isLocalFile() && runDepth_ == 0)
        event->acceptProposedAction();
}

void Ardelvantine::dropEvent(QDropEvent* event) {
    const auto urls = event->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile()) return;
    event->acceptProposedAction();
    const fs::path file(S(urls.first().toLocalFile()));
    // The drop ends only after this returns; questions of the open come up after it.
    QTimer::singleShot(0, this, [this, file] { OpenFileAsClick(file); });
}

// ---------------------------------------------------------------------------------------------
// Grid

void Ardelvantine::GridRowChosen(int row) {
    if (row < 0) return;
    RunEntry(GridRowEntry(row + 1));
}

void Ardelvantine::GridSelectionChanged() {
    // The highlighted list keeps the order of highlighting: rows no longer selected leave it,
    // newly selected ones join at its end (a range in row order).
    QSet<int> now;
    for (const QModelIndex& i : grid_->selectionModel()->selectedRows()) now.insert(i.row() + 1);
    std::vector<std::int32_t>& rows = session_.HighlightedRows;
    std::erase_if(rows, [&now](std::int32_t n) { return !now.contains(n); });
    QList<int> added;
    for (int n : now)
        if (std::find(rows.begin(), rows.end(), n) == rows.end()) added << n;
    std::sort(added.begin(), added.end());
    for (int n : added) rows.push_back(n);
}

// ---------------------------------------------------------------------------------------------
// Keys and mouse

bool Ardelvantine::HandleKey(int qtKey, Qt::KeyboardModifiers modifiers) {
    // Alt belongs to the menus' and buttons' mnemonics.
    if (modifiers & (Qt::AltModifier | Qt::MetaModifier)) return false;
    const Key key = KeyOfQt(qtKey);
    if (key == Key::None) return false;
    const KeyBinding binding = BindingForKey(key, modifiers & Qt::ControlModifier);
    if (binding.command == KeyCommand::None) return false;
    // A key without a handler is taken and does nothing.
    if (const auto entry = KeyEntry(table_, binding))
        RunEntry(*entry, RunKindOf(KeyHandlerName(binding)));
    return true;
}

bool Ardelvantine::eventFilter(QObject* watched, QEvent* event) {
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget || widget->window() != this) return QMainWindow::eventFilter(watched, event);

    switch (event->type()) {
        case QEvent::KeyPress: {
            auto* ke = static_cast<QKeyEvent*>(event);
            QWidget* focus = QApplication::focusWidget();
            if (!focus || focus->window() != this) focus = widget;
            if (OwnsLetterKeys(focus) && !IsFunctionKey(ke->key())) break;
            if (HandleKey(ke->key(), ke->modifiers())) return true;
            break;
        }
        case QEvent::MouseButtonPress:
            if (watched == grid_->viewport() &&
                static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
                gridPressing_ = true;
            break;
        case QEvent::MouseButtonRelease: {
            auto* me = static_cast<QMouseEvent*>(event);
            if (watched == grid_->viewport() && me->button() == Qt::LeftButton) {
                gridPressing_ = false;
                if (grid_->indexAt(me->position().toPoint()).isValid())
                    GridRowChosen(grid_->currentIndex().row());
            } else if (watched == label11_ && me->button() == Qt::LeftButton) {
                RunHandler("Label11");
            }
            break;
        }
        default:
            break;
    }
    return QMainWindow::eventFilter(watched, event);
}

void Ardelvantine::Picture1_MouseMove(double x, double y) {
    if (!session_.recording.FileIsOpen) return;
    MainForm& f = forms_.main;
    f.Label4 = Label4Text(session_, x, y);
    label4_->setText(Q(f.Label4));
    if (PictureMouseMove(session_, f.cursors, x, y)) {
        f.lbCursor = f.cursors.lbCursor;
        lbCursor_->setText(Q(f.lbCursor));
        picture_->update();
    }
}

void Ardelvantine::Picture1_MouseDown(Qt::MouseButton button, int shiftMask, double x, double y) {
    if (button != Qt::LeftButton) return;
    const double textWidth = picture_->TextWidthInPoints("X");
    RunEntry({"Picture1", kPlainCommand, [shiftMask, x, y, textWidth](CommandContext& c) {
                  CursorState& cur = c.forms.main.cursors;
                  PictureMouseDown(c.session, c.ui, cur, x, y, shiftMask, textWidth);
                  c.forms.main.lbCursor = cur.lbCursor;
              }});
}

void Ardelvantine::Picture1_MouseUp(Qt::MouseButton button, int, double x, double) {
    if (button != Qt::RightButton) return;
    bool popup = false;
    const double textWidth = picture_->TextWidthInPoints("X");
    RunEntry({"Picture1", kPlainCommand, [x, textWidth, &popup](CommandContext& c) {
                  popup = PictureMouseUpRight(c.session, x, textWidth) == TracePopup::EventEdit;
              }});
    if (!popup) {
        StopBlinking();
        return;
    }
    PlotSelected(session_);
    StartBlinking();
    menuEventEdit_->exec(QCursor::pos());
    StopBlinking();
    RunEntry({"menu_EventEdit", kPlainCommand,
              [](CommandContext& c) { EventEditMenuClosed(c.session); }});
}

void Ardelvantine::Picture1_Wheel(int notches, bool ctrl) {
    RunEntry({"Picture1", kDuringRun, [notches, ctrl](CommandContext& c) {
                  const int direction = notches > 0 ? 1 : -1;
                  for (int k = 0; k < std::abs(notches); ++k) {
                      if (ctrl)
                          StepDisplayGain(c.session, direction);
                      else if (direction > 0)
                          JumpToPrevScreen(c.session);
                      else
                          JumpToNextScreen(c.session);
                  }
                  if (ctrl) c.forms.main.Text1 = DisplayGainText(c.session);
              }});
}

void Ardelvantine::StartBlinking() {
    picture_->SetBlinking(true);
    timer1_->start();
}

void Ardelvantine::StopBlinking() {
    timer1_->stop();
    picture_->SetBlinking(false);
}

void Ardelvantine::Timer1_Timer() {
    picture_->BlinkTick();
    if (ckSoundOn_->isChecked()) ui_->Beep();
}

void Ardelvantine::closeEvent(QCloseEvent* event) {
    if (runDepth_ > 0) {
        // The run is deep in the stack: stop it, and close once it has unwound.
        if (runKind_ == RunKind::Selection)
            forms_.criteria.Command2Caption = std::string(kStartSelection);
        else
            RunHandler("Command4");
        closePending_ = true;
        event->ignore();
        return;
    }
    context_->exitRequested = false;
    RunHandler("menu_Exit");
    if (!context_->exitRequested) {
        event->ignore();
        return;
    }
    timer1_->stop();
    timer2_->stop();
    if (datInfo_) datInfo_->close();
    if (criteria_) criteria_->close();
    event->accept();
}

}  // namespace ardel
