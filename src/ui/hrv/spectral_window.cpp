#include "ui/hrv/spectral_window.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "hrv/window_functions.h"
#include "script/forms.h"
#include "ui/qt_text.h"

namespace ardel {

namespace {

// A spin button: an up and a down arrow that run NAMEUp and NAMEDown.
QWidget* SpinButton(const char* name, const QString& tip, const std::function<void(bool)>& spin) {
    auto* box = new QWidget;
    box->setObjectName(name);
    box->setToolTip(tip);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (const bool up : {true, false}) {
        auto* b = new QToolButton;
        b->setObjectName(QString(name) + (up ? "Up" : "Down"));
        b->setArrowType(up ? Qt::UpArrow : Qt::DownArrow);
        b->setAutoRepeat(true);
        QObject::connect(b, &QToolButton::clicked, box, [spin, up] { spin(up); });
        layout->addWidget(b);
    }
    return box;
}

}  // namespace

HrvSpectralWindow::HrvSpectralWindow(Forms& forms, RunByName run, QWidget* parent)
    : HrvFormWindow(forms.hrvSpectralShown, std::move(run), parent), form_(forms.hrvSpectral) {
    setObjectName("HRVSpectral");
    setWindowTitle(Q(hrv::kSpectralCaption));
    auto* central = new QWidget;
    auto* layout = new QHBoxLayout(central);

    auto* options = new QGroupBox("Options");
    auto* grid = new QGridLayout(options);
    int row = AddIntervalOptionBoxes(grid, 0, boxes_);
    combo5_ = new QComboBox;
    combo5_->setObjectName("Combo5");
    combo5_->setEditable(true);
    combo5_->setInsertPolicy(QComboBox::NoInsert);
    for (std::string_view name : hrv::kWindowNames) combo5_->addItem(Q(name));
    grid->addWidget(new QLabel("Windowsing Function for FFT"), row, 0);
    grid->addWidget(combo5_, row++, 1);
    AddOptionButtons(layout, options, grid, row, "HRVSpectral");

    auto displayRun = [this](const std::string& name) { Run(name); };
    graph1_ = new HrvDisplay("Graph1", "HRVSpectral.Graph1.", displayRun);
    graph2_ = new HrvDisplay("Graph2", "HRVSpectral.Graph2.", displayRun);
    picture2_ = new HrvDisplay("Picture2", "HRVSpectral.Picture2.", displayRun);
    cwGraph1_ = new HrvDisplay("CWGraph1", "HRVSpectral.CWGraph1.", displayRun);
    auto* displays = new QGridLayout;
    displays->addWidget(graph1_, 0, 0);
    displays->addWidget(graph2_, 0, 1);
    displays->addWidget(picture2_, 1, 0);
    auto* spectrum = new QHBoxLayout;
    spectrum->addWidget(cwGraph1_, 1);
    auto* spins = new QVBoxLayout;
    spins->addWidget(new QLabel("X"));
    spins->addWidget(SpinButton("SpinButton1", "Frequency axis maximum: up doubles, down halves",
                                [this](bool up) { Run(up ? "HRVSpectral.SpinButton1Up" : "HRVSpectral.SpinButton1Down"); }));
    spins->addSpacing(12);
    spins->addWidget(new QLabel("Y"));
    spins->addWidget(SpinButton("SpinButton2", "Power axis maximum: up doubles, down halves",
                                [this](bool up) { Run(up ? "HRVSpectral.SpinButton2Up" : "HRVSpectral.SpinButton2Down"); }));
    spins->addStretch();
    spectrum->addLayout(spins);
    displays->addLayout(spectrum, 1, 1);
    for (int k = 0; k < 2; ++k) {
        displays->setRowStretch(k, 1);
        displays->setColumnStretch(k, 1);
    }
    layout->addLayout(displays, 1);
    setCentralWidget(central);

    QMenu* file = menuBar()->addMenu("&File");
    QAction* print = file->addAction("Print Graphs");
    print->setObjectName("menu_PrintGraphs");
    connect(print, &QAction::triggered, this, [this] {
        PrintDisplays(this, windowTitle(), {form_.Graph1, form_.Graph2, form_.Picture2, form_.CWGraph1});
    });
    resize(1100, 640);
    FromForm();
}

void HrvSpectralWindow::ToForm() {
    BoxesToOptions(boxes_, form_.options);
    form_.options.Windowing = S(combo5_->currentText());
}

void HrvSpectralWindow::FromForm() {
    OptionsToBoxes(form_.options, boxes_);
    combo5_->setCurrentText(Q(form_.options.Windowing));
    graph1_->Follow(form_.Graph1);
    graph2_->Follow(form_.Graph2);
    picture2_->Follow(form_.Picture2);
    cwGraph1_->Follow(form_.CWGraph1);
}

}  // namespace ardel
