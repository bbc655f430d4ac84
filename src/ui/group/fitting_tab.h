// The curve fitting tab of the group window: every control by its label, bound both ways to the
// fitting fields of GrpAnalForm. The buttons run their handlers by name.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QWidget>

#include "group/grp_anal_form.h"
#include "ui/run_handler.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;

namespace ardel {

class FittingTab : public QWidget {
    Q_OBJECT
  public:
    FittingTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent = nullptr);
    // The widgets follow the form (after a command changed it).
    void Refresh();

  private:
    QComboBox* BindCombo(const char* name, std::string& field, const std::vector<std::string>& items);
    QComboBox* BindComboIndex(const char* name, int& field, const std::vector<std::string>& items);
    QCheckBox* BindCheck(const char* name, const char* caption, bool& field);
    QLineEdit* BindText(const QString& name, std::string& field);
    QPushButton* Button(const char* name, const char* caption, std::string handler);
    QLabel* BindLabel(const char* name, const std::string& field);

    group::GrpAnalForm& form_;
    RunHandler run_;
    std::vector<std::function<void()>> refreshers_;
    bool refreshing_ = false;  // widgets being set from the form: no writes back
};

// The window's fit menu: the three decay fits, the user-defined stub and the curve export.
void FillFitMenu(QMenu* menu, const RunHandler& run);

}  // namespace ardel
