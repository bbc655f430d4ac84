#include "ui/arrays/math_operation_dialog.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace ardel {

namespace {

QComboBox* List(const QString& name, const std::vector<std::string>& items) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    for (const auto& item : items) c->addItem(QString::fromStdString(item));
    return c;
}

}  // namespace

MathOperationDialog::MathOperationDialog(MathOperationForm& form,
                                         std::function<void(const std::string&)> run,
                                         QWidget* parent)
    : QDialog(parent), form_(form), run_(std::move(run)) {
    setObjectName("MathOperation");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel("Select operands, operation, and destination."));

    auto* grid = new QGridLayout;
    const char* operandTitles[2] = {"Operand 1", "Operand 2"};
    for (int k = 0; k < 2; ++k) {
        auto* box = new QGroupBox(operandTitles[k]);
        auto* inner = new QGridLayout(box);
        combo1_[std::size_t(k)] = List(QString("Combo1(%1)").arg(k), kMathOperands);
        text1_[std::size_t(k)] = new QLineEdit;
        text1_[std::size_t(k)]->setObjectName(QString("Text1(%1)").arg(k));
        constantLabel_[std::size_t(k)] = new QLabel("Constant:");
        constantLabel_[std::size_t(k)]->setObjectName(QString("Label3(%1)").arg(k));
        inner->addWidget(combo1_[std::size_t(k)], 0, 0, 1, 2);
        inner->addWidget(constantLabel_[std::size_t(k)], 1, 0);
        inner->addWidget(text1_[std::size_t(k)], 1, 1);
        grid->addWidget(box, 0, k == 0 ? 0 : 2);
        connect(combo1_[std::size_t(k)], &QComboBox::activated, this, [this, k] {
            Run("MathOperation.Combo1(" + std::to_string(k) + ")");
        });
        connect(text1_[std::size_t(k)], &QLineEdit::textEdited, this, [this] { ToForm(); });
    }
    auto* operation = new QGroupBox("Operation");
    auto* opLayout = new QVBoxLayout(operation);
    combo2_ = List("Combo2", kMathOperations);
    label5_ = new QLabel;
    label5_->setObjectName("Label5");
    label5_->setAlignment(Qt::AlignCenter);
    opLayout->addWidget(combo2_);
    opLayout->addWidget(label5_);
    grid->addWidget(operation, 0, 1);
    connect(combo2_, &QComboBox::activated, this, [this] { Run("MathOperation.Combo2"); });
    layout->addLayout(grid);

    auto* destination = new QHBoxLayout;
    destination->addWidget(new QLabel("Put the results in"));
    combo3_ = List("Combo3", kMathDestinations);
    connect(combo3_, &QComboBox::activated, this, [this] { ToForm(); });
    destination->addWidget(combo3_);
    destination->addStretch();
    auto* calculate = new QPushButton("Caculate");
    calculate->setObjectName("Command2");
    calculate->setDefault(true);
    auto* cancel = new QPushButton("Cancel");
    cancel->setObjectName("Command1");
    destination->addWidget(calculate);
    destination->addWidget(cancel);
    layout->addLayout(destination);
    connect(calculate, &QPushButton::clicked, this, [this] { Run("MathOperation.Command2"); });
    connect(cancel, &QPushButton::clicked, this, [this] {
        Run("MathOperation.Command1");
        hide();
    });
    FromForm();
}

void MathOperationDialog::Run(const std::string& handler) {
    if (following_) return;
    ToForm();
    if (run_) run_(handler);
    FromForm();
}

void MathOperationDialog::ToForm() {
    if (following_) return;
    for (std::size_t k = 0; k < 2; ++k) {
        form_.Combo1[k] = combo1_[k]->currentIndex();
        form_.Text1[k] = text1_[k]->text().toStdString();
    }
    form_.Combo2 = combo2_->currentIndex();
    form_.Combo3 = combo3_->currentIndex();
}

void MathOperationDialog::FromForm() {
    following_ = true;
    setWindowTitle(QString::fromStdString(form_.Caption));
    for (std::size_t k = 0; k < 2; ++k) {
        combo1_[k]->setCurrentIndex(form_.Combo1[k]);
        text1_[k]->setText(QString::fromStdString(form_.Text1[k]));
        text1_[k]->setVisible(form_.Text1Visible[k]);
        constantLabel_[k]->setVisible(form_.Text1Visible[k]);
    }
    combo1_[1]->setEnabled(form_.Combo1Enabled1);
    combo2_->setCurrentIndex(form_.Combo2);
    combo3_->setCurrentIndex(form_.Combo3);
    label5_->setText(QString::fromStdString(form_.Label5));
    following_ = false;
}

}  // namespace ardel
