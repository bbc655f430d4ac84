// The "Data Analysis" window: the two samples, alpha, the Test button, the result grid and the
// graph, bound both ways to the engine's DataAnalysisForm. Every button, menu item and edit runs
// its handler by name through the command table.
#pragma once

#include <array>
#include <functional>
#include <string>

#include <QMainWindow>

#include "arrays/statistical_tests.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QRadioButton;
class QTableWidget;

namespace ardel {

struct Forms;

class DataAnalysisWindow : public QMainWindow {
    Q_OBJECT
  public:
    // run executes a handler of the command table by its name ("DataAnalysis.Command1").
    DataAnalysisWindow(Forms& forms, std::function<void(const std::string&)> run,
                       QWidget* parent = nullptr);
    // Shows or hides the window as Forms::dataAnalysisShown asks, and lets the widgets follow
    // the form. Call after every command.
    void FollowForms();
    // The widgets follow the form (after a command changed it).
    void FromForm();

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void ToForm();
    void Run(const std::string& handler);
    void CellEdited(int row, int column);
    void DrawGraph();
    void PrintForm();

    Forms& forms_;
    DataAnalysisForm& form_;
    std::function<void(const std::string&)> run_;
    std::array<std::array<QRadioButton*, 2>, 2> option_{};
    std::array<QComboBox*, 2> combo_{};
    std::array<std::array<QLineEdit*, 3>, 2> text_{};
    QLineEdit* text4_ = nullptr;
    QTableWidget* grid_ = nullptr;
    QLabel* graph_ = nullptr;
    std::uint64_t drawn_ = ~std::uint64_t(0);
    bool following_ = false;  // widgets being set from the form: no handlers
};

// The menu items that open the window with a test, and "View or Enter Data into Array"; each
// QAction carries its handler's name as objectName ("menu_ttest_paired").
void AddDataAnalysisItems(QMenu* menu, std::function<void(const std::string&)> run);

}  // namespace ardel
