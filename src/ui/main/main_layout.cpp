// The main window's widgets: file panel, trace panel, analysis and options tabs, grid.
#include "ui/main_window.h"

#include <QAction>
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

#include "core/open_file.h"
#include "detect/digital_filter.h"
#include "ui/event_grid_model.h"
#include "ui/main/window_helpers.h"
#include "ui/trace_view.h"
#include "view/trace_scene.h"

namespace ardel {

namespace fs = std::filesystem;
using namespace mainwindow;

QAction* Ardelvantine::AddAction(QMenu* menu, const std::string& handler, const QString& caption) {
    auto* a = new QAction(caption, this);
    a->setObjectName(Q(handler));
    connect(a, &QAction::triggered, this, [this, handler] { RunHandler(handler); });
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
    connect(timer2_, &QTimer::timeout, this, [this] {
        RunEntry({"Timer2", kDuringRun, [this](CommandContext& c) {
                      if (!TimedDisplayTick(c.session)) timer2_->stop();
                  }});
    });
    refreshTimer_ = new QTimer(this);
    refreshTimer_->setSingleShot(true);
    connect(refreshTimer_, &QTimer::timeout, this, [this] {
        lastRepaint_.restart();
        ShowDisplayWidgets();
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
    connect(slider1_, &QSlider::valueChanged, this, [this] { RunHandler("Slider1"); });

    slider2_ = new QSlider(Qt::Horizontal);
    slider2_->setObjectName("Slider2");
    slider2_->setRange(0, 1);
    slider2_->setToolTip("Position of the screen in the recording");
    connect(slider2_, &QSlider::valueChanged, this, [this] { RunHandler("Slider2"); });

    connect(picture_, &TraceView::Wheel, this, [this](int notches, Qt::KeyboardModifiers m) {
        Picture1_Wheel(notches, m & Qt::ControlModifier);
    });
    connect(picture_, &TraceView::ScaleTextDoubleClicked, this, [this] { RunHandler("menu_AutoScale"); });
    auto* timeAxis = new TraceAxisView(session_, *picture_, TraceAxisView::Kind::Time);
    auto* amplitudeAxis = new TraceAxisView(session_, *picture_, TraceAxisView::Kind::Amplitude);
    connect(picture_, &TraceView::Repainted, timeAxis, qOverload<>(&QWidget::update));
    connect(picture_, &TraceView::Repainted, amplitudeAxis, qOverload<>(&QWidget::update));

    grid->addWidget(slider1_, 0, 0);
    // The amplitude axis reaches down beside the time axis, where its unit is written.
    grid->addWidget(amplitudeAxis, 0, 1, 2, 1);
    grid->addWidget(picture_, 0, 2);
    grid->addWidget(timeAxis, 1, 2);
    grid->addWidget(slider2_, 2, 2);
    grid->setRowStretch(0, 1);
    grid->setColumnStretch(2, 1);

    auto* row = new QHBoxLayout;
    auto* readouts = new QHBoxLayout;
    label4_ = new QLabel;
    label4_->setObjectName("Label4");
    label4_->setMinimumWidth(220);
    readouts->addWidget(label4_);
    ckCursors_ = CheckBox("ckCursors", "Cursors");
    connect(ckCursors_, &QCheckBox::clicked, this, [this] { RunHandler("ckCursors"); });
    readouts->addWidget(ckCursors_);
    lbCursor_ = new QLabel;
    lbCursor_->setObjectName("lbCursor");
    readouts->addWidget(lbCursor_, 1);
    row->addLayout(readouts, 1);

    // A box with an up/down pair beside it, as the old spin buttons were.
    auto boxWithSpin = [&](const char* boxName, const char* spinName, const QString& caption,
                           QLineEdit*& box) {
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
            const std::string handler = std::string(spinName) + (dir > 0 ? "Up" : "Down");
            connect(b, &QToolButton::clicked, this, [this, handler] { RunHandler(handler); });
            v->addWidget(b);
        }
        row->addWidget(spin);
    };
    boxWithSpin("Text1", "Spin1", "Gain", text1_);
    boxWithSpin("Text3", "Spin3", "Blocks/Screen", text3_);
    text1_->setToolTip("Display gain of the active channel (0.001 to 1000)");
    text3_->setToolTip("Blocks of 256 points per screen (1 to 32767)");
    // A box's change handler runs when its edit is finished, not on every key.
    for (QLineEdit* box : {text1_, text3_}) {
        connect(box, &QLineEdit::editingFinished, this, [this, box] {
            if (!box->isModified()) return;
            box->setModified(false);
            RunHandler(S(box->objectName()));
        });
    }

    row->addWidget(new QLabel("Channel"));
    combo3_ = new QComboBox;
    combo3_->setObjectName("Combo3");
    combo3_->setToolTip("Active channel");
    connect(combo3_, &QComboBox::activated, this, [this](int index) {
        // The entry chosen is the one the handler reads, however the choice was made.
        combo3_->setCurrentIndex(index);
        RunHandler("Combo3");
    });
    row->addWidget(combo3_);
    grid->addLayout(row, 3, 0, 1, 3);
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

    auto button = [&](int n, const QString& caption) {
        auto* b = new QPushButton(caption);
        const std::string handler = "Command" + std::to_string(n);
        b->setObjectName(Q(handler));
        b->setFocusPolicy(Qt::TabFocus);
        connect(b, &QPushButton::clicked, this, [this, handler] { RunHandler(handler); });
        command_[n] = b;
        return b;
    };
    auto* buttons = new QGridLayout;
    buttons->addWidget(button(1, "&Analyse this window (F9)"), 0, 0);
    buttons->addWidget(button(2, "Analyse &next window (F10)"), 0, 1);
    buttons->addWidget(button(3, "Non&stop Analys. (F11)"), 1, 0);
    buttons->addWidget(button(4, "&Interrupt (F12)"), 1, 1);
    buttons->addWidget(button(5, "Reset Events"), 2, 0);
    buttons->addWidget(button(6, "&Save Settings"), 2, 1);
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
    connect(ckTooltips_, &QCheckBox::clicked, this, [this](bool on) {
        ParkToolTips(!on);
        tipsShown_ = on;
    });

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
    connect(check1_, &QCheckBox::clicked, this, [this] { RunHandler("Check1"); });
    connect(combo4_, &QComboBox::activated, this, [this] { RunHandler("Combo4"); });
    connect(combo5_, &QComboBox::activated, this, [this] { RunHandler("Combo5"); });

    auto* save = new QPushButton("Save Settings");
    save->setObjectName("Command7");
    save->setFocusPolicy(Qt::TabFocus);
    connect(save, &QPushButton::clicked, this, [this] { RunHandler("Command7"); });
    command_[7] = save;
    layout->addWidget(save);
    layout->addStretch(1);
    return w;
}


}  // namespace ardel
