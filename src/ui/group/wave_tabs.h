// The group window's tabs "AP Wave Analysis", "Non-Stationary Noise" and "Multi Peak": each a
// self-contained widget bound both ways to GrpAnalForm, whose buttons run their handlers by name.
// Controls carry their form names as objectName ("Combo12", "Command17").
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QWidget>

#include "ui/run_handler.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;

namespace ardel {

namespace group {
struct GrpAnalForm;
}

// What the tabs share: the form, the run callback, and each control bound to its field, so that
// Refresh() lets every widget follow the form.
class WaveTabBase : public QWidget {
    Q_OBJECT
  public:
    WaveTabBase(group::GrpAnalForm& form, RunHandler run, QWidget* parent);
    // The widgets follow the form (after a command changed it).
    void Refresh();

  protected:
    QLineEdit* Text(const char* name, std::string& field);
    QComboBox* Combo(const char* name, const QStringList& items, std::string& field);
    QCheckBox* Check(const char* name, const QString& caption, bool& field);
    // A button whose caption is the form's field and that runs the handler.
    QPushButton* Button(const char* name, const std::string& handler, const std::string& caption);
    QLabel* Label(const char* name, const std::string& field);

    group::GrpAnalForm& form_;
    RunHandler run_;

  private:
    std::vector<std::function<void()>> followers_;
    // Set while the widgets follow the form, and until the derived tab's first Refresh():
    // filling the lists must not overwrite the form.
    bool refreshing_ = true;
};

class ApWaveTab : public WaveTabBase {
    Q_OBJECT
  public:
    ApWaveTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent = nullptr);
};

class NoiseTab : public WaveTabBase {
    Q_OBJECT
  public:
    NoiseTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent = nullptr);
};

class MultiPeakTab : public WaveTabBase {
    Q_OBJECT
  public:
    MultiPeakTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent = nullptr);
};

// The group window's menu items of these analyses ("Old AP Wave Analysis", "New AP Wave
// Analysis", "Multi Peak Analysis", "Copy Variance-Mean Plot Data"), each QAction named by its
// handler without the form prefix.
void AddWaveMenuItems(QMenu* menu, const RunHandler& run);

}  // namespace ardel
