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

QLineEdit* WaveTabBase::Text(const char* name, std::string& field) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    connect(edit, &QLineEdit::textEdited, this, [&field](const QString& t) { field = S(t); });
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
    return combo;
}

QCheckBox* WaveTabBase::Check(const char* name, const QString& caption, bool& field) {
    auto* box = new QCheckBox(caption);
    box->setObjectName(name);
    connect(box, &QCheckBox::toggled, this, [this, &field](bool on) {
        if (!refreshing_) field = on;
    });
    return box;
}

QPushButton* WaveTabBase::Button(const char* name, const std::string& handler) {
    auto* button = new QPushButton;
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, [this, handler] { run_(handler); });
    return button;
}

void WaveTabBase::SetText(QLineEdit* edit, const std::string& text) {
    if (S(edit->text()) != text) edit->setText(Q(text));
}

void WaveTabBase::SetCombo(QComboBox* combo, const std::string& text) {
    if (S(combo->currentText()) != text) combo->setCurrentText(Q(text));
}

void WaveTabBase::SetCheck(QCheckBox* box, bool value) {
    if (box->isChecked() != value) box->setChecked(value);
}

ApWaveTab::ApWaveTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : WaveTabBase(form, std::move(run), parent) {
    setObjectName("APWaveTab");
    text6_ = Text("Text6", form_.Text6);
    combo14_ = Combo("Combo14", Numbers(1, 10) << "15" << "20" << "25" << "30" << "40" << "50",
                     form_.Combo14);
    combo12_ = Combo("Combo12",
                     {"90-50%", "90-37%", "90-20%", "90-10%", "90-0%", "80-50%", "80-37%",
                      "80-20%", "80-10%", "80-0%"},
                     form_.Combo12);
    combo12_->setEditable(false);
    check2_ = Check("Check2", "Use threshold for baseline", form_.Check2);
    combo19_ = Combo("Combo19", Numbers(1, 20), form_.Combo19);
    combo20_ = Combo("Combo20", Numbers(0, 20), form_.Combo20);
    command17_ = Button("Command17", "GrpAnal.Command17");
    command4_ = Button("Command4", "GrpAnal.Command4");

    auto* rows = new QFormLayout;
    rows->addRow("# points for Smoothing", text6_);
    rows->addRow("Width calculation at a constant above threshold", combo14_);
    rows->addRow("Decay Calculation by %", combo12_);
    rows->addRow(check2_);
    auto* slope = new QGroupBox("Slope (dV/dt) Calculation");
    auto* slopeForm = new QFormLayout(slope);
    slopeForm->addRow("Ym level (mV)", combo19_);
    slopeForm->addRow("Yt level (mV)", combo20_);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(command17_);
    buttons->addWidget(command4_);
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

void ApWaveTab::Refresh() {
    refreshing_ = true;
    SetText(text6_, form_.Text6);
    SetCombo(combo14_, form_.Combo14);
    SetCombo(combo12_, form_.Combo12);
    SetCheck(check2_, form_.Check2);
    SetCombo(combo19_, form_.Combo19);
    SetCombo(combo20_, form_.Combo20);
    command17_->setText(Q(form_.Command17));
    command4_->setText(Q(form_.Command4));
    refreshing_ = false;
}

NoiseTab::NoiseTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : WaveTabBase(form, std::move(run), parent) {
    setObjectName("NoiseTab");
    combo21_ = Combo("Combo21", {"Macroscopic Currents", "Synaptic Currents"}, form_.Combo21);
    combo21_->setEditable(false);
    combo18_ = Combo("Combo18", Numbers(2, 20) << "All", form_.Combo18);
    text4_ = Text("Text4", form_.Text4);
    check5_ = Check("Check5", "Substract Baseline Variance", form_.Check5);
    check6_ = Check("Check6", "Include Offset in Fitting", form_.Check6);
    check12_ = Check("Check12", "Auto-rejection: confidence interval (%)", form_.Check12);
    QStringList levels;  // highest confidence first
    for (int k = 99; k >= 90; --k) levels << QString::number(k);
    combo30_ = Combo("Combo30", levels, form_.Combo30);
    command18_ = Button("Command18", "GrpAnal.Command18");
    label10_ = new QLabel;
    label10_->setObjectName("Label10");
    label11_ = new QLabel;
    label11_->setObjectName("Label11");

    auto* rows = new QFormLayout;
    rows->addRow("Recording Type", combo21_);
    rows->addRow("# of consecutive traces to average", combo18_);
    rows->addRow("# of amplitude bins", text4_);
    rows->addRow(check5_);
    rows->addRow(check6_);
    auto* reject = new QHBoxLayout;
    reject->addWidget(check12_);
    reject->addWidget(combo30_);
    reject->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(rows);
    layout->addLayout(reject);
    layout->addWidget(command18_);
    layout->addWidget(label10_);
    layout->addWidget(label11_);
    layout->addWidget(Note("Var(t)=i*I(t)-I(t)^2/N+Offset\nPopen,peak=Ipeak/(iN)"));
    layout->addStretch();
    Refresh();
}

void NoiseTab::Refresh() {
    refreshing_ = true;
    SetCombo(combo21_, form_.Combo21);
    SetCombo(combo18_, form_.Combo18);
    SetText(text4_, form_.Text4);
    SetCheck(check5_, form_.Check5);
    SetCheck(check6_, form_.Check6);
    SetCheck(check12_, form_.Check12);
    SetCombo(combo30_, form_.Combo30);
    command18_->setText(Q(form_.Command18));
    label10_->setText(Q(form_.Label10));
    label11_->setText(Q(form_.Label11));
    refreshing_ = false;
}

MultiPeakTab::MultiPeakTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : WaveTabBase(form, std::move(run), parent) {
    setObjectName("MultiPeakTab");
    combo22_ = Combo("Combo22", Numbers(1, 20), form_.Combo22);
    command16_ = Button("Command16", "GrpAnal.Command16");
    auto* rows = new QFormLayout;
    rows->addRow("Number of points to avoid duplicate peak", combo22_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Note("This function locates multiple peaks by finding the place where the "
                           "1st differential=0.  Please place the two cursors between the first "
                           "and last peak that you would like to analyze and press Start "
                           "button."));
    layout->addLayout(rows);
    layout->addWidget(command16_);
    layout->addStretch();
    Refresh();
}

void MultiPeakTab::Refresh() {
    refreshing_ = true;
    SetCombo(combo22_, form_.Combo22);
    command16_->setText(Q(form_.Command16));
    refreshing_ = false;
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
