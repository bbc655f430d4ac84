#include "ui/hrv/hrv_display.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTimer>

#include "ui/main/window_helpers.h"
#include "ui/plot/graph_render.h"

namespace ardel {

namespace {

QPixmap Picture(const GraphModel& g, QSize size, double pixelRatio) {
    if (size.width() < 10 || size.height() < 10) return {};
    return GraphPixmap(g, size, pixelRatio);
}

}  // namespace

HrvDisplay::HrvDisplay(const char* name, std::string handlerPrefix, RunByName run, QWidget* parent)
    : QLabel(parent), prefix_(std::move(handlerPrefix)), run_(std::move(run)) {
    setObjectName(name);
    setMinimumSize(260, 180);
    setAlignment(Qt::AlignCenter);
    setFrameShape(QFrame::StyledPanel);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    setToolTip("Right-click for the display's values.");
    resizeTimer_ = new QTimer(this);
    resizeTimer_->setSingleShot(true);
    resizeTimer_->setInterval(60);
    connect(resizeTimer_, &QTimer::timeout, this, [this] {
        drawn_ = ~std::uint64_t(0);
        Draw();
    });
}

void HrvDisplay::Follow(const std::shared_ptr<GraphModel>& model) {
    if (model != model_) drawn_ = ~std::uint64_t(0);
    model_ = model;
    Draw();
}

void HrvDisplay::Draw() {
    if (!model_ || model_->DrawCount() == drawn_) return;
    // Not laid out yet: the first resize draws it.
    if (width() < 10 || height() < 10) return;
    drawn_ = model_->DrawCount();
    if (model_->PointCount() == 0) {
        clear();
        setText(Q(model_->GraphTitle));
        return;
    }
    setPixmap(Picture(*model_, size(), devicePixelRatioF()));
}

void HrvDisplay::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    resizeTimer_->start();
}

void HrvDisplay::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    mainwindow::AddHandlerItem(&menu, "Copy Graph Values to Clipboard", prefix_ + "menu_copydata", run_);
    mainwindow::AddHandlerItem(&menu, "Save Graph Values as ASCII file", prefix_ + "menu_CopyDataASCII",
                               run_);
    mainwindow::AddHandlerItem(&menu, "Open in a Graph Window", prefix_ + "menu_OpenGraph", run_);
    menu.exec(event->globalPos());
}

int AddIntervalOptionBoxes(QGridLayout* grid, int row, IntervalOptionBoxes& boxes) {
    using mainwindow::EditableCombo;
    boxes.Combo2 = EditableCombo("Combo2", {"100", "1000", "1500", "2000", "3000"});
    boxes.Combo3 = EditableCombo("Combo3", {"10", "100", "200", "300", "400"});
    boxes.Combo1 = EditableCombo("Combo1", {"1", "2", "5", "10", "20", "50"});
    boxes.Combo4 = EditableCombo("Combo4", {"1", "2", "5", "10", "20", "50"});
    grid->addWidget(new QLabel("Do not use RR intervals greater than"), row, 0);
    grid->addWidget(boxes.Combo2, row++, 1);
    grid->addWidget(new QLabel("and smaller than"), row, 0);
    grid->addWidget(boxes.Combo3, row, 1);
    grid->addWidget(new QLabel("msec."), row++, 2);
    grid->addWidget(new QLabel("Bin Size for RR Interval"), row, 0);
    grid->addWidget(boxes.Combo1, row++, 1);
    grid->addWidget(new QLabel("Bin Size for Delta RR Interval"), row, 0);
    grid->addWidget(boxes.Combo4, row++, 1);
    return row;
}

HrvFormWindow::HrvFormWindow(bool& shown, RunByName run, QWidget* parent)
    : QMainWindow(parent), shown_(shown), run_(std::move(run)) {}

void HrvFormWindow::AddOptionButtons(QHBoxLayout* layout, QGroupBox* options, QGridLayout* grid,
                                     int row, const std::string& form) {
    auto* generate = new QPushButton("Generate Plots");
    generate->setObjectName("Command1");
    generate->setDefault(true);
    auto* save = new QPushButton("Save Options");
    save->setObjectName("Command2");
    grid->addWidget(generate, row++, 0, 1, 3);
    grid->addWidget(save, row++, 0, 1, 3);
    grid->setRowStretch(row, 1);
    connect(generate, &QPushButton::clicked, this, [this, form] { Run(form + ".Command1"); });
    connect(save, &QPushButton::clicked, this, [this, form] { Run(form + ".Command2"); });
    // The options keep their natural width; the displays take the rest.
    options->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    layout->addWidget(options);
}

void HrvFormWindow::Run(const std::string& handler) {
    if (following_) return;
    ToForm();
    if (run_) run_(handler);
    FollowForms();
}

void HrvFormWindow::FollowForms() {
    if (shown_) {
        // Shown first, so the displays draw at their laid-out size.
        if (!isVisible()) {
            show();
            raise();
        }
        following_ = true;
        FromForm();
        following_ = false;
    } else if (isVisible()) {
        hide();
    }
}

void HrvFormWindow::closeEvent(QCloseEvent* event) {
    shown_ = false;
    QMainWindow::closeEvent(event);
}

void PrintDisplays(QWidget* parent, const QString& caption,
                   const std::vector<std::shared_ptr<GraphModel>>& displays) {
    QPrinter printer;
    QPrintDialog dialog(&printer, parent);
    if (dialog.exec() != QDialog::Accepted) return;
    QPainter p(&printer);
    const QRect page = p.viewport();
    const int line = p.fontMetrics().height();
    p.drawText(0, line, caption);
    const int top = 2 * line;
    const QSize cell(page.width() / 2, (page.height() - top) / 2);
    for (std::size_t k = 0; k < displays.size() && k < 4; ++k) {
        const QPoint at(int(k % 2) * cell.width(), top + int(k / 2) * cell.height());
        // Drawn at screen size and scaled to the cell, so texts keep a readable size; twice the
        // pixels keep it sharp on paper.
        const QPixmap picture = Picture(*displays[k], QSize(640, 440), 2.0);
        if (!picture.isNull()) p.drawPixmap(QRect(at, cell).adjusted(4, 4, -4, -4), picture);
    }
}

}  // namespace ardel
