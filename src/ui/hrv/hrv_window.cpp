#include "ui/hrv/hrv_window.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <span>

#include "hrv/time_domain.h"
#include "script/command_table.h"
#include "script/forms.h"
#include "ui/main/window_helpers.h"

namespace ardel {

namespace {

using mainwindow::CheckBox;
using mainwindow::EditableCombo;
using mainwindow::SetComboText;

QTableWidget* Grid(const char* name, std::span<const std::string_view> captions) {
    auto* g = new QTableWidget(0, int(captions.size()));
    g->setObjectName(name);
    QStringList titles;
    for (const auto c : captions) titles << Q(c);
    g->setHorizontalHeaderLabels(titles);
    g->verticalHeader()->hide();
    g->setEditTriggers(QAbstractItemView::NoEditTriggers);
    return g;
}

void FillGrid(QTableWidget* g, const std::vector<std::vector<std::string>>& rows) {
    g->setRowCount(int(rows.size()));
    for (std::size_t r = 0; r < rows.size(); ++r)
        for (std::size_t c = 0; c < rows[r].size(); ++c)
            g->setItem(int(r), int(c), new QTableWidgetItem(Q(rows[r][c])));
    g->resizeColumnsToContents();
}

QPrinter& SharedPrinter() {
    static QPrinter printer;
    return printer;
}

}  // namespace

HrvWindow::HrvWindow(Forms& forms, RunHandler run, QWidget* parent)
    : QMainWindow(parent), forms_(forms), form_(forms.hrv), run_(std::move(run)) {
    setObjectName("HRV");
    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);

    auto* options = new QGroupBox("Options");
    auto* grid = new QGridLayout(options);
    combo2_ = EditableCombo("Combo2", {"100", "1500", "2000"});
    combo3_ = EditableCombo("Combo3", {"10", "200", "300"});
    combo1_ = EditableCombo("Combo1", {"50", "20", "100"});
    text1_ = new QLineEdit;
    text1_->setObjectName("Text1");
    label4_ = new QLabel;
    label4_->setObjectName("Label4");
    grid->addWidget(new QLabel("Do not use RR intervals greater than"), 0, 0);
    grid->addWidget(combo2_, 0, 1);
    grid->addWidget(new QLabel("and smaller than"), 0, 2);
    grid->addWidget(combo3_, 0, 3);
    grid->addWidget(new QLabel("msec."), 0, 4);
    grid->addWidget(new QLabel("Number of sample points to divide into even segments."), 1, 0);
    grid->addWidget(text1_, 1, 1);
    grid->addWidget(new QLabel("x  Sample Interval = total time period of segment"), 1, 2);
    grid->addWidget(label4_, 1, 3);
    grid->addWidget(new QLabel("msec."), 1, 4);
    grid->addWidget(new QLabel("Threshold of delta RR for %NN and nNN calculations (msec)"), 2, 0);
    grid->addWidget(combo1_, 2, 1);
    check1_ = CheckBox("Check1", "Include segments with no RR interval in calculations.");
    check2_ = CheckBox("Check2", "Exclude the last segment");
    grid->addWidget(check1_, 3, 0, 1, 3);
    grid->addWidget(check2_, 4, 0, 1, 3);
    auto* start = new QPushButton("Start Analysis");
    start->setObjectName("Command1");
    start->setDefault(true);
    auto* save = new QPushButton("Save Options");
    save->setObjectName("Command2");
    grid->addWidget(start, 3, 3, 1, 2);
    grid->addWidget(save, 4, 3, 1, 2);
    layout->addWidget(options);
    for (QComboBox* c : {combo1_, combo2_, combo3_})
        connect(c, &QComboBox::currentTextChanged, this, [this] { ToForm(); });
    connect(text1_, &QLineEdit::textEdited, this, [this] { Run("HRV.Text1"); });
    connect(check1_, &QCheckBox::toggled, this, [this] { ToForm(); });
    connect(check2_, &QCheckBox::toggled, this, [this] { ToForm(); });
    connect(start, &QPushButton::clicked, this, [this] { Run("HRV.Command1"); });
    connect(save, &QPushButton::clicked, this, [this] { Run("HRV.Command2"); });

    auto* measures = new QGroupBox(Q(hrv::kTimeDomainCaption));
    auto* measuresLayout = new QVBoxLayout(measures);
    measuresLayout->addWidget(new QLabel("Click on column header to see the definition."));
    grid1_ = Grid("TDBGrid1", hrv::kTimeDomainColumns);
    measuresLayout->addWidget(grid1_);
    connect(grid1_->horizontalHeader(), &QHeaderView::sectionClicked, this,
            [this](int column) { Run(IndexedName("HRV.TDBGrid1_HeadClick", column)); });
    layout->addWidget(measures, 1);
    auto* segments = new QGroupBox(Q(hrv::kSegmentCaption));
    auto* segmentsLayout = new QVBoxLayout(segments);
    grid2_ = Grid("TDBGrid2", hrv::kSegmentColumns);
    segmentsLayout->addWidget(grid2_);
    layout->addWidget(segments, 1);
    setCentralWidget(central);
    BuildMenus();
    resize(980, 640);
    FromForm();
}

void HrvWindow::BuildMenus() {
    auto item = [this](QMenu* menu, const char* name, const QString& caption,
                       std::function<void()> action) {
        QAction* a = menu->addAction(caption);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, std::move(action));
    };
    auto handler = [this, item](QMenu* menu, const char* name, const QString& caption) {
        const std::string full = std::string("HRV.") + name;
        item(menu, name, caption, [this, full] { Run(full); });
    };
    QMenu* file = menuBar()->addMenu("&File");
    QMenu* save = file->addMenu("&Save");
    handler(save, "menu_TimeDomain", "Time-Domain Measures");
    handler(save, "menu_SegmentResults", "Segment Results");
    file->addSeparator();
    item(file, "menu_Print", "&Print", [this] { PrintGrids(); });
    item(file, "menu_PrintSetup", "Print Set&up", [this] { PageSetup(); });
    file->addSeparator();
    handler(file, "menu_Exit", "E&xit");
    QMenu* edit = menuBar()->addMenu("&Edit");
    QMenu* copy = edit->addMenu("&Copy");
    handler(copy, "menu_TimeDomainCopy", "Time-Domain Measures");
    handler(copy, "menu_SegmentResultsCopy", "Segment Results");
    QMenu* tachogram = menuBar()->addMenu("&Tachogram");
    tachogram->setObjectName("menu_Tachogram");
    handler(tachogram, "menu_TachogramPlot", "Generate Plot");
    handler(tachogram, "menu_TachogramABF", "Save as ABF File");
    handler(tachogram, "menu_TachogramASCII", "Save as ASCII");
}

void HrvWindow::Run(const std::string& handler) {
    if (following_) return;
    ToForm();
    if (run_) run_(handler);
    FollowForms();
    // A question of the command came over the main window; this window's command brings it
    // back in front.
    if (isVisible()) {
        raise();
        activateWindow();
    }
}

void HrvWindow::ToForm() {
    if (following_) return;
    form_.Combo1 = S(combo1_->currentText());
    form_.Combo2 = S(combo2_->currentText());
    form_.Combo3 = S(combo3_->currentText());
    form_.Text1 = S(text1_->text());
    form_.Check1 = check1_->isChecked();
    form_.Check2 = check2_->isChecked();
}

void HrvWindow::FromForm() {
    following_ = true;
    setWindowTitle(Q(form_.Caption));
    SetComboText(combo1_, form_.Combo1);
    SetComboText(combo2_, form_.Combo2);
    SetComboText(combo3_, form_.Combo3);
    if (S(text1_->text()) != form_.Text1) text1_->setText(Q(form_.Text1));
    check1_->setChecked(form_.Check1);
    check2_->setChecked(form_.Check2);
    label4_->setText(Q(form_.Label4));
    FillGrid(grid1_, hrv::TimeDomainGridCells(form_));
    FillGrid(grid2_, hrv::SegmentGridCells(form_));
    following_ = false;
}

void HrvWindow::FollowForms() {
    if (forms_.hrvShown) {
        FromForm();
        if (!isVisible()) show();
    } else if (isVisible()) {
        hide();
    }
}

void HrvWindow::closeEvent(QCloseEvent* event) {
    forms_.hrvShown = false;
    QMainWindow::closeEvent(event);
}

void HrvWindow::PrintGrids() {
    QPrintDialog dialog(&SharedPrinter(), this);
    if (dialog.exec() != QDialog::Accepted) return;
    QPainter p(&SharedPrinter());
    const int line = p.fontMetrics().height();
    const int width = p.viewport().width();
    int y = 0;
    // Each grid under its caption, its columns spread over the page's width.
    auto print = [&](std::string_view caption, std::span<const std::string_view> columns,
                     const std::vector<std::vector<std::string>>& rows) {
        const int column = width / int(columns.size());
        p.drawText(0, y += line, Q(caption));
        y += line / 2;
        for (std::size_t c = 0; c < columns.size(); ++c)
            p.drawText(int(c) * column, y + line, Q(columns[c]));
        y += line;
        for (const auto& row : rows) {
            if (y + 2 * line > p.viewport().height()) {
                SharedPrinter().newPage();
                y = 0;
            }
            y += line;
            for (std::size_t c = 0; c < row.size(); ++c) p.drawText(int(c) * column, y, Q(row[c]));
        }
        y += 2 * line;
    };
    print(hrv::kTimeDomainCaption, hrv::kTimeDomainColumns, hrv::TimeDomainGridCells(form_));
    print(hrv::kSegmentCaption, hrv::kSegmentColumns, hrv::SegmentGridCells(form_));
}

void HrvWindow::PageSetup() {
    QPageSetupDialog dialog(&SharedPrinter(), this);
    dialog.exec();
}

HrvSpuriousWindow::HrvSpuriousWindow(Forms& forms, RunHandler run, QWidget* parent)
    : QMainWindow(parent), forms_(forms), run_(std::move(run)) {
    setObjectName("HRVSpurious");
    setWindowTitle(hrv::HrvSpuriousForm::kCaption);
    auto* central = new QWidget;
    auto* layout = new QHBoxLayout(central);
    auto* by = new QGroupBox("Select");
    auto* byLayout = new QVBoxLayout(by);
    const char* byCaptions[3] = {"By Range", "By Percentage", "By Hand"};
    auto* results = new QGroupBox("Results");
    auto* resultsLayout = new QVBoxLayout(results);
    const char* resultCaptions[3] = {"Mark as group #", "Reject (mark as group #255)", "Delete"};
    for (int e = 0; e < 3; ++e) {
        option1_[e] = new QRadioButton(byCaptions[e]);
        option1_[e]->setObjectName(Q(IndexedName("Option1", e)));
        byLayout->addWidget(option1_[e]);
        connect(option1_[e], &QRadioButton::toggled, this, [this, e](bool on) {
            if (on) forms_.hrvSpurious.Option1 = e;
        });
        option2_[e] = new QRadioButton(resultCaptions[e]);
        option2_[e]->setObjectName(Q(IndexedName("Option2", e)));
        resultsLayout->addWidget(option2_[e]);
        connect(option2_[e], &QRadioButton::toggled, this, [this, e](bool on) {
            if (on) forms_.hrvSpurious.Option2 = e;
        });
    }
    layout->addWidget(by);
    layout->addWidget(results);
    auto* scan = new QPushButton("Scan and Select");
    scan->setObjectName("Command1");
    layout->addWidget(scan, 0, Qt::AlignBottom);
    connect(scan, &QPushButton::clicked, this, [this] {
        if (run_) run_("HRVSpurious.Command1");
        FollowForms();
    });
    setCentralWidget(central);
    FollowForms();
}

void HrvSpuriousWindow::FollowForms() {
    option1_[std::clamp(forms_.hrvSpurious.Option1, 0, 2)]->setChecked(true);
    option2_[std::clamp(forms_.hrvSpurious.Option2, 0, 2)]->setChecked(true);
    if (forms_.hrvSpuriousShown) {
        if (!isVisible()) show();
    } else if (isVisible()) {
        hide();
    }
}

void HrvSpuriousWindow::closeEvent(QCloseEvent* event) {
    forms_.hrvSpuriousShown = false;
    QMainWindow::closeEvent(event);
}

HrvWindows::HrvWindows(QWidget* parent, Forms& forms, RunHandler run) : QObject(parent) {
    timeDomain_ = new HrvWindow(forms, run, parent);
    timeDomain_->setWindowFlag(Qt::Window);
    spurious_ = new HrvSpuriousWindow(forms, run, parent);
    spurious_->setWindowFlag(Qt::Window);
}

void HrvWindows::FollowForms() {
    timeDomain_->FollowForms();
    spurious_->FollowForms();
}

}  // namespace ardel
