// The main window (Ardelvantine): the trace picture, the file list, the detection parameters,
// the analysis buttons, the options panel, the event grid and the menus. Its widgets are bound
// to the main form's struct; every button, menu item and key runs its handler by name through
// the command table, which the script runner uses too. The window adds only what is Qt: the
// progress bar, the refusal while a long run goes on, the repaint.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <QElapsedTimer>
#include <QMainWindow>

#include "core/event_commands.h"
#include "core/forwarding_dialogs.h"
#include "core/session.h"
#include "core/user_dialogs.h"
#include "script/command_table.h"
#include "script/forms.h"
#include "view/navigation.h"

class QAction;
class QCheckBox;
class QDragEnterEvent;
class QDropEvent;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QMenu;
class QProgressBar;
class QPushButton;
class QSlider;
class QTabWidget;
class QTableView;
class QTimer;

namespace ardel {

class CriteriaWindow;
class ArrayWindows;
class DataAnalysisWindow;
class HrvWindows;
class HrvSpectralWindow;
class HrvGeoWindow;
class GroupAnalysisWindow;
class DatInfoDialog;
class EventGridModel;
class EventListPrinter;
class TraceView;

class Ardelvantine : public QMainWindow {
    Q_OBJECT
  public:
    // programDir is the folder of Ardelvan.ini (the program's own folder in use; a scratch
    // folder in tests). dialogs answers the program's questions; without one the window shows
    // Qt dialogs. It must outlive the window.
    explicit Ardelvantine(std::filesystem::path programDir, UserDialogs* dialogs = nullptr,
                          QWidget* parent = nullptr);
    ~Ardelvantine() override;

    Session& session() { return session_; }
    Forms& forms() { return forms_; }
    UserDialogs& dialogs() { return *ui_; }
    const std::filesystem::path& IniPath() const { return iniPath_; }
    const CommandTable& commands() const { return table_; }

    // Runs the handler of that name as its button, menu item or key does ("Command1",
    // "menu_sort(2)", "Criteria.Command2"). False for a name the table does not have.
    bool RunHandler(const std::string& name);

    // Shows a folder in the file list and makes it the current folder of the file dialogs.
    void ShowFolder(const std::filesystem::path& folder);
    // Opens a file as a click in the file list does (its folder is shown first).
    void OpenFileAsClick(const std::filesystem::path& file);
    // Shows the folder used last (desktop preferences), when it still exists. For a start
    // without a file named.
    void ShowLastFolder();

    // The grid's highlighted rows as event numbers, in the order they were highlighted: the
    // selection list of the commands that act on highlighted events.
    const std::vector<std::int32_t>& HighlightedEvents() const { return session_.HighlightedRows; }

    // True while a non-stop run, a scan, a batch run or a random selection is going on.
    bool IsRunning() const { return runDepth_ > 0; }

    // The selected event's mark blinks (Timer1) between these calls.
    void StartBlinking();
    void StopBlinking();

    // The wheel over the trace: a screen per notch (up goes back); with Ctrl the gain.
    void Picture1_Wheel(int notches, bool ctrl);
    // The trace's mouse handlers, with positions in picture units and the shift mask of the
    // old handlers (1 Shift, 2 Ctrl, 4 Alt).
    void Picture1_MouseMove(double x, double y);
    void Picture1_MouseDown(Qt::MouseButton button, int shiftMask, double x, double y);
    void Picture1_MouseUp(Qt::MouseButton button, int shiftMask, double x, double y);

    const CursorState& Cursors() const { return forms_.main.cursors; }

    // The key handler of the window: true when the key was a command.
    bool HandleKey(int qtKey, Qt::KeyboardModifiers modifiers);

    // The Criteria window once a menu item has opened it; null before.
    CriteriaWindow* criteriaWindow() const { return criteria_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    enum class RunKind { None, NonStop, EventScan, Batch, Selection };
    class WindowDialogs;
    static RunKind RunKindOf(std::string_view name);

    // Every handler runs here: the widgets into the forms, RunCommand, the forms back into the
    // widgets, the window brought up to date. A long run shows progress; while one goes on,
    // only the commands that may run during it are taken.
    void RunEntry(const CommandEntry& entry, RunKind kind = RunKind::None);
    void RegisterDesktopCommands();

    void BuildUi();
    void BuildMenus();
    void BuildEventMenus();
    void RebuildRecentMenu();
    void RememberRecording();
    QWidget* BuildFilePanel();
    QWidget* BuildTracePanel();
    QWidget* BuildAnalysisPanel();
    QWidget* BuildOptionsPanel();
    QAction* AddAction(QMenu* menu, const std::string& handler, const QString& caption);

    // The binding of the main form: widgets -> struct before a command, struct -> widgets
    // after it.
    void ReadWidgets();
    void ShowForms();
    void ShowFileList();
    void ShowDisplayWidgets();
    void ParkToolTips(bool park);

    // Display's notice: the picture and the display controls follow, at most every few
    // frames while a long run is going on.
    void OnDisplay();
    void RefreshProgress();
    void RefreshAll();
    void SyncGrid();
    void ShowCriteriaWindow();

    void FListBoxFETCH_Click(QListWidgetItem* item);
    void GridRowChosen(int row);
    void GridSelectionChanged();
    void Timer1_Timer();

    Session session_;
    Forms forms_;
    CommandTable table_;
    std::unique_ptr<UserDialogs> ownDialogs_;
    // The dialogs every command gets: the window's, with a Yield that shows what a running
    // command changed on its buttons first.
    std::unique_ptr<WindowDialogs> runDialogs_;
    UserDialogs* ui_ = nullptr;
    // The screen filter runs on every redraw; its cut-off warning is shown once per command.
    std::unique_ptr<OncePerCommandMessages> filterMessages_;
    std::unique_ptr<CommandContext> context_;
    std::unique_ptr<EventListPrinter> printer_;
    GridAgreement gridAgreement_;
    std::filesystem::path programDir_;
    std::filesystem::path iniPath_;

    // Controls (owned by Qt's widget tree).
    TraceView* picture_ = nullptr;
    QListWidget* fileList_ = nullptr;
    QLineEdit* folderBox_ = nullptr;
    QLabel* label11_ = nullptr;
    QLabel* label4_ = nullptr;
    QCheckBox* ckCursors_ = nullptr;
    QLabel* lbCursor_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    QLineEdit* text1_ = nullptr;
    QLineEdit* text3_ = nullptr;
    QSlider* slider1_ = nullptr;
    QSlider* slider2_ = nullptr;
    QComboBox* combo3_ = nullptr;
    QLineEdit* text4_[7] = {};
    QComboBox* combo1_ = nullptr;
    QComboBox* combo2_ = nullptr;
    QCheckBox* ckComplexPeak_ = nullptr;
    QPushButton* command_[8] = {};  // Command1..Command7 at their numbers
    QCheckBox* ckSoundOn_ = nullptr;
    QCheckBox* ckTooltips_ = nullptr;
    QCheckBox* ckLockBase_ = nullptr;
    QComboBox* cbFraction_ = nullptr;
    QCheckBox* ckDisplayTrace_ = nullptr;
    QComboBox* cbGpNav_ = nullptr;
    QComboBox* cbInterval_ = nullptr;
    QCheckBox* check1_ = nullptr;
    QComboBox* combo4_ = nullptr;
    QComboBox* combo5_ = nullptr;
    QTableView* grid_ = nullptr;
    EventGridModel* gridModel_ = nullptr;
    QMenu* menuEvents_ = nullptr;      // the grid's popup
    QMenu* menuEventList_ = nullptr;   // "Events" in the main menu
    QMenu* menuEventEdit_ = nullptr;   // the popup of an event on the trace
    QMenu* menuRecent_ = nullptr;
    QLabel* statusText_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QTimer* timer1_ = nullptr;
    QTimer* timer2_ = nullptr;
    QTimer* refreshTimer_ = nullptr;
    DatInfoDialog* datInfo_ = nullptr;
    CriteriaWindow* criteria_ = nullptr;
    std::unique_ptr<ArrayWindows> arrayWindows_;
    DataAnalysisWindow* dataAnalysis_ = nullptr;
    HrvWindows* hrv_ = nullptr;
    HrvSpectralWindow* hrvSpectral_ = nullptr;
    HrvGeoWindow* hrvGeo_ = nullptr;
    GroupAnalysisWindow* groupWindow_ = nullptr;

    int runDepth_ = 0;
    RunKind runKind_ = RunKind::None;
    std::int32_t scanTotal_ = 0;
    bool closePending_ = false;
    bool syncingGrid_ = false;
    bool gridPressing_ = false;
    bool tipsShown_ = true;
    std::vector<std::string> listShown_;  // the file list's entries as last shown
    std::string folderShown_;
    std::filesystem::path remembered_;    // the recording last put on the recent list
    QElapsedTimer lastRepaint_;
};

}  // namespace ardel
