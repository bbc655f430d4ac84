// The group window's tabs "AP Wave Analysis", "Non-Stationary Noise" and "Multi Peak": each a
// self-contained widget bound both ways to GrpAnalForm, whose buttons run their handlers by name.
// Controls carry their form names as objectName ("Combo12", "Command17").
#pragma once

#include <string>

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

// What the tabs share: the form, the run callback, and the guard that keeps widget changes
// made by Refresh() from being written back.
class WaveTabBase : public QWidget {
    Q_OBJECT
  public:
    WaveTabBase(group::GrpAnalForm& form, RunHandler run, QWidget* parent);

  protected:
    QLineEdit* Text(const char* name, std::string& field);
    QComboBox* Combo(const char* name, const QStringList& items, std::string& field);
    QCheckBox* Check(const char* name, const QString& caption, bool& field);
    QPushButton* Button(const char* name, const std::string& handler);
    void SetText(QLineEdit* edit, const std::string& text);
    void SetCombo(QComboBox* combo, const std::string& text);
    void SetCheck(QCheckBox* box, bool value);

    group::GrpAnalForm& form_;
    RunHandler run_;
    // Set until the derived tab's first Refresh(): filling the lists must not overwrite the
    // form.
    bool refreshing_ = true;
};

class ApWaveTab : public WaveTabBase {
    Q_OBJECT
  public:
    ApWaveTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent = nullptr);
    // The widgets follow the form.
    void Refresh();

  private:
    QLineEdit* text6_;
    QComboBox *combo14_, *combo12_, *combo19_, *combo20_;
    QCheckBox* check2_;
    QPushButton *command17_, *command4_;
};

class NoiseTab : public WaveTabBase {
    Q_OBJECT
  public:
    NoiseTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent = nullptr);
    void Refresh();

  private:
    QComboBox *combo21_, *combo18_, *combo30_;
    QLineEdit* text4_;
    QCheckBox *check5_, *check6_, *check12_;
    QPushButton* command18_;
    QLabel *label10_, *label11_;
};

class MultiPeakTab : public WaveTabBase {
    Q_OBJECT
  public:
    MultiPeakTab(group::GrpAnalForm& form, RunHandler run, QWidget* parent = nullptr);
    void Refresh();

  private:
    QComboBox* combo22_;
    QPushButton* command16_;
};

// The group window's menu items of these analyses ("Old AP Wave Analysis", "New AP Wave
// Analysis", "Multi Peak Analysis", "Copy Variance-Mean Plot Data"), each QAction named by its
// handler without the form prefix.
void AddWaveMenuItems(QMenu* menu, const RunHandler& run);

}  // namespace ardel
