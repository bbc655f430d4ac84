#include "ui/group/fitting_tab.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/qt_text.h"

namespace ardel {

namespace {

QLabel* Caption(const char* text) {
    auto* l = new QLabel(text);
    l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return l;
}

}  // namespace

void FillFitMenu(QMenu* menu, const RunHandler& run) {
    const std::pair<const char*, const char*> entries[] = {
        {"GrpAnal.menu_simplex_exp(1)", "Fit Decay to 1 Exponential"},
        {"GrpAnal.menu_simplex_exp(2)", "Fit Decay to 2 Exponentials"},
        {"GrpAnal.menu_simplex_exp(3)", "Fit Decay to 3 Exponentials"},
        {"GrpAnal.menu_simplex_User", "Fit to User Defined Function"},
        {"GrpAnal.menu_extractcurvedata", "Copy Fitted Curve Data"},
        {"GrpAnal.menu_savecurvedata", "Save Fitted Curve Data..."},
    };
    for (const auto& [handler, caption] : entries) {
        if (std::string_view(handler) == "GrpAnal.menu_extractcurvedata") menu->addSeparator();
        QAction* a = menu->addAction(caption);
        a->setObjectName(handler);
        QObject::connect(a, &QAction::triggered, menu, [run, h = std::string(handler)] {
            if (run) run(h);
        });
    }
}

FittingTab::FittingTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent)
    : QWidget(parent), form_(form), run_(std::move(run)) {
    setObjectName("FittingTab");

    auto* fit = new QGroupBox("Fitting");
    auto* g = new QGridLayout(fit);
    int row = 0;
    auto add = [&](const char* caption, QWidget* w) {
        g->addWidget(Caption(caption), row, 0);
        g->addWidget(w, row++, 1);
    };
    add("Number of Exponentials", BindCombo("Combo9", form_.Combo9, {"1", "2", "3"}));
    add("Fit Range", BindCombo("Combo8", form_.Combo8,
                               {"Peak to End", "Decay 10%-90%", "Decay 20%-80%", "Custom Range"}));
    add("Max Iterations", BindCombo("Combo11", form_.Combo11, {"100", "500", "1000", "5000", "10000"}));
    add("Tolerance", BindText("Text5", form_.Text5));
    add("Rise time:", BindComboIndex("Combo29", form_.Combo29, {"10-90%", "20-80%", "30-70%"}));
    g->addWidget(BindCheck("Check3", "Include Offset", form_.Check3), row, 0);
    g->addWidget(BindCheck("Check4", "Fix Amplitude", form_.Check4), row++, 1);
    g->addWidget(BindCheck("Check16", "Calculate Diff. Area from Fit", form_.Check16), row++, 0, 1, 2);

    auto* guess = new QGroupBox("Initial Guesses");
    auto* gg = new QGridLayout(guess);
    gg->addWidget(BindCheck("UseGuess", "Use Initial Guesses", form_.UseGuess), 0, 0, 1, 4);
    for (int k = 0; k < 3; ++k) {
        gg->addWidget(new QLabel(QString("Tau%1").arg(k + 1)), k + 1, 0);
        gg->addWidget(BindText(QString("Tau(%1)").arg(k), form_.Tau[std::size_t(k)]), k + 1, 1);
        gg->addWidget(new QLabel(QString("A%1").arg(k + 1)), k + 1, 2);
        gg->addWidget(BindText(QString("Amp(%1)").arg(k), form_.Amp[std::size_t(k)]), k + 1, 3);
    }
    gg->addWidget(Button("Command11", "Use Last Fit", "GrpAnal.Command11"), 4, 0, 1, 4);

    auto* reject = new QGroupBox("Quality");
    auto* rg = new QGridLayout(reject);
    rg->addWidget(BindCheck("Check13", "Auto-reject", form_.Check13), 0, 0);
    rg->addWidget(Caption("Minimum R-sqr"), 0, 1);
    rg->addWidget(BindCombo("Combo10", form_.Combo10, group::kMinimumRSquaredList), 0, 2);
    rg->addWidget(Button("Command19", "Compare Fits", "GrpAnal.Command19"), 1, 0);
    rg->addWidget(Caption("Criterion: Change in R-sqr (%)"), 1, 1);
    rg->addWidget(BindCombo("Combo31", form_.Combo31, group::kRSquaredChangeList), 1, 2);
    rg->addWidget(BindCheck("Check14", "Regroup for 2- expoential trace", form_.Check14), 2, 0);
    rg->addWidget(Caption("Group #:"), 2, 1);
    std::vector<std::string> groups;
    for (int k = 1; k <= 20; ++k) groups.push_back(std::to_string(k));
    rg->addWidget(BindCombo("Combo32", form_.Combo32, groups), 2, 2);

    auto* start = Button("Command2", "Start Fitting", "GrpAnal.Command2");
    refreshers_.push_back([this, start] { start->setText(Q(form_.Command2)); });

    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    top->addWidget(fit);
    top->addWidget(guess);
    layout->addLayout(top);
    layout->addWidget(reject);
    layout->addWidget(start);
    layout->addWidget(BindLabel("Label10", form_.Label10));
    layout->addWidget(BindLabel("Label11", form_.Label11));
    layout->addStretch();
    Refresh();
}

void FittingTab::Refresh() {
    refreshing_ = true;
    for (const auto& r : refreshers_) r();
    refreshing_ = false;
}

QComboBox* FittingTab::BindCombo(const char* name, std::string& field,
                                 const std::vector<std::string>& items) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->setEditable(true);
    c->setInsertPolicy(QComboBox::NoInsert);
    // A combo beside a long caption is squeezed to its arrow unless it asks for room.
    c->setMinimumContentsLength(3);
    c->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const auto& item : items) c->addItem(Q(item));
    connect(c, &QComboBox::currentTextChanged, this, [this, &field](const QString& text) {
        if (!refreshing_) field = S(text);
    });
    refreshers_.push_back([c, &field] {
        if (c->currentText() != Q(field)) c->setCurrentText(Q(field));
    });
    return c;
}

QComboBox* FittingTab::BindComboIndex(const char* name, int& field,
                                      const std::vector<std::string>& items) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    for (const auto& item : items) c->addItem(Q(item));
    connect(c, &QComboBox::currentIndexChanged, this, [this, &field](int index) {
        if (!refreshing_ && index >= 0) field = index;
    });
    refreshers_.push_back([c, &field] { c->setCurrentIndex(field); });
    return c;
}

QCheckBox* FittingTab::BindCheck(const char* name, const char* caption, bool& field) {
    auto* c = new QCheckBox(caption);
    c->setObjectName(name);
    connect(c, &QCheckBox::toggled, this, [this, &field](bool on) {
        if (!refreshing_) field = on;
    });
    refreshers_.push_back([c, &field] { c->setChecked(field); });
    return c;
}

QLineEdit* FittingTab::BindText(const QString& name, std::string& field) {
    auto* t = new QLineEdit;
    t->setObjectName(name);
    t->setMaximumWidth(90);
    connect(t, &QLineEdit::textEdited, this, [this, &field](const QString& text) {
        if (!refreshing_) field = S(text);
    });
    refreshers_.push_back([t, &field] {
        if (t->text() != Q(field)) t->setText(Q(field));
    });
    return t;
}

QPushButton* FittingTab::Button(const char* name, const char* caption, std::string handler) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    connect(b, &QPushButton::clicked, this, [this, handler = std::move(handler)] {
        if (run_) run_(handler);
    });
    return b;
}

QLabel* FittingTab::BindLabel(const char* name, const std::string& field) {
    auto* l = new QLabel;
    l->setObjectName(name);
    refreshers_.push_back([l, &field] {
        l->setText(Q(field));
        l->setVisible(!field.empty());
    });
    return l;
}

}  // namespace ardel
