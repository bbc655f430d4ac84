// The main window (Ardelvantine): the trace picture, the file list, the detection parameters,
// the analysis buttons, the options panel, the event grid and the menus. Every handler reads
// the controls it needs into the session, calls one engine command and shows the result; the
// window holds no analysis of its own.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QElapsedTimer>
#include <QMainWindow>

#include "core/event_commands.h"
#include "core/forwarding_dialogs.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/user_dialogs.h"
#include "detect/manual_edit.h"
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
class QToolButton;

namespace ardel {

class DatInfoDialog;
class EventGridModel;
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
    UserDialogs& dialogs() { return *ui_; }
    const std::filesystem::path& IniPath() const { return iniPath_; }

    // Shows a folder in the file list and makes it the current folder of the file dialogs.
    void ShowFolder(const std::filesystem::path& folder);
    // Opens a file as a click in the file list does (its folder is shown first).
    void OpenFileAsClick(const std::filesystem::path& file);
    // Shows the folder used last (desktop preferences), when it still exists. For a start
    // without a file named.
    void ShowLastFolder();

    // The grid's highlighted rows as event numbers, in the order they were highlighted: the
    // selection list of the commands that act on highlighted events.
    const std::vector<std::int32_t>& HighlightedEvents() const { return highlighted_; }

    // True while a non-stop run, a double-peak scan or a batch run is going on.
    bool IsRunning() const { return runDepth_ > 0; }

    // The selected event's mark blinks (Timer1) between these calls.
    void StartBlinking();
    void StopBlinking();

    // Handlers of the controls, under the controls' names.
    void Command1_Click();
    void Command2_Click();
    void Command3_Click();
    void Command4_Click();
    void Command5_Click();
    void Command6_Click();
    void Command7_Click();
    void menu_DatInfo_Click();
    void menu_ExtractSynchArray_Click(int index);
    void menu_OpenEvent_Click();
    void menu_SaveEvent_Click();
    void menu_SaveParameter_Click();
    void menu_LoadParameter_Click();
    void menu_FileComments_Click();
    void menu_SaveSettingsCustom_Click();
    void menu_LoadSettings_Click();
    void menu_batch_Click();
    void menu_DoublePeak_Click();
    void menu_ScanDoublePeak_Click();
    void menu_Navigates_Click(int index);
    void menu_DisplayContinously_Click();
    void menu_RejectThisEvent_Click();
    void menu_DeletEvent_Click();
    void menu_RecalculatePeak_Click();
    void menu_BaselineThreshold_Click();
    void menu_ScanAdjustBaseline_Click();
    void menu_SuggParam_Click(int index);
    void menu_RMSNoise_Click();
    void menu_OpenRecording_Click();
    void menu_AutoScale_Click();
    // The wheel over the trace: a screen per notch (up goes back); with Ctrl the gain.
    void Picture1_Wheel(int notches, bool ctrl);

    // The trace's mouse handlers, with positions in picture units and the shift mask of the
    // old handlers (1 Shift, 2 Ctrl, 4 Alt).
    void Picture1_MouseMove(double x, double y);
    void Picture1_MouseDown(Qt::MouseButton button, int shiftMask, double x, double y);
    void Picture1_MouseUp(Qt::MouseButton button, int shiftMask, double x, double y);

    const CursorState& Cursors() const { return cursors_; }

    // The key handler of the window: true when the key was a command.
    bool HandleKey(int qtKey, Qt::KeyboardModifiers modifiers);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    enum RunFlags : unsigned {
        kPlain = 0,
        kLongRun = 1,    // loops that yield: the window stays live and shows progress
        kDuringRun = 2,  // may run while a long run is yielding (moves, display, Interrupt)
    };
    enum class RunKind { None, NonStop, EventScan, Batch };

    // Every handler runs here: the controls are read into the session, the command runs,
    // changed parameters go back into the controls, and the window is brought up to date.
    // An unexpected error becomes a message naming the command; the session stays usable.
    void Run(const char* command, unsigned flags, const std::function<void()>& body,
             RunKind kind = RunKind::None);

    void BuildUi();
    void BuildMenus();
    void RebuildRecentMenu();
    void RememberRecording();
    void RefreshFileList();
    void OpenRecording(const std::filesystem::path& path);
    QWidget* BuildFilePanel();
    QWidget* BuildTracePanel();
    QWidget* BuildAnalysisPanel();
    QWidget* BuildOptionsPanel();

    // Controls -> session at the moment of use, and back after a command changed them.
    void ReadControls();
    void WriteParameterControls();
    void WriteOptionControls();
    void ApplySettingsTexts(const MainWindowTexts& texts);
    void LoadStartupSettings();
    void ParkToolTips(bool park);

    // Display's notice: the picture and the display controls follow, at most every few
    // frames while a long run is going on.
    void OnDisplay();
    void RefreshDisplayControls();
    void RefreshProgress();
    void RefreshAll();
    void SyncGrid();
    void ShowWarnings();

    void FListBoxFETCH_Click(QListWidgetItem* item);
    void GridRowChosen(int row);
    void GridSelectionChanged();
    void ckCursors_Click(bool on);
    void Timer1_Timer();
    void Timer2_Timer();

    QAction* AddAction(QMenu* menu, const char* name, const QString& caption,
                       const std::function<void()>& handler);

    Session session_;
    CursorState cursors_;
    std::unique_ptr<UserDialogs> ownDialogs_;
    UserDialogs* ui_ = nullptr;
    // The screen filter runs on every redraw; its cut-off warning is shown once per command.
    std::unique_ptr<OncePerCommandMessages> filterMessages_;
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
    QMenu* menuEvents_ = nullptr;
    QMenu* menuEventEdit_ = nullptr;
    QMenu* menuRecent_ = nullptr;
    QLabel* statusText_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QTimer* timer1_ = nullptr;
    QTimer* timer2_ = nullptr;
    QTimer* refreshTimer_ = nullptr;
    DatInfoDialog* datInfo_ = nullptr;

    int runDepth_ = 0;
    RunKind runKind_ = RunKind::None;
    std::int32_t scanTotal_ = 0;
    bool closePending_ = false;
    bool syncingGrid_ = false;
    bool gridPressing_ = false;
    QElapsedTimer lastRepaint_;
    std::vector<std::int32_t> highlighted_;
};

}  // namespace ardel
