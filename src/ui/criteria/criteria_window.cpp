#include "ui/criteria/criteria_window.h"

#include <algorithm>

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "ui/qt_text.h"

namespace ardel {

namespace {

// A box that offers its list and takes any typed text.
QComboBox* Combo(const QString& name, const std::vector<std::string>& items) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->setEditable(true);
    c->setInsertPolicy(QComboBox::NoInsert);
    for (const std::string& item : items) c->addItem(Q(item));
    c->setMinimumWidth(100);
    c->setMaximumWidth(140);
    return c;
}

QCheckBox* Check(const char* name, const QString& caption) {
    auto* c = new QCheckBox(caption);
    c->setObjectName(name);
    return c;
}

QLineEdit* Text(const char* name) {
    auto* t = new QLineEdit;
    t->setObjectName(name);
    t->setMaximumWidth(110);
    return t;
}

void SetText(QComboBox* c, const std::string& text) {
    if (c->currentText() != Q(text)) c->setCurrentText(Q(text));
}

void SetText(QLineEdit* t, const std::string& text) {
    if (t->text() != Q(text)) t->setText(Q(text));
}

}  // namespace

CriteriaWindow::CriteriaWindow(QWidget* parent, std::function<void(const std::string&)> run)
    : QDialog(parent), run_(std::move(run)) {
    setObjectName("Criteria");
    setWindowTitle("Criteria Search Events");
    setModal(false);
    tabs_ = new QTabWidget;
    tabs_->setObjectName("SSTab1");
    tabs_->addTab(BuildSearchTab(), "Criteria Search");
    tabs_->addTab(BuildRandomTab(), "Random Selection");
    tabs_->addTab(BuildEpisodicTab(), "Episodic Grouping");
    tabs_->addTab(BuildBurstTab(), "Bursts");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);
    // Wide enough for every tab's title.
    resize(std::max(560, sizeHint().width()), sizeHint().height());
    // The two ways of numbering episodes exclude each other.
    connect(check7_, &QCheckBox::toggled, this, [this](bool on) {
        if (on) check8_->setChecked(false);
    });
    connect(check8_, &QCheckBox::toggled, this, [this](bool on) {
        if (on) check7_->setChecked(false);
    });
}

QPushButton* CriteriaWindow::Button(const char* name, const QString& caption) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    const std::string handler = std::string("Criteria.") + name;
    connect(b, &QPushButton::clicked, this, [this, handler] { run_(handler); });
    return b;
}

QWidget* CriteriaWindow::BuildSearchTab() {
    auto* w = new QWidget;
    auto* layout = new QVBoxLayout(w);
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel("Greater than"), 0, 1);
    grid->addWidget(new QLabel("Smaller than"), 0, 2);
    for (int k = 0; k < kCriteriaCount; ++k) {
        const QString n = QString("(%1)").arg(k);
        if (k == 5) {
            // The interval is the one criterion that is off unless checked.
            check5_ = Check("Check5", Q(CriteriaLabel(k)));
            grid->addWidget(check5_, k + 1, 0);
        } else {
            grid->addWidget(new QLabel(Q(CriteriaLabel(k))), k + 1, 0);
        }
        combo1_[std::size_t(k)] = Combo("Combo1" + n, CriteriaBoundList(k, false));
        combo2_[std::size_t(k)] = Combo("Combo2" + n, CriteriaBoundList(k, true));
        grid->addWidget(combo1_[std::size_t(k)], k + 1, 1);
        grid->addWidget(combo2_[std::size_t(k)], k + 1, 2);
    }
    layout->addLayout(grid);
    auto* form = new QFormLayout;
    combo3_ = Combo("Combo3", GroupNumberList());
    form->addRow("Mark selection as Group #", combo3_);
    check1_ = Check("Check1", "Mark the rest as Group #");
    combo4_ = Combo("Combo4", GroupNumberList());
    form->addRow(check1_, combo4_);
    layout->addLayout(form);
    layout->addWidget(Button("Command1", "&Start Search"));
    layout->addStretch(1);
    return w;
}

QWidget* CriteriaWindow::BuildRandomTab() {
    auto* w = new QWidget;
    auto* layout = new QVBoxLayout(w);
    auto* form = new QFormLayout;
    text1_ = Text("Text1");
    form->addRow("Number of events to select:", text1_);
    combo5_ = Combo("Combo5", GroupNumberList());
    form->addRow("Mark selection as Group #", combo5_);
    check3_ = Check("Check3", "Unmark the group before seletion");
    form->addRow(check3_);
    check4_ = Check("Check4", "Select only from ungrouped events");
    form->addRow(check4_);
    check2_ = Check("Check2", "Mark the rest as Group #");
    combo6_ = Combo("Combo6", GroupNumberList());
    form->addRow(check2_, combo6_);
    layout->addLayout(form);
    command2_ = Button("Command2", Q(kStartSelection));
    layout->addWidget(command2_);
    layout->addStretch(1);
    return w;
}

QWidget* CriteriaWindow::BuildEpisodicTab() {
    auto* w = new QWidget;
    auto* layout = new QVBoxLayout(w);
    auto* note = new QLabel("Please sort events by time before proceeding with this function");
    note->setWordWrap(true);
    layout->addWidget(note);
    auto* form = new QFormLayout;
    text2_ = Text("Text2");
    form->addRow("Duration of each episode (ms):", text2_);
    text3_ = Text("Text3");
    form->addRow("Start time in an episode to group an event (ms):", text3_);
    text4_ = Text("Text4");
    form->addRow("End time in an episode to group an event (ms):", text4_);
    combo7_ = Combo("Combo7", GroupNumberList());
    form->addRow("Mark selection as Group #", combo7_);
    check7_ = Check("Check7", "Use Episode Number for Group # (Episodes <= 255)");
    form->addRow(check7_);
    check8_ = Check("Check8", "Group as Bursting Events (Episodes > 255)");
    form->addRow(check8_);
    check6_ = Check("Check6", "Mark the rest as Group #");
    combo8_ = Combo("Combo8", GroupNumberList());
    form->addRow(check6_, combo8_);
    layout->addLayout(form);
    layout->addWidget(Button("Command3", "Start"));
    layout->addStretch(1);
    return w;
}

QWidget* CriteriaWindow::BuildBurstTab() {
    auto* w = new QWidget;
    auto* layout = new QVBoxLayout(w);
    auto* form = new QFormLayout;
    text7_ = Text("Text7");
    form->addRow("Minimum number of consecutive events to consider as a burst:", text7_);
    text6_ = Text("Text6");
    form->addRow("Maximum inter-event-interval between two events (ms):", text6_);
    layout->addLayout(form);
    layout->addWidget(Button("Command4", "Start"));
    layout->addStretch(1);
    return w;
}

void CriteriaWindow::Read(CriteriaForm& f) const {
    for (std::size_t k = 0; k < std::size_t(kCriteriaCount); ++k) {
        f.Combo1[k] = S(combo1_[k]->currentText());
        f.Combo2[k] = S(combo2_[k]->currentText());
    }
    f.Check5 = check5_->isChecked();
    f.Combo3 = S(combo3_->currentText());
    f.Check1 = check1_->isChecked();
    f.Combo4 = S(combo4_->currentText());
    f.Text1 = S(text1_->text());
    f.Combo5 = S(combo5_->currentText());
    f.Check3 = check3_->isChecked();
    f.Check4 = check4_->isChecked();
    f.Check2 = check2_->isChecked();
    f.Combo6 = S(combo6_->currentText());
    f.Text2 = S(text2_->text());
    f.Text3 = S(text3_->text());
    f.Text4 = S(text4_->text());
    f.Combo7 = S(combo7_->currentText());
    f.Check7 = check7_->isChecked();
    f.Check8 = check8_->isChecked();
    f.Check6 = check6_->isChecked();
    f.Combo8 = S(combo8_->currentText());
    f.Text7 = S(text7_->text());
    f.Text6 = S(text6_->text());
    f.SSTab1 = tabs_->currentIndex();
}

void CriteriaWindow::Show(const CriteriaForm& f) {
    for (std::size_t k = 0; k < std::size_t(kCriteriaCount); ++k) {
        SetText(combo1_[k], f.Combo1[k]);
        SetText(combo2_[k], f.Combo2[k]);
    }
    check5_->setChecked(f.Check5);
    SetText(combo3_, f.Combo3);
    check1_->setChecked(f.Check1);
    SetText(combo4_, f.Combo4);
    SetText(text1_, f.Text1);
    SetText(combo5_, f.Combo5);
    check3_->setChecked(f.Check3);
    check4_->setChecked(f.Check4);
    check2_->setChecked(f.Check2);
    SetText(combo6_, f.Combo6);
    SetText(text2_, f.Text2);
    SetText(text3_, f.Text3);
    SetText(text4_, f.Text4);
    SetText(combo7_, f.Combo7);
    // Both set at once cannot be shown; the form's own rule keeps them apart.
    check7_->setChecked(f.Check7);
    check8_->setChecked(f.Check8 && !f.Check7);
    check6_->setChecked(f.Check6);
    SetText(combo8_, f.Combo8);
    SetText(text7_, f.Text7);
    SetText(text6_, f.Text6);
    if (f.SSTab1 >= 0 && f.SSTab1 < tabs_->count()) tabs_->setCurrentIndex(f.SSTab1);
    ShowCaptions(f);
}

void CriteriaWindow::ShowCaptions(const CriteriaForm& f) {
    if (command2_->text() != Q(f.Command2Caption)) command2_->setText(Q(f.Command2Caption));
}

}  // namespace ardel
