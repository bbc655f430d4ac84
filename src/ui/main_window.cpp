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
#include <QMouseEvent>
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

namespace ardel {

namespace fs = std::filesystem;

namespace {

// The file list shows data files, event files and ABF files.
const QStringList kFilePatterns = {"*.da?", "*.EVT", "*.abf"};

// The detection keys behind Text4(0) .. Text4(6), in the frame's order.
constexpr const char* kText4Keys[7] = {
    "ThresholdAmplitude!", "PeriodToSearchMax&",     "PeriodStartBaseline&", "PeriodFindDecayTime&",
    "DecayPercent!",       "PeriodBaselineAverage&", "AreaThreshold!",
};
constexpr const char* kText4Labels[7] = {
    "Threshold :",
    "Period to search a local maximum (us)",
    "Time before a peak for baseline (us)",
    "Period to search a decay time (us)",
    "Fraction of peak to find a decay time",
    "Period to average a baseline (us)",
    "Area Threshold:",
};

// While a long run goes on, the picture and the grid follow at most this often.
constexpr int kRunRepaintMs = 40;
// The selected event blinks at this pace.
constexpr int kBlinkMs = 300;
// Slider1's travel: two picture heights each way, which covers every offset a lock of the
// baseline gives at the usual gains.
constexpr int kOffsetRange = 2 * 65536;

QString Q(const std::string& s) {
    return QString::fromStdString(s);
}

std::string S(const QString& s) {
    return s.toStdString();
}

// Menu captions show "&" as a mnemonic; a literal one is doubled.
QString MenuText(std::string_view s) {
    return QString::fromUtf8(s.data(), qsizetype(s.size())).replace("&", "&&");
}

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

QComboBox* EditableCombo(const char* name, const QStringList& items) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->setEditable(true);
    c->addItems(items);
    c->setInsertPolicy(QComboBox::NoInsert);
    return c;
}

QCheckBox* CheckBox(const char* name, const QString& caption) {
    auto* c = new QCheckBox(caption);
    c->setObjectName(name);
    return c;
}

void SetComboText(QComboBox* c, const std::string& text) {
    c->setCurrentText(Q(text));
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
    // Display filters the freshly loaded screens whenever the filter box is checked.
    InstallDigitalFilter(session_, *ui_);
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

QAction* Ardelvantine::AddAction(QMenu* menu, const char* name, const QString& caption,
                                 const std::function<void()>& handler) {
    auto* a = new QAction(caption, this);
    a->setObjectName(name);
    connect(a, &QAction::triggered, this, [handler] { handler(); });
    menu->addAction(a);
    return a;
}

void Ardelvantine::BuildUi() {
    auto* left = new QWidget;
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(4, 4, 4, 4);
    leftLayout->addWidget(BuildFilePanel(), 1);

    tabs_ = new QTabWidget;
    tabs_->setObjectName("SSTab1");
    tabs_->addTab(BuildAnalysisPanel(), "Analysis");
    tabs_->addTab(BuildOptionsPanel(), "Options");
    leftLayout->addWidget(tabs_);

    gridModel_ = new EventGridModel(session_, this);
    grid_ = new QTableView;
    grid_->setObjectName("TDBGrid1");
    grid_->setModel(gridModel_);
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->verticalHeader()->setVisible(false);
    grid_->verticalHeader()->setDefaultSectionSize(grid_->fontMetrics().height() + 4);
    // Wide enough for a seven-digit value such as -0.9765625 without eliding it.
    grid_->horizontalHeader()->setDefaultSectionSize(
        grid_->fontMetrics().horizontalAdvance("-0.00000000") + 14);
    grid_->setContextMenuPolicy(Qt::CustomContextMenu);
    menuEvents_ = new QMenu(this);
    menuEvents_->setObjectName("menu_events");
    connect(grid_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& pos) { menuEvents_->popup(grid_->viewport()->mapToGlobal(pos)); });
    connect(grid_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current, const QModelIndex&) {
                // Mouse clicks are taken on release, so that a click on the current row acts
                // too; here only the keyboard's moves.
                if (syncingGrid_ || gridPressing_ || !current.isValid()) return;
                GridRowChosen(current.row());
            });
    connect(grid_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { GridSelectionChanged(); });

    auto* right = new QSplitter(Qt::Vertical);
    right->addWidget(BuildTracePanel());
    right->addWidget(grid_);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 1);

    auto* split = new QSplitter(Qt::Horizontal);
    split->addWidget(left);
    split->addWidget(right);
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    setCentralWidget(split);

    statusText_ = new QLabel;
    statusText_->setObjectName("StatusText");
    progress_ = new QProgressBar;
    progress_->setObjectName("ProgressBar");
    progress_->setRange(0, 100);
    progress_->setMaximumWidth(200);
    progress_->hide();
    statusBar()->addWidget(statusText_, 1);
    statusBar()->addPermanentWidget(progress_);

    timer1_ = new QTimer(this);
    timer1_->setObjectName("Timer1");
    timer1_->setInterval(kBlinkMs);
    connect(timer1_, &QTimer::timeout, this, [this] { Timer1_Timer(); });
    timer2_ = new QTimer(this);
    timer2_->setObjectName("Timer2");
    connect(timer2_, &QTimer::timeout, this, [this] { Timer2_Timer(); });
    refreshTimer_ = new QTimer(this);
    refreshTimer_->setSingleShot(true);
    connect(refreshTimer_, &QTimer::timeout, this, [this] {
        lastRepaint_.restart();
        RefreshDisplayControls();
        RefreshProgress();
        SyncGrid();
        picture_->update();
    });

    // The usual size, but never more than a small or strongly scaled screen has room for.
    QSize size(1280, 820);
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QSize room = screen->availableGeometry().size();
        size = size.boundedTo(QSize(room.width() * 95 / 100, room.height() * 90 / 100));
    }
    resize(size);
}

QWidget* Ardelvantine::BuildFilePanel() {
    auto* w = new QWidget;
    auto* layout = new QVBoxLayout(w);
    layout->setContentsMargins(0, 0, 0, 0);

    // The folder box and the folders in the list stand in for the drive and folder lists.
    folderBox_ = new QLineEdit;
    folderBox_->setObjectName("DirListBoxFETCH");
    folderBox_->setToolTip("Folder shown in the file list; type a folder and press Enter");
    connect(folderBox_, &QLineEdit::returnPressed, this,
            [this] { ShowFolder(fs::path(S(folderBox_->text()))); });
    layout->addWidget(folderBox_);

    fileList_ = new QListWidget;
    fileList_->setObjectName("FListBoxFETCH");
    fileList_->setToolTip("Click a data file to open it; click a folder to enter it");
    connect(fileList_, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { FListBoxFETCH_Click(item); });
    connect(fileList_, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { FListBoxFETCH_Click(item); });
    layout->addWidget(fileList_, 1);

    label11_ = new QLabel;
    label11_->setObjectName("Label11");
    label11_->setFrameShape(QFrame::Panel);
    label11_->setFrameShadow(QFrame::Sunken);
    label11_->setToolTip("Open file; click for the file header");
    label11_->setCursor(Qt::PointingHandCursor);
    layout->addWidget(label11_);
    return w;
}

QWidget* Ardelvantine::BuildTracePanel() {
    auto* w = new QWidget;
    auto* grid = new QGridLayout(w);
    grid->setContentsMargins(2, 2, 2, 2);
    grid->setSpacing(2);

    picture_ = new TraceView(session_);
    picture_->setObjectName("Picture1");
    connect(picture_, &TraceView::MouseMoved, this,
            [this](double x, double y, Qt::MouseButtons, int) { Picture1_MouseMove(x, y); });
    connect(
        picture_, &TraceView::MousePressed, this,
        [this](Qt::MouseButton b, int m, double x, double y) { Picture1_MouseDown(b, m, x, y); });
    connect(picture_, &TraceView::MouseReleased, this,
            [this](Qt::MouseButton b, int m, double x, double y) { Picture1_MouseUp(b, m, x, y); });

    slider1_ = new QSlider(Qt::Vertical);
    slider1_->setObjectName("Slider1");
    slider1_->setRange(-kOffsetRange, kOffsetRange);
    slider1_->setSingleStep(256);
    slider1_->setPageStep(kDisplayOffsetStep);
    slider1_->setToolTip("Display offset of the active channel");
    connect(slider1_, &QSlider::valueChanged, this, [this](int v) {
        Run("Slider1", kDuringRun, [this, v] { SetDisplayOffset(session_, v); });
    });

    slider2_ = new QSlider(Qt::Horizontal);
    slider2_->setObjectName("Slider2");
    slider2_->setRange(0, 1);
    slider2_->setToolTip("Position of the screen in the recording");
    connect(slider2_, &QSlider::valueChanged, this, [this](int v) {
        Run("Slider2", kDuringRun, [this, v] { SetScreenFromSlider(session_, v); });
    });

    grid->addWidget(slider1_, 0, 0);
    grid->addWidget(picture_, 0, 1);
    grid->addWidget(slider2_, 1, 1);
    grid->setRowStretch(0, 1);
    grid->setColumnStretch(1, 1);

    auto* row = new QHBoxLayout;
    auto* readouts = new QHBoxLayout;
    label4_ = new QLabel;
    label4_->setObjectName("Label4");
    label4_->setMinimumWidth(220);
    readouts->addWidget(label4_);
    ckCursors_ = CheckBox("ckCursors", "Cursors");
    connect(ckCursors_, &QCheckBox::clicked, this, [this](bool on) { ckCursors_Click(on); });
    readouts->addWidget(ckCursors_);
    lbCursor_ = new QLabel;
    lbCursor_->setObjectName("lbCursor");
    readouts->addWidget(lbCursor_, 1);
    row->addLayout(readouts, 1);

    // A box with an up/down pair beside it, as the old spin buttons were.
    auto boxWithSpin = [&](const char* boxName, const char* spinName, const QString& caption,
                           QLineEdit*& box, const std::function<void(int)>& step) {
        row->addWidget(new QLabel(caption));
        box = new QLineEdit;
        box->setObjectName(boxName);
        box->setMaximumWidth(70);
        row->addWidget(box);
        auto* spin = new QWidget;
        spin->setObjectName(spinName);
        auto* v = new QVBoxLayout(spin);
        v->setContentsMargins(0, 0, 0, 0);
        v->setSpacing(0);
        for (int dir : {+1, -1}) {
            auto* b = new QToolButton;
            b->setObjectName(QString(spinName) + (dir > 0 ? "Up" : "Down"));
            b->setArrowType(dir > 0 ? Qt::UpArrow : Qt::DownArrow);
            b->setFixedSize(18, 11);
            b->setAutoRepeat(true);
            connect(b, &QToolButton::clicked, this, [step, dir] { step(dir); });
            v->addWidget(b);
        }
        row->addWidget(spin);
    };
    boxWithSpin("Text1", "Spin1", "Gain", text1_, [this](int dir) {
        Run("Spin1", kDuringRun, [this, dir] {
            StepDisplayGain(session_, dir);
            text1_->setText(Q(DisplayGainText(session_)));
        });
    });
    boxWithSpin("Text3", "Spin3", "Blocks/Screen", text3_, [this](int dir) {
        Run("Spin3", kPlain, [this, dir] {
            StepBlocksPerScreen(session_, dir);
            text3_->setText(Q(BlocksPerScreenText(session_)));
        });
    });
    text1_->setToolTip("Display gain of the active channel (0.001 to 1000)");
    text3_->setToolTip("Blocks of 256 points per screen (1 to 32767)");
    connect(text1_, &QLineEdit::editingFinished, this, [this] {
        if (!text1_->isModified()) return;
        text1_->setModified(false);
        Run("Text1", kDuringRun,
            [this] { text1_->setText(Q(SetDisplayGainText(session_, S(text1_->text())))); });
    });
    connect(text3_, &QLineEdit::editingFinished, this, [this] {
        if (!text3_->isModified()) return;
        text3_->setModified(false);
        Run("Text3", kPlain,
            [this] { text3_->setText(Q(SetBlocksPerScreenText(session_, S(text3_->text())))); });
    });

    row->addWidget(new QLabel("Channel"));
    combo3_ = new QComboBox;
    combo3_->setObjectName("Combo3");
    combo3_->setToolTip("Active channel");
    connect(combo3_, &QComboBox::activated, this, [this](int index) {
        Run("Combo3", kPlain, [this, index] {
            SelectChannel(session_, index);
            text1_->setText(Q(DisplayGainText(session_)));
        });
    });
    row->addWidget(combo3_);
    grid->addLayout(row, 2, 0, 1, 2);
    return w;
}

QWidget* Ardelvantine::BuildAnalysisPanel() {
    auto* w = new QWidget;
    auto* layout = new QVBoxLayout(w);
    layout->setContentsMargins(4, 4, 4, 4);

    auto* frame = new QGroupBox("Detection Parameters");
    frame->setObjectName("Frame1");
    auto* form = new QFormLayout(frame);
    form->setLabelAlignment(Qt::AlignLeft);
    for (int i = 0; i < 7; ++i) {
        text4_[i] = new QLineEdit;
        text4_[i]->setObjectName(QString("Text4(%1)").arg(i));
        text4_[i]->setMaximumWidth(90);
        form->addRow(kText4Labels[i], text4_[i]);
    }
    combo1_ = new QComboBox;
    combo1_->setObjectName("Combo1");
    combo1_->addItem("Negative", -1);
    combo1_->addItem("Positive", 1);
    form->addRow("Direction of Peak", combo1_);
    combo2_ = EditableCombo("Combo2", {"1", "3", "5", "7", "9", "11"});
    combo2_->setMaximumWidth(90);
    form->addRow("Number of points to average for peak", combo2_);
    ckComplexPeak_ = CheckBox("ckComplexPeak", "Detect complex peak");
    form->addRow(ckComplexPeak_);
    layout->addWidget(frame);

    auto button = [&](int n, const QString& caption, const std::function<void()>& handler) {
        auto* b = new QPushButton(caption);
        b->setObjectName(QString("Command%1").arg(n));
        b->setFocusPolicy(Qt::TabFocus);
        connect(b, &QPushButton::clicked, this, [handler] { handler(); });
        command_[n] = b;
        return b;
    };
    auto* buttons = new QGridLayout;
    buttons->addWidget(button(1, "&Analyse this window (F9)", [this] { Command1_Click(); }), 0, 0);
    buttons->addWidget(button(2, "Analyse &next window (F10)", [this] { Command2_Click(); }), 0, 1);
    buttons->addWidget(button(3, "Non&stop Analys. (F11)", [this] { Command3_Click(); }), 1, 0);
    buttons->addWidget(button(4, "&Interrupt (F12)", [this] { Command4_Click(); }), 1, 1);
    buttons->addWidget(button(5, "Reset Events", [this] { Command5_Click(); }), 2, 0);
    buttons->addWidget(button(6, "&Save Settings", [this] { Command6_Click(); }), 2, 1);
    command_[3]->setToolTip("Continuous analysis starting from next window");
    command_[6]->setToolTip("Save settings in Ardelvan.ini");
    layout->addLayout(buttons);
    layout->addStretch(1);
    return w;
}

QWidget* Ardelvantine::BuildOptionsPanel() {
    auto* w = new QWidget;
    auto* layout = new QVBoxLayout(w);
    layout->setContentsMargins(4, 4, 4, 4);

    auto* frame = new QGroupBox("Options");
    frame->setObjectName("Frame3");
    auto* form = new QFormLayout(frame);
    ckSoundOn_ = CheckBox("ckSoundOn", "Sound On");
    ckTooltips_ = CheckBox("ckTooltips", "Display tool-tips");
    ckLockBase_ = CheckBox("ckLockBase", "Lock baseline");
    ckDisplayTrace_ = CheckBox("ckDisplayTrace", "Display trace during non-stop");
    cbFraction_ = EditableCombo("cbFraction", {"0.1", "0.25", "0.5", "0.75", "0.9"});
    cbGpNav_ = EditableCombo("cbGpNav", {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"});
    cbInterval_ = EditableCombo("cbInterval", {"100", "500", "1000", "5000", "10000", "60000"});
    form->addRow(ckSoundOn_);
    form->addRow(ckTooltips_);
    form->addRow(ckLockBase_);
    form->addRow("Fraction to lock", cbFraction_);
    form->addRow(ckDisplayTrace_);
    form->addRow("Group # for \"1234\" navigate keys", cbGpNav_);
    form->addRow("Time interval (ms) for CTL-T navigate key", cbInterval_);
    layout->addWidget(frame);
    connect(ckTooltips_, &QCheckBox::clicked, this, [this](bool on) { ParkToolTips(!on); });

    auto* filter = new QGroupBox("Digital Filter Settings");
    filter->setObjectName("Frame4");
    auto* filterForm = new QFormLayout(filter);
    check1_ = CheckBox("Check1", "Filter");
    combo4_ = new QComboBox;
    combo4_->setObjectName("Combo4");
    for (const char* t : kFilterTypeCaptions) combo4_->addItem(t);
    combo5_ = EditableCombo("Combo5", {"100", "200", "500", "1000", "2000", "5000"});
    filterForm->addRow(check1_);
    filterForm->addRow("Type:", combo4_);
    filterForm->addRow("Cut-off Freq (Hz)", combo5_);
    layout->addWidget(filter);
    // The filter works on every redraw, so a change shows at once.
    auto redraw = [this] { Run("Check1", kDuringRun, [this] { Display(session_); }); };
    connect(check1_, &QCheckBox::clicked, this, redraw);
    connect(combo4_, &QComboBox::activated, this, redraw);
    connect(combo5_, &QComboBox::activated, this, redraw);

    auto* save = new QPushButton("Save Settings");
    save->setObjectName("Command7");
    save->setFocusPolicy(Qt::TabFocus);
    connect(save, &QPushButton::clicked, this, [this] { Command7_Click(); });
    command_[7] = save;
    layout->addWidget(save);
    layout->addStretch(1);
    return w;
}

void Ardelvantine::BuildMenus() {
    QMenu* file = menuBar()->addMenu("&File");
    file->setObjectName("menu_File");
    AddAction(file, "menu_OpenEvent", "&Open Event File", [this] { menu_OpenEvent_Click(); });
    AddAction(file, "menu_SaveEvent", "&Save Event File", [this] { menu_SaveEvent_Click(); });
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
    AddAction(file, "menu_Exit", "E&xit", [this] { close(); });

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
        AddAction(nav, name.constData(), MenuText(NavigationCaption(item)),
                  [this, i] { menu_Navigates_Click(i); });
    }

    QMenu* display = menuBar()->addMenu("&Display");
    display->setObjectName("menu_Display");
    AddAction(display, "menu_DisplayContinously", MenuText(kTimedDisplayCaption),
              [this] { menu_DisplayContinously_Click(); });

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
    const std::int32_t row = session_.events.GridCurrentRow;
    if (row >= 1 && row <= count && grid_->currentIndex().row() != row - 1) {
        // The current row follows the command; the highlighted rows stay as they were.
        const QModelIndex index = gridModel_->index(row - 1, 0);
        grid_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
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
    Run("FListBoxFETCH", kPlain, [this, path] {
        // The readout of the last file's pointer position means nothing for the next one.
        label4_->clear();
        OpenDataFile(session_, *ui_, path);
        text1_->setText(Q(DisplayGainText(session_)));
        ShowWarnings();
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
    Run("FListBoxFETCH", kPlain, [this, full] {
        OpenDataFile(session_, *ui_, full);
        text1_->setText(Q(DisplayGainText(session_)));
        ShowWarnings();
    });
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
    Run("Save Event File", kPlain, [this] { menu_SaveEvent(session_, *ui_); });
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
    Run("Delete This Event", kPlain, [this] { menu_DeletEvent(session_, *ui_); });
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

void Ardelvantine::menu_DisplayContinously_Click() {
    Run("Display Data Trace Continously", kPlain, [this] {
        if (const auto interval = StartTimedDisplay(session_, *ui_)) timer2_->start(*interval);
    });
}

}  // namespace ardel
