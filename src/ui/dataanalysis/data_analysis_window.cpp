#include "ui/dataanalysis/data_analysis_window.h"

#include <QAction>
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
#include <QPainter>
#include <QPixmap>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "script/command_table.h"
#include "script/forms.h"
#include "ui/main/window_helpers.h"
#include "ui/plot/graph_render.h"

namespace ardel {

namespace {



QAction* Item(QMenu* menu, const std::string& name, const QString& caption) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(Q(name));
    return a;
}

}  // namespace

DataAnalysisWindow::DataAnalysisWindow(Forms& forms, std::function<void(const std::string&)> run,
                                       QWidget* parent)
    : QMainWindow(parent), forms_(forms), form_(forms.dataAnalysis), run_(std::move(run)) {
    setObjectName("DataAnalysis");
    auto* central = new QWidget;
    auto* layout = new QHBoxLayout(central);

    auto* input = new QGroupBox("Data Input");
    auto* inputLayout = new QVBoxLayout(input);
    const char* sampleTitles[2] = {"Sample 1", "Sample 2"};
    const std::string optionNames[2] = {"Option1", "Option2"};
    const std::string comboNames[2] = {"Combo1", "Combo2"};
    const std::string textNames[2] = {"Text2", "Text3"};
    const char* textLabels[3] = {"Mean", "Std. Dev", "N"};
    for (int k = 0; k < 2; ++k) {
        const std::size_t i = std::size_t(k);
        auto* box = new QGroupBox(sampleTitles[k]);
        auto* grid = new QGridLayout(box);
        option_[i][0] = new QRadioButton("Data Array");
        option_[i][1] = new QRadioButton("Mean");
        combo_[i] = new QComboBox;
        combo_[i]->setObjectName(Q(comboNames[k]));
        for (const std::string& item : kSampleArrays) combo_[i]->addItem(Q(item));
        for (int e = 0; e < 2; ++e) {
            option_[i][std::size_t(e)]->setObjectName(Q(IndexedName(optionNames[k], e)));
            connect(option_[i][std::size_t(e)], &QRadioButton::toggled, this, [this] { ToForm(); });
        }
        grid->addWidget(option_[i][0], 0, 0);
        grid->addWidget(combo_[i], 0, 1);
        grid->addWidget(option_[i][1], 1, 0);
        connect(combo_[i], &QComboBox::activated, this, [this] { ToForm(); });
        for (int e = 0; e < 3; ++e) {
            auto* edit = new QLineEdit;
            edit->setObjectName(Q(IndexedName(textNames[k], e)));
            text_[i][std::size_t(e)] = edit;
            grid->addWidget(new QLabel(textLabels[e]), 2 + e, 0);
            grid->addWidget(edit, 2 + e, 1);
            // Typing selects the sample's "Mean" option.
            const std::string handler = "DataAnalysis." + IndexedName(textNames[k], e);
            connect(edit, &QLineEdit::textEdited, this, [this, handler] { Run(handler); });
        }
        inputLayout->addWidget(box);
    }
    auto* alphaRow = new QHBoxLayout;
    alphaRow->addWidget(new QLabel("Alpha (Confidence Level, 0 - 1)"));
    text4_ = new QLineEdit;
    text4_->setObjectName("Text4");
    connect(text4_, &QLineEdit::textEdited, this, [this] { ToForm(); });
    alphaRow->addWidget(text4_);
    inputLayout->addLayout(alphaRow);
    auto* buttons = new QHBoxLayout;
    auto* test = new QPushButton("Test");
    test->setObjectName("Command1");
    test->setDefault(true);
    auto* cancel = new QPushButton("Cancel");
    cancel->setObjectName("Command2");
    auto* help = new QPushButton("Help");
    help->setObjectName("Command3");
    // No help text exists for this window; the button is shown but does nothing.
    help->setEnabled(false);
    buttons->addWidget(test);
    buttons->addWidget(cancel);
    buttons->addWidget(help);
    inputLayout->addLayout(buttons);
    inputLayout->addStretch();
    connect(test, &QPushButton::clicked, this, [this] { Run("DataAnalysis.Command1"); });
    connect(cancel, &QPushButton::clicked, this, [this] { Run("DataAnalysis.Command2"); });
    layout->addWidget(input);

    auto* result = new QGroupBox("Result Display");
    auto* resultLayout = new QVBoxLayout(result);
    grid_ = new QTableWidget(0, kAnalysisGridColumns);
    grid_->setObjectName("Grid1");
    grid_->verticalHeader()->hide();
    resultLayout->addWidget(grid_, 1);
    graph_ = new QLabel;
    graph_->setObjectName("Graph1");
    graph_->setMinimumSize(320, 220);
    graph_->setAlignment(Qt::AlignCenter);
    resultLayout->addWidget(graph_, 1);
    connect(grid_, &QTableWidget::cellChanged, this,
            [this](int row, int column) { CellEdited(row, column); });
    layout->addWidget(result, 1);
    setCentralWidget(central);

    QMenu* file = menuBar()->addMenu("&File");
    connect(Item(file, "menu_ViewArray", "View Data Array"), &QAction::triggered, this,
            [this] { Run("DataAnalysis.menu_ViewArray"); });
    connect(Item(file, "menu_EditArray", "Edit or Add Data"), &QAction::triggered, this,
            [this] { Run("DataAnalysis.menu_EditArray"); });
    file->addSeparator();
    connect(Item(file, "menu_print", "Print"), &QAction::triggered, this, [this] { PrintForm(); });
    connect(Item(file, "menu_Copy", "Copy"), &QAction::triggered, this,
            [this] { Run("DataAnalysis.menu_Copy"); });
    connect(Item(file, "menu_CustomGraph", "Customize Graph"), &QAction::triggered, this,
            [this] { Run("DataAnalysis.menu_CustomGraph"); });
    file->addSeparator();
    connect(Item(file, "menu_exit", "Exit"), &QAction::triggered, this,
            [this] { Run("DataAnalysis.menu_exit"); });
    resize(900, 560);
    FromForm();
}

void DataAnalysisWindow::Run(const std::string& handler) {
    if (following_) return;
    ToForm();
    if (run_) run_(handler);
    FollowForms();
}

void DataAnalysisWindow::ToForm() {
    if (following_) return;
    for (std::size_t k = 0; k < 2; ++k) {
        form_.Option[k] = option_[k][1]->isChecked() ? 1 : 0;
        form_.Combo[k] = combo_[k]->currentIndex();
        for (std::size_t e = 0; e < 3; ++e) form_.Text[k][e] = text_[k][e]->text().toStdString();
    }
    form_.Text4 = text4_->text().toStdString();
}

void DataAnalysisWindow::FromForm() {
    following_ = true;
    setWindowTitle(Q(form_.Caption));
    for (std::size_t k = 0; k < 2; ++k) {
        option_[k][std::size_t(form_.Option[k] == 1)]->setChecked(true);
        combo_[k]->setCurrentIndex(form_.Combo[k]);
        for (std::size_t e = 0; e < 3; ++e) {
            if (text_[k][e]->text().toStdString() != form_.Text[k][e]) {
                text_[k][e]->setText(Q(form_.Text[k][e]));
            }
        }
    }
    text4_->setText(Q(form_.Text4));
    // Row 0 of the form's grid is the title row, shown as the header.
    const bool editing = form_.Caption == kCaptionManualEntry;
    const int rows = form_.Grid1.empty() ? 0 : int(form_.Grid1.size()) - 1;
    grid_->setRowCount(rows);
    QStringList titles;
    for (int c = 0; c < kAnalysisGridColumns; ++c) {
        titles << (form_.Grid1.empty() ? QString() : Q(form_.Grid1[0][std::size_t(c)]));
    }
    grid_->setHorizontalHeaderLabels(titles);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < kAnalysisGridColumns; ++c) {
            auto* item = new QTableWidgetItem(Q(form_.Grid1[std::size_t(r + 1)][std::size_t(c)]));
            Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
            if (editing && c > 0) flags |= Qt::ItemIsEditable;
            item->setFlags(flags);
            grid_->setItem(r, c, item);
        }
    }
    following_ = false;
    DrawGraph();
}

void DataAnalysisWindow::CellEdited(int row, int column) {
    if (following_) return;
    QTableWidgetItem* item = grid_->item(row, column);
    if (!item) return;
    form_.GridRow = row + 1;
    form_.GridCol = column;
    if (std::size_t(row + 1) < form_.Grid1.size()) {
        form_.Grid1[std::size_t(row + 1)][std::size_t(column)] = item->text().toStdString();
    }
    // The edit is confirmed: the engine stores the cell's value in its array.
    Run("DataAnalysis.Grid1_KeyPress(13)");
}

void DataAnalysisWindow::DrawGraph() {
    const GraphModel& g = *form_.Graph1;
    if (g.DrawCount() == drawn_ && !graph_->pixmap().isNull()) return;
    drawn_ = g.DrawCount();
    if (g.PointCount() == 0) {
        graph_->clear();
        return;
    }
    QPixmap picture;
    try {
        const std::string bytes = GraphPicture(g, PictureFormat::Png, graph_->size());
        picture.loadFromData(reinterpret_cast<const uchar*>(bytes.data()), uint(bytes.size()), "PNG");
    } catch (const std::exception&) {
        graph_->clear();
        return;
    }
    graph_->setPixmap(picture.scaled(graph_->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void DataAnalysisWindow::FollowForms() {
    if (forms_.dataAnalysisShown) {
        FromForm();
        if (!isVisible()) show();
        raise();
    } else if (isVisible()) {
        hide();
    }
}

void DataAnalysisWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    // Column widths in proportion to the grid's width.
    const int width = grid_->viewport()->width();
    grid_->setColumnWidth(0, width * 2 / 5);
    grid_->setColumnWidth(1, width * 3 / 10);
    grid_->setColumnWidth(2, width - width * 2 / 5 - width * 3 / 10);
    drawn_ = ~std::uint64_t(0);
    DrawGraph();
}

void DataAnalysisWindow::closeEvent(QCloseEvent* event) {
    forms_.dataAnalysisShown = false;
    QMainWindow::closeEvent(event);
}

void DataAnalysisWindow::PrintForm() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) return;
    QPainter p(&printer);
    const QRect page = p.viewport();
    int y = 0;
    const int line = p.fontMetrics().height();
    p.drawText(0, y += line, Q(form_.Caption));
    y += line;
    for (const auto& row : form_.Grid1) {
        p.drawText(0, y += line, Q(row[0]) + "\t" + Q(row[1]) + "\t" + Q(row[2]));
    }
    if (form_.Graph1->PointCount() > 0) {
        const QSize size(page.width(), page.height() / 2);
        QPixmap picture;
        const std::string bytes = GraphPicture(*form_.Graph1, PictureFormat::Png, size / 2);
        picture.loadFromData(reinterpret_cast<const uchar*>(bytes.data()), uint(bytes.size()), "PNG");
        p.drawPixmap(QRect(QPoint(0, y + line), size), picture);
    }
}

void AddDataAnalysisItems(QMenu* menu, std::function<void(const std::string&)> run) {
    const std::pair<const char*, const char*> items[] = {
        {"menu_ttest_paired", "T-test Paired 2 Samples"},
        {"menu_ttest_UnequalVar", "T-test 2 Samples Assuming Unequal Variances"},
        {"menu_ttest_EqualVar", "T-test 2 Samples Assuming Equal Variances"},
        {"menu_Ftest", "F-test for Variances"},
        {"menu_LinearRegression", "Linear Regression"},
        {"menu_KStest", "Kolmogorov-Smirnov Two Sample Test"},
        {"menu_ManualDataEntry", "View or Enter Data into Array"}};
    for (const auto& [name, caption] : items) mainwindow::AddHandlerItem(menu, caption, name, run);
}

}  // namespace ardel
