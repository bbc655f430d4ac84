#include "ui/main_window.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <system_error>

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCursor>
#include <QDir>
#include <QFormLayout>
#include <QGuiApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QUrl>
#include <QFileInfo>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QSet>
#include <QSignalBlocker>
#include <QSlider>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include "core/event_commands.h"
#include "core/event_files.h"
#include "core/number_text.h"
#include "core/open_file.h"
#include "detect/batch_analysis.h"
#include "detect/complex_peaks.h"
#include "detect/digital_filter.h"
#include "detect/manual_edit.h"
#include "detect/suggested_parameters.h"
#include "detect/window_analysis.h"
#include "ui/dat_info_dialog.h"
#include "ui/event_grid_model.h"
#include "ui/qt_user_dialogs.h"
#include "ui/trace_view.h"
#include "view/trace_scene.h"
#include "ui/main/recent_files.h"
#include "ui/main/window_helpers.h"
#include "view/trace_axes.h"

namespace ardel {

namespace fs = std::filesystem;
using namespace mainwindow;

namespace {

// The file list shows data files, event files and ABF files.
const QStringList kFilePatterns = {"*.da?", "*.EVT", "*.abf"};

// The detection keys behind Text4(0) .. Text4(6), in the frame's order.
constexpr const char* kText4Keys[7] = {
    "ThresholdAmplitude!", "PeriodToSearchMax&",     "PeriodStartBaseline&", "PeriodFindDecayTime&",
    "DecayPercent!",       "PeriodBaselineAverage&", "AreaThreshold!",
};



Key KeyOfQt(int k) {
    if (k >= Qt::Key_A && k <= Qt::Key_Z) return KeyFromChar(char('A' + (k - Qt::Key_A)));
    if (k >= Qt::Key_0 && k <= Qt::Key_9) return KeyFromChar(char('0' + (k - Qt::Key_0)));
    switch (k) {
        case Qt::Key_F3:
            return Key::F3;
        case Qt::Key_F5:
            return Key::F5;
        case Qt::Key_F6:
            return Key::F6;
        case Qt::Key_F7:
            return Key::F7;
        case Qt::Key_F8:
            return Key::F8;
        case Qt::Key_F9:
            return Key::F9;
        case Qt::Key_F10:
            return Key::F10;
        case Qt::Key_F11:
            return Key::F11;
        case Qt::Key_F12:
            return Key::F12;
        case Qt::Key_PageUp:
            return Key::PageUp;
        case Qt::Key_PageDown:
            return Key::PageDown;
        case Qt::Key_Home:
            return Key::Home;
        case Qt::Key_End:
            return Key::End;
        default:
            return Key::None;
    }
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


}  // namespace

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
    iniPath_ = ArdelvanIniPath(programDir_);
    session_.CurrentFolder = programDir_;

    BuildUi();
    BuildMenus();

    session_.onDisplay = [this](Session&) { OnDisplay(); };
    session_.onLabel4 = [this](Session&, std::string_view text) {
        label4_->setText(QString::fromUtf8(text.data(), qsizetype(text.size())));
    };
    // Display filters the freshly loaded screens whenever the filter box is checked. It runs
    // on every redraw, so its warning about the cut-off comes once per command.
    filterMessages_ = std::make_unique<OncePerCommandMessages>(*ui_);
    InstallDigitalFilter(session_, *filterMessages_);
    setAcceptDrops(true);
    picture_->SetCursors(&cursors_);
    qApp->installEventFilter(this);

    LoadStartupSettings();
    RefreshAll();
    picture_->setFocus();
}

Ardelvantine::~Ardelvantine() {
    qApp->removeEventFilter(this);
    session_.onDisplay = nullptr;
    session_.onLabel4 = nullptr;
}

// ---------------------------------------------------------------------------------------------
// The one wrapper of all handlers

void Ardelvantine::Run(const char* command, unsigned flags, const std::function<void()>& body,
                       RunKind kind) {
    if (runDepth_ > 0 && !(flags & kDuringRun)) {
        // One long run at a time, and nothing that would pull the recording from under it.
        QApplication::beep();
        statusText_->setText("Busy: press Interrupt (F12) first.");
        return;
    }
    if (runDepth_ == 0) {
        // A new command: what the status bar said about the last one no longer holds.
        filterMessages_->NewCommand();
        statusText_->clear();
        statusText_->setToolTip(QString());
    }
    const bool longRun = flags & kLongRun;
    bool controlsRead = false;
    bool entered = false;
    std::string failure;
    DetectionParameters paramsBefore;
    ProgramOptions optionsBefore;
    try {
        ReadControls();
        controlsRead = true;
        paramsBefore = session_.params;
        optionsBefore = session_.options;
        if (longRun) {
            ++runDepth_;
            entered = true;
            runKind_ = kind;
            scanTotal_ = session_.events.EventCount();
            lastRepaint_.restart();
            progress_->setValue(0);
            progress_->show();
        }
        body();
    } catch (const std::exception& e) {
        failure = e.what();
        if (failure.empty()) failure = "Unknown error.";
    } catch (...) {
        failure = "Unknown error.";
    }
    if (entered) {
        if (--runDepth_ == 0) {
            runKind_ = RunKind::None;
            progress_->hide();
        }
        if (!failure.empty()) {
            // A run that broke off leaves no flag behind that would stop the next one.
            session_.display.NonStopRunning = false;
            session_.display.BatchRunning = false;
        }
    }
    if (controlsRead &&
        (!(session_.params == paramsBefore) || !(session_.options == optionsBefore))) {
        WriteParameterControls();
        WriteOptionControls();
    }
    RefreshAll();
    if (!failure.empty()) {
        ui_->Message(command, std::string("The command \"") + command +
                                  "\" could not be completed.\n\n" + failure);
    }
    if (closePending_ && runDepth_ == 0) QTimer::singleShot(0, this, [this] { close(); });
}

// ---------------------------------------------------------------------------------------------
// Controls and session

void Ardelvantine::ReadControls() {
    for (int i = 0; i < 7; ++i) ApplyAnalysisParam(session_, kText4Keys[i], S(text4_[i]->text()));
    session_.params.PeakDirection = std::int16_t(combo1_->currentData().toInt() == 1 ? 1 : -1);
    ApplyAnalysisParam(session_, "NumberPointsPeak", S(combo2_->currentText()));
    ProgramOptions& o = session_.options;
    o.ComplexPeak = ckComplexPeak_->isChecked();
    o.SoundOn = ckSoundOn_->isChecked();
    o.DisplayTooltips = ckTooltips_->isChecked();
    o.ckLockBase = ckLockBase_->isChecked();
    o.cbFraction = S(cbFraction_->currentText());
    session_.display.DisplayTrace = ckDisplayTrace_->isChecked();
    o.GroupNavigate = S(cbGpNav_->currentText());
    o.JumpInterval = S(cbInterval_->currentText());
    o.FilterOn = check1_->isChecked();
    o.FilterType = combo4_->currentIndex();
    o.FilterFreq = S(combo5_->currentText());
}

void Ardelvantine::WriteParameterControls() {
    const DetectionFrameTexts texts = DetectionTexts(session_.params);
    for (int i = 0; i < 7; ++i) text4_[i]->setText(Q(texts.Text4[std::size_t(i)]));
    combo1_->setCurrentIndex(session_.params.PeakDirection == 1 ? 1 : 0);
    SetComboText(combo2_, session_.options.Combo2);
    ckComplexPeak_->setChecked(session_.options.ComplexPeak);
}

void Ardelvantine::WriteOptionControls() {
    const ProgramOptions& o = session_.options;
    ckSoundOn_->setChecked(o.SoundOn);
    ckTooltips_->setChecked(o.DisplayTooltips);
    ckLockBase_->setChecked(o.ckLockBase);
    SetComboText(cbFraction_, o.cbFraction);
    ckDisplayTrace_->setChecked(session_.display.DisplayTrace);
    SetComboText(cbGpNav_, o.GroupNavigate);
    SetComboText(cbInterval_, o.JumpInterval);
    check1_->setChecked(o.FilterOn);
    if (o.FilterType >= 0 && o.FilterType < combo4_->count())
        combo4_->setCurrentIndex(o.FilterType);
    SetComboText(combo5_, o.FilterFreq);
    ckComplexPeak_->setChecked(o.ComplexPeak);
}

void Ardelvantine::ApplySettingsTexts(const MainWindowTexts& t) {
    std::error_code ec;
    if (!session_.options.DataDir.empty() && fs::is_directory(session_.options.DataDir, ec))
        ShowFolder(session_.options.DataDir);
    text1_->setText(Q(t.Text1));
    text3_->setText(Q(SetBlocksPerScreenText(session_, t.Text3)));
    combo1_->setCurrentIndex(t.Combo1 == "Positive" ? 1 : 0);
    for (int i = 0; i < 7; ++i) text4_[i]->setText(Q(t.Text4[std::size_t(i)]));
    SetComboText(combo2_, session_.options.Combo2);
    WriteOptionControls();
    if (t.ParkToolTips) ParkToolTips(true);
    RefreshDisplayControls();
}

void Ardelvantine::LoadStartupSettings() {
    try {
        ApplySettingsTexts(LoadIniSettings(session_, iniPath_, programDir_));
    } catch (const std::exception& e) {
        // The session is as it was before the load: the defaults.
        session_.options.DataDir = programDir_.string();
        ApplySettingsTexts(MainWindowTexts{});
        ui_->Message("Ardelvan.ini",
                     std::string(e.what()) + "\n\nThe program starts with the default settings.");
    }
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
        RefreshDisplayControls();
        picture_->update();
        return;
    }
    // During a run the screens change far faster than anyone can look; drawing every one
    // would only slow the run down.
    const qint64 since = lastRepaint_.isValid() ? lastRepaint_.elapsed() : kRunRepaintMs;
    if (since >= kRunRepaintMs) {
        lastRepaint_.restart();
        RefreshDisplayControls();
        RefreshProgress();
        SyncGrid();
        picture_->update();
    } else if (!refreshTimer_->isActive()) {
        refreshTimer_->start(int(kRunRepaintMs - since));
    }
}

void Ardelvantine::RefreshDisplayControls() {
    const Recording& r = session_.recording;
    const int channel = std::min<int>(r.ChannelIndex, 15);
    {
        const QSignalBlocker block(slider1_);
        slider1_->setValue(std::clamp<std::int32_t>(
            session_.display.DisplayOffset[std::size_t(channel)], -kOffsetRange, kOffsetRange));
    }
    if (r.FileIsOpen) {
        const QSignalBlocker block(slider2_);
        slider2_->setRange(0, std::max(1, r.TotalBlocks));
        slider2_->setPageStep(r.TotalBlocks / 10 + 1);
        slider2_->setValue(int(std::lround(r.ScreenBlock)));
    }
    if (r.FileIsOpen) {
        const QSignalBlocker block(combo3_);
        const int channels = std::max(1, r.Channels());
        if (combo3_->count() != channels) {
            combo3_->clear();
            for (int c = 0; c < channels; ++c) combo3_->addItem(QString::number(c));
        }
        combo3_->setCurrentIndex(r.ChannelIndex);
    }
    label11_->setText(Q(session_.Label11));
    setWindowTitle(session_.Label11.empty() ? QString("Ardelvantine")
                                            : "Ardelvantine - " + Q(session_.Label11));
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
        case RunKind::None:
            break;
    }
}

void Ardelvantine::RefreshAll() {
    RefreshDisplayControls();
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
    std::erase_if(highlighted_, [count](std::int32_t n) { return n > count; });
    syncingGrid_ = false;
}

void Ardelvantine::ShowWarnings() {
    const auto& w = session_.recording.warnings;
    if (w.empty()) return;
    QStringList lines;
    for (const std::string& s : w) lines << Q(s);
    statusText_->setText("Opened with warnings: " + lines.join("  "));
    statusText_->setToolTip(lines.join("\n"));
}

// ---------------------------------------------------------------------------------------------
// File list

void Ardelvantine::ShowFolder(const fs::path& folder) {
    std::error_code ec;
    fs::path dir = fs::weakly_canonical(fs::absolute(folder, ec), ec);
    if (dir.empty() || !fs::is_directory(dir, ec)) return;
    session_.CurrentFolder = dir;
    session_.options.DataDir = dir.string();
    RecentFiles::SetLastFolder(Q(dir.string()));
    folderBox_->setText(Q(dir.string()));

    fileList_->clear();
    const QDir qdir(Q(dir.string()));
    const QIcon folderIcon = style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon fileIcon = style()->standardIcon(QStyle::SP_FileIcon);
    if (dir.has_parent_path() && dir.parent_path() != dir) {
        auto* up = new QListWidgetItem(folderIcon, "..");
        up->setData(Qt::UserRole, Q(dir.parent_path().string()));
        up->setData(Qt::UserRole + 1, true);
        fileList_->addItem(up);
    }
    for (const QString& name :
         qdir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase)) {
        auto* item = new QListWidgetItem(folderIcon, name);
        item->setData(Qt::UserRole, qdir.absoluteFilePath(name));
        item->setData(Qt::UserRole + 1, true);
        fileList_->addItem(item);
    }
    for (const QString& name :
         qdir.entryList(kFilePatterns, QDir::Files, QDir::Name | QDir::IgnoreCase)) {
        auto* item = new QListWidgetItem(fileIcon, name);
        item->setData(Qt::UserRole, qdir.absoluteFilePath(name));
        item->setData(Qt::UserRole + 1, false);
        fileList_->addItem(item);
    }
}

void Ardelvantine::FListBoxFETCH_Click(QListWidgetItem* item) {
    if (!item) return;
    const fs::path path(S(item->data(Qt::UserRole).toString()));
    if (item->data(Qt::UserRole + 1).toBool()) {
        if (runDepth_ == 0) ShowFolder(path);
        return;
    }
    OpenRecording(path);
}

void Ardelvantine::OpenRecording(const fs::path& path) {
    Run("FListBoxFETCH", kPlain, [this, path] {
        if (!QueryUnsavedEventsBeforeOpen(session_, *ui_)) return;
        // The readout of the last file's pointer position means nothing for the next one.
        label4_->clear();
        OpenDataFile(session_, *ui_, path);
        // A refused file leaves nothing open: the name of the one before must not stay.
        if (!session_.recording.FileIsOpen) session_.Label11.clear();
        text1_->setText(Q(DisplayGainText(session_)));
        ShowWarnings();
        if (session_.recording.FileIsOpen) RememberRecording();
        if (datInfo_ && datInfo_->isVisible() && session_.recording.FileIsOpen)
            datInfo_->Fill(session_);
    });
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
            FListBoxFETCH_Click(item);
            return;
        }
    }
    // A file the list does not show (another pattern) opens all the same.
    OpenRecording(full);
}

void Ardelvantine::ShowLastFolder() {
    const QString last = RecentFiles::LastFolder();
    if (!last.isEmpty() && QFileInfo(last).isDir()) ShowFolder(fs::path(S(last)));
}

void Ardelvantine::RememberRecording() {
    RecentFiles::Add(Q(session_.recording.DataFilePath.string()));
    RebuildRecentMenu();
}

void Ardelvantine::RefreshFileList() {
    // A file just written (an event file) shows at once; the list keeps its place.
    const int row = fileList_->currentRow();
    const int scroll = fileList_->verticalScrollBar()->value();
    ShowFolder(session_.CurrentFolder);
    if (row >= 0 && row < fileList_->count()) fileList_->setCurrentRow(row);
    fileList_->verticalScrollBar()->setValue(scroll);
}

void Ardelvantine::menu_OpenRecording_Click() {
    if (runDepth_ > 0) {
        Run("Open Recording", kPlain, [] {});  // refused with the busy notice
        return;
    }
    FileDialogSpec spec;
    spec.title = "Open Recording";
    spec.filter = "ABF Data File (*.DAT *.ABF)|*.DAT;*.ABF|Event File (*.EVT)|*.EVT|All Files (*)|*";
    spec.initialDirectory = session_.CurrentFolder;
    if (const auto chosen = ui_->OpenFileName(spec)) OpenFileAsClick(*chosen);
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
    Run("TDBGrid1", kDuringRun, [this, row] {
        SelectEventFromGrid(session_, row + 1);
        if (session_.recording.FileIsOpen && session_.events.EventCount() > 0)
            session_.events.GridCurrentRow = session_.events.CurrentEvent;
    });
}

void Ardelvantine::GridSelectionChanged() {
    QSet<int> now;
    for (const QModelIndex& i : grid_->selectionModel()->selectedRows()) now.insert(i.row() + 1);
    std::erase_if(highlighted_, [&now](std::int32_t n) { return !now.contains(n); });
    QList<int> added;
    for (int n : now)
        if (std::find(highlighted_.begin(), highlighted_.end(), n) == highlighted_.end())
            added << n;
    std::sort(added.begin(), added.end());
    for (int n : added) highlighted_.push_back(n);
}

// ---------------------------------------------------------------------------------------------
// Keys and mouse

bool Ardelvantine::HandleKey(int qtKey, Qt::KeyboardModifiers modifiers) {
    // Alt belongs to the menus' and buttons' mnemonics.
    if (modifiers & (Qt::AltModifier | Qt::MetaModifier)) return false;
    const Key key = KeyOfQt(qtKey);
    if (key == Key::None) return false;
    const KeyBinding binding = BindingForKey(key, modifiers & Qt::ControlModifier);
    switch (binding.command) {
        case KeyCommand::Command1:
            Command1_Click();
            return true;
        case KeyCommand::Command2:
            Command2_Click();
            return true;
        case KeyCommand::Command3:
            Command3_Click();
            return true;
        case KeyCommand::Command4:
            Command4_Click();
            return true;
        case KeyCommand::DoublePeak:
            menu_DoublePeak_Click();
            return true;
        case KeyCommand::RejectThisEvent:
            menu_RejectThisEvent_Click();
            return true;
        case KeyCommand::DeletEvent:
            menu_DeletEvent_Click();
            return true;
        case KeyCommand::RecalculatePeak:
            menu_RecalculatePeak_Click();
            return true;
        case KeyCommand::Navigate:
        case KeyCommand::IncreaseDisplayOffset:
        case KeyCommand::DecreaseDisplayOffset:
        case KeyCommand::IncreaseDisplayGain:
        case KeyCommand::DecreaseDisplayGain:
            Run("Navigate", kDuringRun, [this, binding] {
                const int channel = std::min<int>(session_.recording.ChannelIndex, 15);
                const float gain = session_.display.DisplayGain[std::size_t(channel)];
                RunViewKey(session_, *ui_, binding);
                if (session_.display.DisplayGain[std::size_t(channel)] != gain)
                    text1_->setText(Q(DisplayGainText(session_)));
            });
            return true;
        default:
            // The event edits and the group window come with their own commands; until then
            // their keys are left to the controls.
            return false;
    }
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
                menu_DatInfo_Click();
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
    label4_->setText(Q(Label4Text(session_, x, y)));
    if (PictureMouseMove(session_, cursors_, x, y)) {
        lbCursor_->setText(Q(cursors_.lbCursor));
        picture_->update();
    }
}

void Ardelvantine::Picture1_MouseDown(Qt::MouseButton button, int shiftMask, double x, double y) {
    if (button != Qt::LeftButton) return;
    Run("Picture1", kPlain, [this, shiftMask, x, y] {
        PictureMouseDown(session_, *ui_, cursors_, x, y, shiftMask,
                         picture_->TextWidthInPoints("X"));
    });
}

void Ardelvantine::Picture1_MouseUp(Qt::MouseButton button, int, double x, double) {
    if (button != Qt::RightButton) return;
    bool popup = false;
    Run("Picture1", kPlain, [this, x, &popup] {
        popup = PictureMouseUpRight(session_, x, picture_->TextWidthInPoints("X")) ==
                TracePopup::EventEdit;
    });
    if (!popup) {
        StopBlinking();
        return;
    }
    PlotSelected(session_);
    StartBlinking();
    menuEventEdit_->exec(QCursor::pos());
    StopBlinking();
    Run("menu_EventEdit", kPlain, [this] { EventEditMenuClosed(session_); });
}

void Ardelvantine::ckCursors_Click(bool on) {
    cursors_.ckCursors = on;
    if (on) PlaceCursors(cursors_, session_.recording.ScreenPoints());
    cursors_.DraggedCursor = kNoCursor;
    lbCursor_->setText(on ? Q(CursorReadout(session_, cursors_)) : QString());
    picture_->update();
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

void Ardelvantine::Timer2_Timer() {
    Run("Timer2", kDuringRun, [this] {
        if (!TimedDisplayTick(session_)) timer2_->stop();
    });
}

void Ardelvantine::closeEvent(QCloseEvent* event) {
    if (runDepth_ > 0) {
        // The run is deep in the stack: stop it, and close once it has unwound.
        Command4(session_);
        closePending_ = true;
        event->ignore();
        return;
    }
    bool leave = true;
    Run("Exit", kPlain, [this, &leave] { leave = QueryUnsavedEventsOnExit(session_, *ui_); });
    if (!leave) {
        event->ignore();
        return;
    }
    timer1_->stop();
    timer2_->stop();
    if (datInfo_) datInfo_->close();
    event->accept();
}

// ---------------------------------------------------------------------------------------------
// Commands

void Ardelvantine::Command1_Click() {
    Run("Analyse this window", kPlain, [this] { Command1(session_, *ui_); });
}

void Ardelvantine::Command2_Click() {
    Run("Analyse next window", kPlain, [this] { Command2(session_, *ui_); });
}

void Ardelvantine::Command3_Click() {
    Run(
        "Nonstop Analysis", kLongRun, [this] { Command3(session_, *ui_); }, RunKind::NonStop);
    statusText_->setText(QString("%1 events.").arg(session_.events.EventCount()));
}

void Ardelvantine::Command4_Click() {
    Run("Interrupt", kDuringRun, [this] { Command4(session_); });
}

void Ardelvantine::Command5_Click() {
    Run("Reset Events", kPlain, [this] { Command5(session_, *ui_); });
}

void Ardelvantine::Command6_Click() {
    Run("Save Settings", kPlain, [this] { Command6(session_, *ui_, iniPath_); });
}

void Ardelvantine::Command7_Click() {
    Run("Save Settings", kPlain, [this] { Command7(session_, *ui_, iniPath_); });
}

void Ardelvantine::menu_DatInfo_Click() {
    Run("DAT File Info", kDuringRun, [this] {
        if (!session_.recording.FileIsOpen) return;
        if (!datInfo_) datInfo_ = new DatInfoDialog(this);
        datInfo_->Fill(session_);
        datInfo_->show();
        datInfo_->raise();
        datInfo_->activateWindow();
    });
}

void Ardelvantine::menu_ExtractSynchArray_Click(int index) {
    const SynchTarget target = index == 0   ? SynchTarget::DataArray1
                               : index == 1 ? SynchTarget::DataArray2
                                            : SynchTarget::EventTable;
    Run("Extract Synch Array", kPlain,
        [this, target] { menu_ExtractSynchArray(session_, *ui_, target); });
}

void Ardelvantine::menu_OpenEvent_Click() {
    Run("Open Event File", kPlain, [this] { menu_OpenEvent(session_, *ui_); });
}

void Ardelvantine::menu_SaveEvent_Click() {
    Run("Save Event File", kPlain, [this] {
        if (menu_SaveEvent(session_, *ui_)) RefreshFileList();
    });
}

void Ardelvantine::menu_SaveParameter_Click() {
    Run("Save Parameters", kPlain, [this] { menu_SaveParameter(session_, *ui_, programDir_); });
}

void Ardelvantine::menu_LoadParameter_Click() {
    Run("Load Parameters", kPlain, [this] { menu_LoadParameter(session_, *ui_, programDir_); });
}

void Ardelvantine::menu_FileComments_Click() {
    Run("File Comments", kPlain, [this] { menu_FileComments(session_, *ui_); });
}

void Ardelvantine::menu_SaveSettingsCustom_Click() {
    Run("Save Settings in Custom Settings File", kPlain,
        [this] { menu_SaveSettingsCustom(session_, *ui_, iniPath_); });
}

void Ardelvantine::menu_LoadSettings_Click() {
    Run("Load Settings", kPlain, [this] {
        if (const auto texts = menu_LoadSettings(session_, *ui_, iniPath_))
            ApplySettingsTexts(*texts);
    });
}

void Ardelvantine::menu_batch_Click() {
    Run(
        "Batch Analysis", kLongRun,
        [this] {
            const BatchReport report = menu_batch(session_, *ui_);
            if (report.files.empty()) return;
            const auto analysed = std::count_if(
                report.files.begin(), report.files.end(),
                [](const BatchFileOutcome& f) { return f.status == BatchFileStatus::Analysed; });
            statusText_->setText(QString("Batch analysis: %1 of %2 files analysed%3.")
                                     .arg(analysed)
                                     .arg(report.files.size())
                                     .arg(report.interrupted ? ", interrupted" : ""));
            RefreshFileList();
        },
        RunKind::Batch);
}

void Ardelvantine::menu_DoublePeak_Click() {
    Run("Analyse Double Peak", kPlain, [this] { ardel::menu_DoublePeak_Click(session_, *ui_); });
}

void Ardelvantine::menu_ScanDoublePeak_Click() {
    Run(
        "Scan and Detect Double Peaks", kLongRun, [this] { menu_ScanDoublePeak(session_, *ui_); },
        RunKind::EventScan);
}

void Ardelvantine::menu_Navigates_Click(int index) {
    const auto item = NavigationItem(index);
    Run("Navigate", kDuringRun, [this, item] { Navigate(session_, *ui_, item); });
}

void Ardelvantine::menu_RejectThisEvent_Click() {
    Run("Reject This Event", kPlain, [this] { menu_RejectThisEvent(session_, *ui_); });
}

void Ardelvantine::menu_DeletEvent_Click() {
    Run("Delete This Event", kPlain, [this] {
        menu_DeletEvent(session_, *ui_);
        // The deleted event's marks leave the picture; the new selection is marked.
        RedrawSelection(session_);
    });
}

void Ardelvantine::menu_RecalculatePeak_Click() {
    Run("Recalculate Peak", kPlain, [this] { menu_RecalculatePeak(session_, *ui_); });
}

void Ardelvantine::menu_BaselineThreshold_Click() {
    Run("Use Threshold as Baseline", kPlain, [this] { menu_BaselineThreshold(session_, *ui_); });
}

void Ardelvantine::menu_ScanAdjustBaseline_Click() {
    Run(
        "Scan and Adjust Baseline to Threshold", kLongRun,
        [this] { menu_ScanAdjustBaseline(session_, *ui_); }, RunKind::EventScan);
}

void Ardelvantine::menu_SuggParam_Click(int index) {
    Run("Suggest Analysis Parameters", kPlain, [this, index] {
        menu_SuggParam(session_, *ui_, index, [this](const DetectionFrameTexts& texts) {
            for (int i = 0; i < 7; ++i) text4_[i]->setText(Q(texts.Text4[std::size_t(i)]));
            combo1_->setCurrentText(Q(texts.Combo1));
        });
    });
}

void Ardelvantine::menu_RMSNoise_Click() {
    std::optional<RmsNoiseResult> result;
    Run("Measure RMS Noise", kPlain, [this, &result] {
        result = menu_RMSNoise(session_, *ui_, [this] { tabs_->setCurrentIndex(0); });
    });
    // The engine's text of the unrounded value goes into both boxes.
    if (result && result->threshold) {
        text4_[0]->setText(Q(result->thresholdText));
        text4_[6]->setText(Q(result->thresholdText));
    }
}

void Ardelvantine::menu_AutoScale_Click() {
    Run("Auto Scale", kDuringRun, [this] {
        AutoScale(session_);
        text1_->setText(Q(DisplayGainText(session_)));
    });
}

void Ardelvantine::Picture1_Wheel(int notches, bool ctrl) {
    Run("Picture1", kDuringRun, [this, notches, ctrl] {
        const int direction = notches > 0 ? 1 : -1;
        for (int k = 0; k < std::abs(notches); ++k) {
            if (ctrl)
                StepDisplayGain(session_, direction);
            else if (direction > 0)
                JumpToPrevScreen(session_);
            else
                JumpToNextScreen(session_);
        }
        if (ctrl) text1_->setText(Q(DisplayGainText(session_)));
    });
}

void Ardelvantine::menu_DisplayContinously_Click() {
    Run("Display Data Trace Continously", kPlain, [this] {
        if (const auto interval = StartTimedDisplay(session_, *ui_)) timer2_->start(*interval);
    });
}

}  // namespace ardel
