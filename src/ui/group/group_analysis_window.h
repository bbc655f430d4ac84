// The "Group Analysis and Curve Fitting" window (GrpAnal): a tab widget whose first tab is the
// trace display with every control by its name, the drawing area, the trace menu and the
// window's menus. The other tabs and the results grid are added by their own files through
// AddTab and SetResultsGrid. Widgets are bound to GrpAnalForm both ways; every button, menu item
// and key runs its handler by name through the command table.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include <QMainWindow>

class QCheckBox;
class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QRadioButton;
class QSlider;
class QTabWidget;
class QTimer;
class QToolButton;
class QVBoxLayout;
class QWidget;

namespace ardel {

struct Forms;
struct Session;
class GroupPicture;

namespace group {
struct GroupWindow;
}

class GroupAnalysisWindow : public QMainWindow {
    Q_OBJECT
  public:
    // run executes a handler of the command table by its name ("GrpAnal.Command1").
    GroupAnalysisWindow(Session& session, Forms& forms, std::function<void(const std::string&)> run,
                        QWidget* parent = nullptr);

    // A further tab of the window, after the display tab. sstab is the tab's number as the
    // form counts it (GrpAnalForm::SSTab1); refresh lets its widgets follow the form.
    void AddTab(QWidget* tab, const QString& title, int sstab, std::function<void()> refresh);
    // Lets another part of the window (the results grid) follow the form on every Refresh.
    void AddRefresher(std::function<void()> refresh) { refreshers_.push_back(std::move(refresh)); }
    // The results grid, below the tabs and visible on every tab. Replaces one set before.
    void SetResultsGrid(QWidget* grid);
    // Moves the window so that its frame lies on the screen where it can.
    void KeepOnScreen();
    // The widgets follow the form and the picture repaints.
    void Refresh();
    // Shows or hides the window as GroupWindow::shown asks, then Refresh. Call after every
    // command.
    void FollowForms();
    // The drawing area, for pictures and tests.
    GroupPicture* Picture() const { return picture_; }
    QTabWidget* Tabs() const { return tabs_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* BuildDisplayTab();
    void BuildMenus();
    void ToForm();
    void Run(const std::string& handler);
    void ShowTraceMenu(QPoint at);
    void CopyPicture();
    void SavePicture();
    void PrintPicture();

    Session& session_;
    group::GroupWindow& window_;
    std::function<void(const std::string&)> run_;
    QTabWidget* tabs_ = nullptr;
    QVBoxLayout* resultsHolder_ = nullptr;
    QWidget* resultsGrid_ = nullptr;
    GroupPicture* picture_ = nullptr;
    std::array<QRadioButton*, 2> option2_{};
    QComboBox *combo1_ = nullptr, *combo2_ = nullptr, *combo3_ = nullptr, *combo4_ = nullptr,
              *combo5_ = nullptr, *combo6_ = nullptr, *combo7_ = nullptr;
    QCheckBox *ckBaseline_ = nullptr, *check10_ = nullptr, *check1_ = nullptr, *check15_ = nullptr;
    QSlider* slider1_ = nullptr;
    QLabel *label6_ = nullptr, *lbCursor_ = nullptr, *label21_ = nullptr;
    QPushButton* command1_ = nullptr;
    std::array<QPushButton*, 2> ssCommand1_{};
    std::array<QToolButton*, 2> spin5_{};
    QMenu* traceMenu_ = nullptr;
    QWidget* picturePanel_ = nullptr;
    std::vector<int> sstabOfTab_{0};  // the form's tab number of each tab, in tab order
    std::vector<std::function<void()>> refreshers_;
    QTimer* timer1_ = nullptr;
    bool flash_ = false;
    bool following_ = false;  // widgets being set from the form: no handlers
    bool placed_ = false;     // centred on the main window once
};

}  // namespace ardel
