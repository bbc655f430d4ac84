// The "Mathematical Operation" form. Its widgets are bound both ways to the engine's
// MathOperationForm; every button and list change runs its handler by name.
#pragma once

#include <array>
#include <functional>
#include <string>

#include <QDialog>

#include "arrays/math_operation.h"

class QComboBox;
class QLabel;
class QLineEdit;

namespace ardel {

class MathOperationDialog : public QDialog {
    Q_OBJECT
  public:
    // run executes a handler of the command table by its name ("MathOperation.Command2").
    MathOperationDialog(MathOperationForm& form, std::function<void(const std::string&)> run,
                        QWidget* parent = nullptr);
    // The widgets follow the form (after a command changed it).
    void FromForm();

  private:
    void ToForm();
    void Run(const std::string& handler);

    MathOperationForm& form_;
    std::function<void(const std::string&)> run_;
    std::array<QComboBox*, 2> combo1_{};
    std::array<QLineEdit*, 2> text1_{};
    std::array<QLabel*, 2> constantLabel_{};
    QComboBox* combo2_ = nullptr;
    QComboBox* combo3_ = nullptr;
    QLabel* label5_ = nullptr;
    bool following_ = false;  // widgets being set from the form: no handlers
};

}  // namespace ardel
