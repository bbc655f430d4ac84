// The heart rate variability windows of the desktop: "Heart Rate Variability Analysis: Time
// Domain Measurements" (the HRV form) and the scan for spurious RR intervals (HRVSpurious),
// bound both ways to their form structs. Every button, menu item and header click runs its
// handler by name through the command table; the graphs they open go to the graph frame.
#pragma once

#include <functional>
#include <string>

#include <QMainWindow>
#include <QObject>

#include "ui/run_handler.h"

class QCheckBox;
class QComboBox;
class QDialog;
class QLabel;
class QLineEdit;
class QRadioButton;
class QTableWidget;

namespace ardel {

struct Forms;
namespace hrv {
struct HrvForm;
}

class HrvWindow : public QMainWindow {
    Q_OBJECT
  public:
    HrvWindow(Forms& forms, RunHandler run, QWidget* parent = nullptr);
    // Shows or hides the window as Forms::hrvShown asks and lets the widgets follow the form.
    void FollowForms();
    void FromForm();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void ToForm();
    void Run(const std::string& handler);
    void BuildMenus();
    void PrintGrids();
    void PageSetup();

    Forms& forms_;
    hrv::HrvForm& form_;
    RunHandler run_;
    QComboBox* combo1_ = nullptr;
    QComboBox* combo2_ = nullptr;
    QComboBox* combo3_ = nullptr;
    QLineEdit* text1_ = nullptr;
    QCheckBox* check1_ = nullptr;
    QCheckBox* check2_ = nullptr;
    QLabel* label4_ = nullptr;
    QTableWidget* grid1_ = nullptr;
    QTableWidget* grid2_ = nullptr;
    bool following_ = false;  // widgets being set from the form: no handlers
};

// The spurious-interval scan: its option groups, kept but unused by the scan, and "Scan and
// Select".
class HrvSpuriousWindow : public QMainWindow {
    Q_OBJECT
  public:
    HrvSpuriousWindow(Forms& forms, RunHandler run, QWidget* parent = nullptr);
    void FollowForms();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    Forms& forms_;
    RunHandler run_;
    QRadioButton* option1_[3] = {};
    QRadioButton* option2_[3] = {};
};

// Both windows, owned by the main window: FollowForms after every command.
class HrvWindows : public QObject {
    Q_OBJECT
  public:
    HrvWindows(QWidget* parent, Forms& forms, RunHandler run);
    void FollowForms();

  private:
    HrvWindow* timeDomain_ = nullptr;
    HrvSpuriousWindow* spurious_ = nullptr;
};

}  // namespace ardel
