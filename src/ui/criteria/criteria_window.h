// The Criteria window ("Criteria Search Events"): its tabs and controls, bound to the
// CriteriaForm both ways. Its buttons run their handlers by name through the main window.
#pragma once

#include <array>
#include <functional>
#include <string>

#include <QDialog>

#include "events/criteria_search.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace ardel {

class CriteriaWindow : public QDialog {
    Q_OBJECT
  public:
    // run runs a handler by name ("Criteria.Command1").
    CriteriaWindow(QWidget* parent, std::function<void(const std::string&)> run);

    // Widgets -> form, before a command.
    void Read(CriteriaForm& f) const;
    // Form -> widgets, after a command.
    void Show(const CriteriaForm& f);
    // Only the buttons' captions: what a running selection changes while it yields.
    void ShowCaptions(const CriteriaForm& f);

  private:
    QWidget* BuildSearchTab();
    QWidget* BuildRandomTab();
    QWidget* BuildEpisodicTab();
    QWidget* BuildBurstTab();
    QPushButton* Button(const char* name, const QString& caption);

    std::function<void(const std::string&)> run_;
    QTabWidget* tabs_ = nullptr;
    std::array<QComboBox*, kCriteriaCount> combo1_{};
    std::array<QComboBox*, kCriteriaCount> combo2_{};
    QCheckBox* check1_ = nullptr;
    QCheckBox* check2_ = nullptr;
    QCheckBox* check3_ = nullptr;
    QCheckBox* check4_ = nullptr;
    QCheckBox* check5_ = nullptr;
    QCheckBox* check6_ = nullptr;
    QCheckBox* check7_ = nullptr;
    QCheckBox* check8_ = nullptr;
    QComboBox* combo3_ = nullptr;
    QComboBox* combo4_ = nullptr;
    QComboBox* combo5_ = nullptr;
    QComboBox* combo6_ = nullptr;
    QComboBox* combo7_ = nullptr;
    QComboBox* combo8_ = nullptr;
    QLineEdit* text1_ = nullptr;
    QLineEdit* text2_ = nullptr;
    QLineEdit* text3_ = nullptr;
    QLineEdit* text4_ = nullptr;
    QLineEdit* text6_ = nullptr;
    QLineEdit* text7_ = nullptr;
    QPushButton* command2_ = nullptr;
};

}  // namespace ardel
