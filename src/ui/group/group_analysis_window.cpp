#include "ui/group/group_analysis_window.h"

#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QScreen>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#ifdef ARDEL_HAVE_QTSVG
#include <QSvgGenerator>
#endif

#include "core/safe_file.h"
#include "core/session.h"
#include "group/group_display.h"
#include "group/trace_edit.h"
#include "script/command_table.h"
#include "script/forms.h"
#include "ui/group/group_picture.h"
#include "ui/main/window_helpers.h"

namespace ardel {

namespace {

using mainwindow::AddHandlerItem;
using mainwindow::CheckBox;
using mainwindow::EditableCombo;
using mainwindow::SetComboText;

QStringList Numbers(int from, int to) {
    QStringList items;
    for (int n = from; n <= to; ++n) items << QString::number(n);
    return items;
}

QStringList Items(const char* const* items, std::size_t count) {
    QStringList list;
    for (std::size_t i = 0; i < count; ++i) list << items[i];
    return list;
}

void SetCheck(QCheckBox* box, bool on) {
    if (box->isChecked() != on) box->setChecked(on);
}

constexpr const char* kTraceEntries[3] = {"Average Trace", "Individual Trace", "All Traces"};

}  // namespace

GroupAnalysisWindow::GroupAnalysisWindow(Session& session, Forms& forms,
                                         std::function<void(const std::string&)> run,
                                         QWidget* parent)
    : QMainWindow(parent), session_(session), window_(forms.grpAnal), run_(std::move(run)) {
    setObjectName("GrpAnal");
    setWindowTitle(group::kGrpAnalCaption);
    auto* splitter = new QSplitter(Qt::Vertical);
    tabs_ = new QTabWidget;
    tabs_->setObjectName("SSTab1");
    tabs_->addTab(BuildDisplayTab(), "Display");
    auto* top = new QWidget;
    auto* topLayout = new QHBoxLayout(top);
    topLayout->setContentsMargins(0, 0, 0, 0);
    topLayout->addWidget(picturePanel_);
    topLayout->addWidget(tabs_, 1);
    splitter->addWidget(top);
    connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
        if (following_ || index < 0 || std::size_t(index) >= sstabOfTab_.size()) return;
        window_.form.SSTab1 = sstabOfTab_[std::size_t(index)];
        Run("GrpAnal.SSTab1");
    });
    auto* results = new QWidget;
    resultsHolder_ = new QVBoxLayout(results);
    resultsHolder_->setContentsMargins(0, 0, 0, 0);
    splitter->addWidget(results);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    results->hide();
    setCentralWidget(splitter);
    BuildMenus();

    timer1_ = new QTimer(this);
    timer1_->setObjectName("Timer1");
    timer1_->setInterval(150);
    connect(timer1_, &QTimer::timeout, this, [this] {
        flash_ = !flash_;
        picture_->SetFlashing(window_.HighlightTrace, flash_);
    });
    // The drawing area's size is read once, as the window loads.
    window_.PicWidth = picture_->width();
    window_.PicHeight = picture_->height();
    Refresh();
}

QWidget* GroupAnalysisWindow::BuildDisplayTab() {
    auto* tab = new QWidget;
    auto* layout = new QHBoxLayout(tab);

    auto* left = new QVBoxLayout;
    auto* pictureRow = new QHBoxLayout;
    picture_ = new GroupPicture(session_, window_);
    picture_->onCursorMoved = [this] { lbCursor_->setText(Q(window_.form.lbCursor)); };
    picture_->onTraceHit = [this](QPoint at) { ShowTraceMenu(at); };
    pictureRow->addWidget(picture_);
    slider1_ = new QSlider(Qt::Vertical);
    slider1_->setObjectName("Slider1");
    slider1_->setToolTip("Click or Slide to change display offset");
    // Pixel rows grow downwards: the slider's top is row 0.
    slider1_->setInvertedAppearance(true);
    slider1_->setRange(-window_.PicHeight, 2 * window_.PicHeight);
    slider1_->setFixedHeight(window_.PicHeight);
    connect(slider1_, &QSlider::sliderReleased, this, [this] {
        window_.form.Slider1 = slider1_->value();
        Run("GrpAnal.Slider1");
    });
    connect(slider1_, &QSlider::actionTriggered, this, [this](int action) {
        if (action == QAbstractSlider::SliderMove) return;
        QTimer::singleShot(0, this, [this] {
            window_.form.Slider1 = slider1_->value();
            Run("GrpAnal.Slider1");
        });
    });
    pictureRow->addWidget(slider1_);
    left->addLayout(pictureRow);
    auto* note = new QLabel("Note: Trace 0 is the average trace");
    left->addWidget(note);
    auto* navRow = new QHBoxLayout;
    label6_ = new QLabel;
    label6_->setObjectName("Label6");
    navRow->addWidget(label6_);
    ssCommand1_[0] = new QPushButton("|<");
    ssCommand1_[0]->setObjectName("SSCommand1(0)");
    ssCommand1_[0]->setToolTip("Jump to Beginning");
    ssCommand1_[1] = new QPushButton(">|");
    ssCommand1_[1]->setObjectName("SSCommand1(1)");
    ssCommand1_[1]->setToolTip("Jump to the end");
    spin5_[0] = new QToolButton;
    spin5_[0]->setArrowType(Qt::LeftArrow);
    spin5_[0]->setObjectName("SpinButton5_SpinDown");
    spin5_[1] = new QToolButton;
    spin5_[1]->setArrowType(Qt::RightArrow);
    spin5_[1]->setObjectName("SpinButton5_SpinUp");
    for (QToolButton* b : spin5_) b->setToolTip("Jump to previous or next window");
    navRow->addWidget(ssCommand1_[0]);
    navRow->addWidget(spin5_[0]);
    navRow->addWidget(spin5_[1]);
    navRow->addWidget(ssCommand1_[1]);
    navRow->addStretch();
    connect(ssCommand1_[0], &QPushButton::clicked, this, [this] { Run("GrpAnal.SSCommand1(0)"); });
    connect(ssCommand1_[1], &QPushButton::clicked, this, [this] { Run("GrpAnal.SSCommand1(1)"); });
    connect(spin5_[0], &QToolButton::clicked, this, [this] { Run("GrpAnal.SpinButton5_SpinDown"); });
    connect(spin5_[1], &QToolButton::clicked, this, [this] { Run("GrpAnal.SpinButton5_SpinUp"); });
    left->addLayout(navRow);
    label21_ = new QLabel(group::kLabel21Text);
    label21_->setObjectName("Label21");
    left->addWidget(label21_);
    lbCursor_ = new QLabel;
    lbCursor_->setObjectName("lbCursor");
    lbCursor_->setMinimumHeight(3 * lbCursor_->fontMetrics().height());
    lbCursor_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    left->addWidget(lbCursor_);
    left->addStretch();
    // The drawing area stays in view on every tab: the analyses print over the trace.
    picturePanel_ = new QWidget;
    picturePanel_->setLayout(left);

    auto* right = new QVBoxLayout;
    auto* source = new QGroupBox("Source");
    auto* sourceLayout = new QGridLayout(source);
    option2_[0] = new QRadioButton("Episodes");
    option2_[1] = new QRadioButton("Group #");
    combo1_ = EditableCombo("Combo1", Numbers(0, 255));
    for (int k = 0; k < 2; ++k) {
        option2_[std::size_t(k)]->setObjectName(Q(IndexedName("Option2", k)));
        connect(option2_[std::size_t(k)], &QRadioButton::clicked, this,
                [this, k] { Run(IndexedName("GrpAnal.Option2", k)); });
    }
    sourceLayout->addWidget(option2_[0], 0, 0);
    sourceLayout->addWidget(option2_[1], 1, 0);
    sourceLayout->addWidget(combo1_, 1, 1);
    right->addWidget(source);

    auto* grid = new QGridLayout;
    int row = 0;
    auto addRow = [&](const QString& label, QWidget* widget) {
        grid->addWidget(new QLabel(label), row, 0);
        grid->addWidget(widget, row++, 1);
    };
    combo2_ = EditableCombo("Combo2", Items(group::kDisplayTypes, 6));
    combo2_->setEditable(false);
    combo3_ = EditableCombo("Combo3", Items(group::kAlignments, 3));
    combo3_->setEditable(false);
    combo4_ = EditableCombo("Combo4", {"1", "2", "4", "8", "16", "32"});
    combo7_ = EditableCombo("Combo7", {"1", "2", "5", "10"});
    combo5_ = EditableCombo("Combo5", {"0.5", "1", "2", "5", "10", "20"});
    combo6_ = EditableCombo("Combo6", {"0", "-5000", "5000"});
    addRow("Type", combo2_);
    addRow("Alignment", combo3_);
    addRow("Blocks to Analyse    (1 block=256 points)", combo4_);
    auto* every = new QWidget;
    auto* everyLayout = new QHBoxLayout(every);
    everyLayout->setContentsMargins(0, 0, 0, 0);
    everyLayout->addWidget(combo7_);
    everyLayout->addWidget(new QLabel("Points"));
    addRow("Display every", every);
    addRow("Gain", combo5_);
    addRow("Offset", combo6_);
    right->addLayout(grid);
    ckBaseline_ = CheckBox("ckBaseline", "Baseline adjusted (sets baseline as zero)");
    check10_ = CheckBox("Check10", "Display Full Sweep");
    check1_ = CheckBox("Check1", "Display cursors");
    check15_ = CheckBox("Check15", "Time-lock cursors");
    for (QCheckBox* box : {ckBaseline_, check10_, check1_, check15_}) right->addWidget(box);
    command1_ = new QPushButton("&Start Display");
    command1_->setObjectName("Command1");
    right->addWidget(command1_);
    right->addStretch();
    layout->addLayout(right);

    // A pick from a list or Enter in a box runs the control's handler; typing only changes
    // the form.
    const std::pair<QComboBox*, const char*> combos[] = {
        {combo1_, "GrpAnal.Combo1"}, {combo2_, "GrpAnal.Combo2"}, {combo3_, "GrpAnal.Combo3"},
        {combo4_, "GrpAnal.Combo4"}, {combo5_, "GrpAnal.Combo5"}, {combo6_, "GrpAnal.Combo6"},
        {combo7_, nullptr}};
    for (const auto& [combo, handler] : combos) {
        const std::string name = handler ? handler : "";
        connect(combo, &QComboBox::activated, this, [this, name] {
            ToForm();
            if (!name.empty()) Run(name);
        });
        if (QLineEdit* edit = combo->lineEdit()) {
            connect(edit, &QLineEdit::textEdited, this, [this] { ToForm(); });
            connect(edit, &QLineEdit::returnPressed, this, [this, name] {
                ToForm();
                if (!name.empty()) Run(name);
            });
        }
    }
    connect(ckBaseline_, &QCheckBox::clicked, this, [this] { Run("GrpAnal.ckBaseline"); });
    connect(check10_, &QCheckBox::clicked, this, [this] { Run("GrpAnal.Check10"); });
    connect(check1_, &QCheckBox::clicked, this, [this] { Run("GrpAnal.Check1"); });
    connect(check15_, &QCheckBox::clicked, this, [this] { ToForm(); });
    connect(command1_, &QPushButton::clicked, this, [this] { Run("GrpAnal.Command1"); });
    return tab;
}

void GroupAnalysisWindow::BuildMenus() {
    auto run = [this](const std::string& name) { Run(name); };
    QMenu* traceData = menuBar()->addMenu("Trace &Data");
    QMenu* copy = traceData->addMenu("&Copy Data");
    copy->setObjectName("menu_copydata");
    QMenu* save = traceData->addMenu("&Save as ASCII File");
    save->setObjectName("menu_saveascii");
    for (int k = 0; k < 3; ++k) {
        AddHandlerItem(copy, kTraceEntries[k], IndexedName("GrpAnal.menu_copydata", k), run);
        AddHandlerItem(save, kTraceEntries[k], IndexedName("GrpAnal.menu_saveascii", k), run);
    }
    AddHandlerItem(traceData, "&Display Trace", "GrpAnal.menu_DisplayTrace", run);

    QMenu* picture = menuBar()->addMenu("&Picture");
    QAction* copyPicture = picture->addAction("&Copy Picture");
    copyPicture->setObjectName("menu_copybmp");
    connect(copyPicture, &QAction::triggered, this, [this] { CopyPicture(); });
    QAction* savePicture = picture->addAction("&Save Picture (PNG, SVG, PDF)...");
    savePicture->setObjectName("menu_saveBMP");
    connect(savePicture, &QAction::triggered, this, [this] { SavePicture(); });
    QAction* print = picture->addAction("&Print...");
    print->setObjectName("menu_print");
    connect(print, &QAction::triggered, this, [this] { PrintPicture(); });

    QMenu* settings = menuBar()->addMenu("&Settings");
    QMenu* saveSettings = settings->addMenu("Save Settings");
    AddHandlerItem(saveSettings, "in Ardelvan.ini", "GrpAnal.menu_SaveSettings", run);
    AddHandlerItem(saveSettings, "in Custom Settings File", "GrpAnal.menu_SaveAsCustomSetup", run);
    AddHandlerItem(settings, "Load Settings from Custom File", "GrpAnal.menu_LoadSettings", run);
    AddHandlerItem(menuBar()->addMenu("E&xit"), "E&xit", "GrpAnal.menu_exit", run);

    traceMenu_ = new QMenu("&Trace Edit", this);
    traceMenu_->setObjectName("menu_trace");
    AddHandlerItem(traceMenu_, "&Remove From Group", "GrpAnal.menu_trace_remove", run);
    AddHandlerItem(traceMenu_, "&Re-group", "GrpAnal.menu_trace_regroup", run);
    AddHandlerItem(traceMenu_, "&Copy Trace Data", "GrpAnal.menu_trace_extract", run);
}

void GroupAnalysisWindow::AddTab(QWidget* tab, const QString& title, int sstab,
                                 std::function<void()> refresh) {
    following_ = true;
    tabs_->addTab(tab, title);
    following_ = false;
    sstabOfTab_.push_back(sstab);
    if (refresh) refreshers_.push_back(std::move(refresh));
}

void GroupAnalysisWindow::SetResultsGrid(QWidget* grid) {
    if (resultsGrid_) {
        resultsHolder_->removeWidget(resultsGrid_);
        resultsGrid_->deleteLater();
    }
    resultsGrid_ = grid;
    resultsHolder_->addWidget(grid);
    // A widget added to a shown window stays hidden until told.
    if (grid) grid->show();
    resultsHolder_->parentWidget()->setVisible(grid != nullptr);
}

void GroupAnalysisWindow::KeepOnScreen() {
    QWidget* main = parentWidget();
    QScreen* on = main ? main->screen() : screen();
    if (!on) return;
    // Not yet framed by the window manager: the main window's frame stands in for its own.
    QMargins margins;
    if (main) {
        const QRect inner = main->geometry(), outer = main->frameGeometry();
        margins = QMargins(inner.left() - outer.left(), inner.top() - outer.top(),
                           outer.right() - inner.right(), outer.bottom() - inner.bottom());
    }
    const QRect available = on->availableGeometry();
    QRect frame = frameGeometry();
    if (frame == geometry()) frame = QRect(pos(), size().grownBy(margins));
    if (frame.bottom() > available.bottom()) frame.moveBottom(available.bottom());
    if (frame.top() < available.top()) frame.moveTop(available.top());
    if (frame.right() > available.right()) frame.moveRight(available.right());
    if (frame.left() < available.left()) frame.moveLeft(available.left());
    if (frame.topLeft() != pos()) move(frame.topLeft());
}

void GroupAnalysisWindow::ToForm() {
    if (following_) return;
    group::GrpAnalForm& f = window_.form;
    f.Option2_0 = option2_[0]->isChecked();
    f.Option2_1 = option2_[1]->isChecked();
    f.Combo1 = S(combo1_->currentText());
    f.Combo2 = S(combo2_->currentText());
    f.Combo3 = S(combo3_->currentText());
    f.Combo4 = S(combo4_->currentText());
    f.Combo5 = S(combo5_->currentText());
    f.Combo6 = S(combo6_->currentText());
    f.Combo7 = S(combo7_->currentText());
    f.ckBaseline = ckBaseline_->isChecked();
    f.Check10 = check10_->isChecked();
    f.Check1 = check1_->isChecked();
    f.Check15 = check15_->isChecked();
}

void GroupAnalysisWindow::Run(const std::string& handler) {
    ToForm();
    run_(handler);
    // Outside the main window the handler may not have reached the widgets; they follow here.
    Refresh();
}

void GroupAnalysisWindow::Refresh() {
    following_ = true;
    const group::GrpAnalForm& f = window_.form;
    option2_[0]->setChecked(f.Option2_0);
    option2_[1]->setChecked(f.Option2_1);
    SetComboText(combo1_, f.Combo1);
    SetComboText(combo2_, f.Combo2);
    SetComboText(combo3_, f.Combo3);
    SetComboText(combo4_, f.Combo4);
    SetComboText(combo5_, f.Combo5);
    SetComboText(combo6_, f.Combo6);
    SetComboText(combo7_, f.Combo7);
    SetCheck(ckBaseline_, f.ckBaseline);
    SetCheck(check10_, f.Check10);
    SetCheck(check1_, f.Check1);
    SetCheck(check15_, f.Check15);
    if (!slider1_->isSliderDown()) slider1_->setValue(f.Slider1);
    label6_->setText(Q(f.Label6));
    lbCursor_->setText(Q(f.lbCursor));
    lbCursor_->setVisible(f.Check1);
    // The key line and the navigation buttons belong to the individual types.
    const bool individual = group::IsIndividualType(f.Combo2);
    label21_->setVisible(individual);
    for (QPushButton* b : ssCommand1_) b->setVisible(individual);
    for (QToolButton* b : spin5_) b->setVisible(individual);
    for (std::size_t k = 0; k < sstabOfTab_.size(); ++k)
        if (sstabOfTab_[k] == f.SSTab1 && tabs_->currentIndex() != int(k)) tabs_->setCurrentIndex(int(k));
    for (const auto& refresh : refreshers_) refresh();
    following_ = false;
    picture_->update();
}

void GroupAnalysisWindow::FollowForms() {
    const bool toFront = window_.bringToFront;
    window_.bringToFront = false;
    if (window_.shown && isVisible() && toFront) {
        raise();
        activateWindow();
    } else if (window_.shown && !isVisible()) {
        if (!placed_ && parentWidget()) {
            // The first time it opens, the window stands centred on the main window.
            placed_ = true;
            adjustSize();
            move(parentWidget()->frameGeometry().center() - rect().center());
            // With the results grid below the tabs the window is larger than the main window.
            KeepOnScreen();
        }
        show();
        raise();
        activateWindow();
        picture_->setFocus();
    } else if (!window_.shown && isVisible()) {
        hide();
    }
    Refresh();
}

void GroupAnalysisWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    // The tabs widen the window once shown; a window grown past the screen's edge moves in.
    if (isVisible()) KeepOnScreen();
}

void GroupAnalysisWindow::closeEvent(QCloseEvent* event) {
    window_.shown = false;
    event->accept();
}

void GroupAnalysisWindow::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    if (key >= Qt::Key_A && key <= Qt::Key_Z && !(event->modifiers() & Qt::ControlModifier)) {
        const char letter = char('A' + (key - Qt::Key_A));
        if (std::string_view("ASDFKUY").find(letter) != std::string_view::npos) {
            Run(std::string("GrpAnal.Key") + letter);
            return;
        }
    }
    QMainWindow::keyPressEvent(event);
}

void GroupAnalysisWindow::ShowTraceMenu(QPoint at) {
    // The trace flashes while its menu is open.
    if (session_.options.SoundFlag) QApplication::beep();
    flash_ = true;
    picture_->SetFlashing(window_.HighlightTrace, true);
    timer1_->start();
    traceMenu_->exec(at);
    timer1_->stop();
    picture_->SetFlashing(-1, false);
    group::GroupDisplay(session_, window_);
    Refresh();
}

// ---- Pictures of the drawing area --------------------------------------------------------

void GroupAnalysisWindow::CopyPicture() {
    QImage image(picture_->size(), QImage::Format_RGB32);
    QPainter p(&image);
    picture_->Paint(p);
    p.end();
    QApplication::clipboard()->setImage(image);
}

void GroupAnalysisWindow::SavePicture() {
    QString filter = "PNG Picture (*.png);;PDF Document (*.pdf)";
#ifdef ARDEL_HAVE_QTSVG
    filter += ";;SVG Picture (*.svg)";
#endif
    const QString name = QFileDialog::getSaveFileName(this, "Save Picture", QString(), filter);
    if (name.isEmpty()) return;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const QString suffix = QFileInfo(name).suffix().toLower();
    if (suffix == "pdf") {
        QPdfWriter pdf(&buffer);
        pdf.setResolution(96);
        pdf.setPageSize(QPageSize(QSizeF(picture_->width(), picture_->height()), QPageSize::Point));
        pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
        QPainter p(&pdf);
        picture_->Paint(p);
    } else if (suffix == "svg") {
#ifdef ARDEL_HAVE_QTSVG
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setSize(picture_->size());
        svg.setViewBox(QRect(QPoint(0, 0), picture_->size()));
        svg.setTitle(group::kGrpAnalCaption);
        QPainter p(&svg);
        picture_->Paint(p);
#else
        QMessageBox::information(this, "Save Picture",
                                 "SVG pictures need Qt SVG, which this build lacks.");
        return;
#endif
    } else {
        QImage image(picture_->size(), QImage::Format_RGB32);
        QPainter p(&image);
        picture_->Paint(p);
        p.end();
        image.save(&buffer, "PNG");
    }
    buffer.close();
    try {
        WriteFileSafely(S(name), std::string_view(bytes.constData(), std::size_t(bytes.size())));
    } catch (const std::exception& e) {
        QMessageBox::warning(this, "Save Picture", e.what());
    }
}

void GroupAnalysisWindow::PrintPicture() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) return;
    QPainter p(&printer);
    const QRect page = p.viewport();
    const double scale = std::min(double(page.width()) / picture_->width(),
                                  double(page.height()) / picture_->height());
    p.scale(scale, scale);
    picture_->Paint(p);
}

}  // namespace ardel
