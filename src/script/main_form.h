// The main window's controls as data: what each control shows, under the control's name, and
// the rules that carry it into the session at the moment of use and back after a command.
// The desktop binds its widgets to this struct; scripts read and write it by control name.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "detect/manual_edit.h"

namespace ardel {

// Combo1's list: the direction of the peak. Index 1 is the positive direction.
inline constexpr std::array<const char*, 2> kCombo1Items = {"Negative", "Positive"};
inline constexpr std::array<const char*, 6> kCombo2Items = {"1", "3", "5", "7", "9", "11"};
inline constexpr std::array<const char*, 5> kFractionItems = {"0.1", "0.25", "0.5", "0.75", "0.9"};
inline constexpr std::array<const char*, 10> kGpNavItems = {"1", "2", "3", "4", "5",
                                                            "6", "7", "8", "9", "10"};
inline constexpr std::array<const char*, 6> kIntervalItems = {"100",  "500",   "1000",
                                                              "5000", "10000", "60000"};
inline constexpr std::array<const char*, 6> kCutoffItems = {"100",  "200",  "500",
                                                            "1000", "2000", "5000"};

// The detection keys behind Text4(0) .. Text4(6), in the frame's order.
inline constexpr std::array<const char*, 7> kText4Keys = {
    "ThresholdAmplitude!", "PeriodToSearchMax&",     "PeriodStartBaseline&", "PeriodFindDecayTime&",
    "DecayPercent!",       "PeriodBaselineAverage&", "AreaThreshold!",
};

// A fresh window shows the settings' defaults: what it shows after a start without
// Ardelvan.ini.
struct MainForm {
    // File panel.
    std::string DirListBoxFETCH;                // the folder shown
    std::vector<std::string> FListBoxFETCH;     // "..", the folders, then the data files
    std::string Label11;                        // the open file's name
    // Trace panel.
    std::string Label4;                         // pointer readout (and conversion progress)
    bool ckCursors = false;
    std::string lbCursor;
    std::string Text1 = "1";                    // gain of the active channel
    std::string Text3 = "4";                    // Blocks per screen
    std::int32_t Slider1 = 0;                   // display offset of the active channel
    std::int32_t Slider2 = 0;                   // screen position in Blocks
    std::vector<std::string> Combo3Items;       // the channels "0", "1", ...
    std::string Combo3;                         // the active channel's entry
    // Analysis tab.
    std::array<std::string, 7> Text4{"5", "10000", "6000", "20000", "0.32", "2000", "50"};
    int Combo1 = 0;                             // list index of kCombo1Items
    std::string Combo2 = "1";
    bool ckComplexPeak = false;
    // Options tab.
    bool ckSoundOn = false;
    bool ckTooltips = true;
    bool ckLockBase = false;
    std::string cbFraction = "0.25";
    bool ckDisplayTrace = true;
    std::string cbGpNav = "1";
    std::string cbInterval = "1000";
    bool Check1 = false;                        // the digital filter on
    int Combo4 = 4;                             // list index of kFilterTypeCaptions
    std::string Combo5 = "1000";                // cut-off in Hz
    int SSTab1 = 0;                             // 0 Analysis, 1 Options
    // Status bar.
    std::string StatusText;
    // The four cursor lines and the line the mouse holds (ckCursors and lbCursor mirror them).
    CursorState cursors;
};

// Controls -> session, at the moment a command starts. A detection text that its key cannot
// take throws SettingsError.
void ReadControls(Session& s, const MainForm& f);
// Session -> the detection frame, after a command changed the parameters.
void WriteParameterControls(const Session& s, MainForm& f);
// Session -> the options panel.
void WriteOptionControls(const Session& s, MainForm& f);
// After a settings load: the folder, the boxes as loaded, the screen length applied as its
// box applies it (which redimensions the buffers), the options panel.
void ApplySettingsTexts(Session& s, MainForm& f, const MainWindowTexts& t);
// The program start: Ardelvan.ini in programDir, or the defaults with the load's message
// when it holds a value the program cannot take.
void LoadStartupSettings(Session& s, MainForm& f, UserDialogs& ui,
                         const std::filesystem::path& programDir);
// The controls that follow the display: offset and screen sliders, the channel list, the
// file's name.
void ShowDisplayControls(const Session& s, MainForm& f);
// Shows a folder in the file list and makes it the current folder of the file dialogs.
// A folder that is not there changes nothing.
void ShowFolder(Session& s, MainForm& f, const std::filesystem::path& folder);

}  // namespace ardel
