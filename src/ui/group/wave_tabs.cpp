#include "ui/group/wave_tabs.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include "group/ap_wave.h"
#include "group/grp_anal_form.h"
#include "group/multi_peak.h"
#include "group/nonstationary_noise.h"
#include "ui/qt_text.h"

namespace ardel {

namespace {

QStringList Numbers(int from, int to) {
    QStringList items;
    for (int k = from; k <= to; ++k) items << QString::number(k);
    return items;
}

QLabel* Note(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    return label;
}

}  // namespace

WaveTabBase::WaveTabBase(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : QWidget(parent), form_(form), run_(std::move(run)) {}

void WaveTabBase::Refresh() {
    refreshing_ = true;
    for (const auto& follow : followers_) follow();
    refreshing_ = false;
}

QLineEdit* WaveTabBase::Text(const char* name, std::string& field) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    connect(edit, &QLineEdit::textEdited, this, [&field](const QString& t) { field = S(t); });
    followers_.push_back([edit, &field] {
        if (S(edit->text()) != field) edit->setText(Q(field));
    });
    return edit;
}

QComboBox* WaveTabBase::Combo(const char* name, const QStringList& items, std::string& field) {
    auto* combo = new QComboBox;
    combo->setObjectName(name);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->addItems(items);
    connect(combo, &QComboBox::currentTextChanged, this, [this, &field](const QString& t) {
        if (!refreshing_) field = S(t);
    });
    followers_.push_back([combo, &field] {
        if (S(combo->currentText()) != field) combo->setCurrentText(Q(field));
    });
    return combo;
}

QCheckBox* WaveTabBase::Check(const char* name, const QString& caption, bool& field) {
    auto* box = new QCheckBox(caption);
    box->setObjectName(name);
    connect(box, &QCheckBox::toggled, this, [this, &field](bool on) {
        if (!refreshing_) field = on;
    });
    followers_.push_back([box, &field] {
        if (box->isChecked() != field) box->setChecked(field);
    });
    return box;
}

QPushButton* WaveTabBase::Button(const char* name, const std::string& handler,
                                 const std::string& caption) {
    auto* button = new QPushButton;
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, [this, handler] { run_(handler); });
    followers_.push_back([button, &caption] { button->setText(Q(caption)); });
    return button;
}

QLabel* WaveTabBase::Label(const char* name, const std::string& field) {
    auto* label = new QLabel;
    label->setObjectName(name);
    followers_.push_back([label, &field] { label->setText(Q(field)); });
    return label;
}

ApWaveTab::ApWaveTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : WaveTabBase(form, std::move(run), parent) {
    setObjectName("APWaveTab");
    auto* combo12 = Combo("Combo12",
                          {"90-50%", "90-37%", "90-20%", "90-10%", "90-0%", "80-50%", "80-37%",
                           "80-20%", "80-10%", "80-0%"},
                          form_.Combo12);
    combo12->setEditable(false);
    auto* rows = new QFormLayout;
    rows->addRow("# points for Smoothing", Text("Text6", form_.Text6));
    rows->addRow("Width calculation at a constant above threshold",
                 Combo("Combo14", Numbers(1, 10) << "15" << "20" << "25" << "30" << "40" << "50",
                       form_.Combo14));
    rows->addRow("Decay Calculation by %", combo12);
    rows->addRow(Check("Check2", "Use threshold for baseline", form_.Check2));
    auto* slope = new QGroupBox("Slope (dV/dt) Calculation");
    auto* slopeRows = new QFormLayout(slope);
    slopeRows->addRow("Ym level (mV)", Combo("Combo19", Numbers(1, 20), form_.Combo19));
    slopeRows->addRow("Yt level (mV)", Combo("Combo20", Numbers(0, 20), form_.Combo20));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(Button("Command17", "GrpAnal.Command17", form_.Command17));
    buttons->addWidget(Button("Command4", "GrpAnal.Command4", form_.Command4));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(rows);
    layout->addWidget(slope);
    layout->addLayout(buttons);
    layout->addWidget(Note("AP Wave Analysis 1 uses 3rd differential to calculate threshold, "
                           "whereas 2 uses heavy filtering and 2nd differential of the current "
                           "trace."));
    layout->addStretch();
    Refresh();
}

NoiseTab::NoiseTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : WaveTabBase(form, std::move(run), parent) {
    setObjectName("NoiseTab");
    auto* combo21 = Combo("Combo21", {"Macroscopic Currents", "Synaptic Currents"}, form_.Combo21);
    combo21->setEditable(false);
    QStringList levels;  // highest confidence first
    for (int k = 99; k >= 90; --k) levels << QString::number(k);
    auto* rows = new QFormLayout;
    rows->addRow("Recording Type", combo21);
    rows->addRow("# of consecutive traces to average",
                 Combo("Combo18", Numbers(2, 20) << "All", form_.Combo18));
    rows->addRow("# of amplitude bins", Text("Text4", form_.Text4));
    rows->addRow(Check("Check5", "Substract Baseline Variance", form_.Check5));
    rows->addRow(Check("Check6", "Include Offset in Fitting", form_.Check6));
    auto* reject = new QHBoxLayout;
    reject->addWidget(Check("Check12", "Auto-rejection: confidence interval (%)", form_.Check12));
    reject->addWidget(Combo("Combo30", levels, form_.Combo30));
    reject->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(rows);
    layout->addLayout(reject);
    layout->addWidget(Button("Command18", "GrpAnal.Command18", form_.Command18));
    layout->addWidget(Label("Label10", form_.Label10));
    layout->addWidget(Label("Label11", form_.Label11));
    layout->addWidget(Note("Var(t)=i*I(t)-I(t)^2/N+Offset\nPopen,peak=Ipeak/(iN)"));
    layout->addStretch();
    Refresh();
}

MultiPeakTab::MultiPeakTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : WaveTabBase(form, std::move(run), parent) {
    setObjectName("MultiPeakTab");
    auto* rows = new QFormLayout;
    rows->addRow("Number of points to avoid duplicate peak",
                 Combo("Combo22", Numbers(1, 20), form_.Combo22));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Note("This function locates multiple peaks by finding the place where the "
                           "1st differential=0.  Please place the two cursors between the first "
                           "and last peak that you would like to analyze and press Start "
                           "button."));
    layout->addLayout(rows);
    layout->addWidget(Button("Command16", "GrpAnal.Command16", form_.Command16));
    layout->addStretch();
    Refresh();
}

void AddWaveMenuItems(QMenu* menu, const RunHandler& run) {
    const std::pair<const char*, const char*> items[] = {
        {"menu_APWaveAnalysis", "Old AP Wave Analysis"},
        {"menu_APAnalysis", "New AP Wave Analysis"},
        {"menu_multipeak", "Multi Peak Analysis"},
        {"menu_CopyVMPlotData", "Copy Variance-Mean Plot Data"},
    };
    for (const auto& [name, caption] : items) {
        QAction* action = menu->addAction(caption);
        action->setObjectName(name);
        QObject::connect(action, &QAction::triggered, menu,
                         [run, handler = std::string("GrpAnal.") + name] { run(handler); });
    }
}

}  // namespace ardel
