#include "ui/hrv/geo_window.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "script/forms.h"
#include "ui/qt_text.h"

namespace ardel {

namespace {

// A titled frame around one display.
QGroupBox* Frame(const char* title, HrvDisplay* display) {
    auto* box = new QGroupBox(title);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(display);
    return box;
}

}  // namespace

HrvGeoWindow::HrvGeoWindow(Forms& forms, RunByName run, QWidget* parent)
    : HrvFormWindow(forms.hrvGeoShown, std::move(run), parent), form_(forms.hrvGeo) {
    setObjectName("HRVGeo");
    setWindowTitle(Q(hrv::kGeoCaption));
    auto* central = new QWidget;
    auto* layout = new QHBoxLayout(central);

    auto* options = new QGroupBox("Options");
    auto* grid = new QGridLayout(options);
    int row = AddIntervalOptionBoxes(grid, 0, boxes_);
    AddOptionButtons(layout, options, grid, row, "HRVGeo");

    auto displayRun = [this](const std::string& name) { Run(name); };
    graph1_ = new HrvDisplay("Graph1", "HRVGeo.Graph1.", displayRun);
    graph2_ = new HrvDisplay("Graph2", "HRVGeo.Graph2.", displayRun);
    picture1_ = new HrvDisplay("Picture1", "HRVGeo.Picture1.", displayRun);
    picture2_ = new HrvDisplay("Picture2", "HRVGeo.Picture2.", displayRun);
    auto* frames = new QGridLayout;
    frames->addWidget(Frame("RR Interval Histogram", graph1_), 0, 0);
    frames->addWidget(Frame("Delta RR Interval Histogram", graph2_), 0, 1);
    frames->addWidget(Frame("Lorenz Plot", picture1_), 1, 0);
    frames->addWidget(Frame("Tachogram", picture2_), 1, 1);
    for (int k = 0; k < 2; ++k) {
        frames->setRowStretch(k, 1);
        frames->setColumnStretch(k, 1);
    }
    layout->addLayout(frames, 1);
    setCentralWidget(central);

    QMenu* file = menuBar()->addMenu("&File");
    QAction* print = file->addAction("Print Graphs");
    print->setObjectName("menu_PrintGraphs");
    connect(print, &QAction::triggered, this, [this] {
        PrintDisplays(this, windowTitle(), {form_.Graph1, form_.Graph2, form_.Picture1, form_.Picture2});
    });
    resize(1100, 680);
    FromForm();
}

void HrvGeoWindow::ToForm() {
    BoxesToOptions(boxes_, form_.options);
}

void HrvGeoWindow::FromForm() {
    OptionsToBoxes(form_.options, boxes_);
    graph1_->Follow(form_.Graph1);
    graph2_->Follow(form_.Graph2);
    picture1_->Follow(form_.Picture1);
    picture2_->Follow(form_.Picture2);
}

}  // namespace ardel
