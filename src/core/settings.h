// The program's settings in Ardelvan.ini, beside the program, and in custom copies of it (.SET).
// Every key is a line of the file tied to a control or a program-wide variable; the main window
// keeps its keys in the Session, the group analysis and heart rate windows in the structs below,
// whose texts are their controls' contents.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

inline constexpr std::string_view kIniFileName = "Ardelvan.ini";
inline constexpr std::string_view kSettingsSavedTitle = "Settings Saved";
inline constexpr std::string_view kSettingsSavedText =
    "The settings are saved into Ardelvan.ini file.";

// The settings file beside the program.
std::filesystem::path ArdelvanIniPath(const std::filesystem::path& programDir);

// A value the program cannot take (a flag that is neither "True", "False" nor a number, a
// number too large for its variable), or a settings file that could not be written. Loading
// never passes over such a value with a default.
class SettingsError : public std::runtime_error {
  public:
    SettingsError(std::string section, std::string key, std::string text, std::string reason);
    explicit SettingsError(const std::string& message);
    const std::string& Section() const { return section_; }
    const std::string& Key() const { return key_; }
    const std::string& Text() const { return text_; }

  private:
    std::string section_, key_, text_;
};

// The runtime's text-to-Boolean conversion: "True" or "False" in any case, or the text of a
// number (0 is false, anything else true), blanks around it allowed. nullopt for anything else.
std::optional<bool> TextToBoolean(std::string_view text);
// The flag text that every save writes.
inline const char* FlagText(bool value) {
    return value ? "True" : "False";
}

// ---------------------------------------------------------------------------------------------
// Main window: sections Program, Display, Analysis.

// What the main window shows after a load and that the session does not hold as such.
struct MainWindowTexts {
    // DisplayTooltips read exactly "False": every control's tool tip is to be parked in its tag
    // and the tip emptied.
    bool ParkToolTips = false;
    std::string Text1 = "1";          // gain as read, shown for the active channel
    std::int32_t Slider1 = 0;         // offset of the active channel
    std::string Text3 = "4";          // Blocks per screen
    std::string Combo1 = "Negative";  // "Direction of Peak": "Negative" or "Positive"
    std::array<std::string, 7> Text4{"5", "10000", "6000", "20000", "0.32", "2000", "50"};
};

// Fills the main window's variables and controls from the file named, in the program's order:
// DataDir (the program's folder and a separator when the folder named is gone), SoundOn,
// DisplayTooltips, LockBase, FractionWindow, DisplayTrace, the gain of the active channel (then
// channels 1 to 15 back to 1.0, so that only channel 0 keeps a stored gain), its offset, Blocks
// per screen, PeakDirection% (anything but +1 is -1), the seven detection keys, ComplexPeak,
// NumberPointsPeak through its combo text, and the options panel's own second reading.
// Values are cut to 9 characters, DataDir to 99. Throws SettingsError, leaving the session as
// it was, for a value the program cannot take, and for a file that is there but cannot be read
// (a pipe, a folder, no permission). A missing file gives the defaults.
// Blocks per screen changes only the variable: the window applies it as its box does.
MainWindowTexts LoadIniSettings(Session& s, const std::filesystem::path& file,
                                const std::filesystem::path& programDir);

// "&Save Settings": the full save of the main window into iniFile, then "Settings Saved".
// Gain and offset are channel 0's whichever channel is active; the five keys of the options
// panel that only Command7 writes are left alone. Throws SettingsError when the file cannot be
// written (no message then).
void Command6(Session& s, UserDialogs& dialogs, const std::filesystem::path& iniFile);

// The options panel's "Save Settings": writes the panel's controls, then takes the check boxes
// and the fraction text into the program-wide flags and the fraction, then "Settings Saved".
// Group navigate and jump interval texts that are no numbers throw SettingsError and nothing
// is written.
void Command7(Session& s, UserDialogs& dialogs, const std::filesystem::path& iniFile);

// "in Custom Settings File": asks for a .SET name in the program's folder (iniFile's folder),
// asks before replacing, runs Command6 and copies Ardelvan.ini byte for byte to the name
// chosen. False when the user cancelled or declined.
bool menu_SaveSettingsCustom(Session& s, UserDialogs& dialogs,
                             const std::filesystem::path& iniFile);

// "Load Settings": asks for a .SET file and loads the main window's three sections from it;
// Ardelvan.ini is not touched. nullopt when cancelled.
std::optional<MainWindowTexts> menu_LoadSettings(Session& s, UserDialogs& dialogs,
                                                 const std::filesystem::path& iniFile);

// Sets one key of the Analysis section by its literal name with its type mark
// ("ThresholdAmplitude!", "PeriodToSearchMax&", "PeakDirection%", "ComplexPeak",
// "NumberPointsPeak"...; the case of the name does not matter), converting the text as a load
// does, but without the 9-character cut of the file. False for a name that is not a key of
// the section; SettingsError for a text the key cannot take.
bool ApplyAnalysisParam(Session& s, std::string_view key, std::string_view valueText);

// The detection parameters and display settings in effect, as lines of the settings file
// form ("[Analysis]", "ThresholdAmplitude!= 5", ...), numbers and flags written as a save
// writes them.
std::vector<std::string> RenderEffectiveSettings(const Session& s);

// ---------------------------------------------------------------------------------------------
// Group analysis window: sections GroupAnalysis, Fitting, RandomWalk, NonStationary. Texts are
// the controls' contents, saved as they stand; flags are check boxes and option buttons.

struct GroupAnalysisSection {
    bool DisplayGroup = true;              // Option2(0); false selects Option2(1)
    std::string DisplayGain = "1";         // Combo5
    std::string DisplayOffset = "0";       // Combo6
    std::string GroupNumber = "1";         // Combo1
    std::string AnalysisType = "Average";  // Combo2
    std::string PeakAlignment = "Peak";    // Combo3
    std::string BlocktoAnalyze = "1";      // Combo4
    std::string DisplayEveryPoint = "1";   // Combo7
    bool BaselineAdjust = false;           // ckBaseline
    bool operator==(const GroupAnalysisSection&) const = default;
};

struct FittingSection {
    std::string FitRange = "Peak to End";                 // Combo8
    std::string MaxIteration = "1000";                    // Combo11
    std::string Tolerance = "0.001";                      // Text5
    std::string NumberExponential = "2";                  // Combo9
    bool IncludeOffset = false;                           // Check3
    bool FixAmplitude = false;                            // Check4
    bool UseGuess = false;                                // UseGuess
    std::string tau1 = "5", tau2 = "100", tau3 = "1000";  // Tau(0..2)
    std::string A1 = "100", A2 = "50", A3 = "25";         // Amp(0..2)
    std::string Rise = "0";                               // Combo29
    std::string WidthAboveThreshold = "20";               // Combo14
    std::string Ym = "5";                                 // Combo19
    std::string Yt = "2";                                 // Combo20
    bool UseThresholdBaseline = false;                    // Check2
    std::string AmperoRise = "50-90% Rise";               // Combo13
    std::string Electrons = "2";                          // Combo15
    std::string DecayPercent = "90-37%";                  // Combo12
    bool operator==(const FittingSection&) const = default;
};

struct RandomWalkSection {
    std::string Type = "Amperometry in Slice";  // Combo16
    std::string Edge = "Diffusing";             // Combo17
    std::string Vmax = "3.500";                 // Text1(0)
    std::string Km = "0.240";                   // Text1(1)
    std::string Release = "2.000";              // Text1(2)
    std::string DeadRadius = "4.000";           // Text1(3)
    std::string BinSize = "1.000";              // Text1(4)
    std::string TotalRadius = "25.000";         // Text1(5)
    std::string DiffusionCoeff = "2.7e-6";      // Text1(7)
    std::string MaxIter = "500";                // Text2
    std::string Tolerance = "0.001";            // Text3
    bool operator==(const RandomWalkSection&) const = default;
};

struct NonStationarySection {
    std::string AmplitudeBin = "100";  // Text4
    std::string AverageTrace = "5";    // Combo18
    bool SubtractBaseVar = false;      // Check5
    bool IncludeOffset = false;        // Check6
    bool operator==(const NonStationarySection&) const = default;
};

struct GroupAnalysisSettings {
    GroupAnalysisSection GroupAnalysis;
    FittingSection Fitting;
    RandomWalkSection RandomWalk;
    NonStationarySection NonStationary;
    bool operator==(const GroupAnalysisSettings&) const = default;
};

// The window's LoadIniSettings: its four sections, values cut to 99 characters.
GroupAnalysisSettings LoadGroupAnalysisSettings(const std::filesystem::path& file);
// menu_SaveSettings: writes the four sections into iniFile, then "Settings Saved".
void SaveGroupAnalysisSettings(const GroupAnalysisSettings& g, UserDialogs& dialogs,
                               const std::filesystem::path& iniFile);
// menu_SaveAsCustomSetup: as the main window's custom save, with this window's full save.
bool SaveGroupAnalysisSettingsCustom(const GroupAnalysisSettings& g, UserDialogs& dialogs,
                                     const std::filesystem::path& iniFile);
// menu_LoadSettings: asks for a .SET file and loads the four sections from it into g.
// False when cancelled (g unchanged).
bool LoadGroupAnalysisSettingsCustom(GroupAnalysisSettings& g, UserDialogs& dialogs,
                                     const std::filesystem::path& iniFile);

// ---------------------------------------------------------------------------------------------
// Heart rate windows: section HRV, shared. Each window holds its own controls for the keys it
// shares, so the window saved last wins.

struct HrvSettings {                   // window HRV
    std::string RRUBound = "100";      // Combo2
    std::string RRLBound = "10";       // Combo3
    std::string NPointsSeg = "30000";  // Text1
    std::string ThreshdeltaRR = "50";  // Combo1
    bool IncludeZero = false;          // Check1
    bool ExcludeLastSeg = false;       // Check2
    bool operator==(const HrvSettings&) const = default;
};

struct HrvSpectralSettings {             // window HRVSpectral
    std::string RRUBound = "100";        // Combo2
    std::string RRLBound = "10";         // Combo3
    std::string RRBinSize = "1";         // Combo1
    std::string DeltaRRBinSize = "1";    // Combo4
    std::string Windowing = "Blackman";  // Combo5
    bool operator==(const HrvSpectralSettings&) const = default;
};

struct HrvGeoSettings {                // window HRVGeo
    std::string RRUBound = "100";      // Combo2
    std::string RRLBound = "10";       // Combo3
    std::string RRBinSize = "1";       // Combo1
    std::string DeltaRRBinSize = "1";  // Combo4
    bool operator==(const HrvGeoSettings&) const = default;
};

// Each window's reading (values cut to 99 characters) and its Command2 "Save Options", which
// writes its own keys and reports "Settings Saved".
HrvSettings LoadHrvSettings(const std::filesystem::path& file);
void SaveHrvSettings(const HrvSettings& h, UserDialogs& dialogs,
                     const std::filesystem::path& iniFile);
HrvSpectralSettings LoadHrvSpectralSettings(const std::filesystem::path& file);
void SaveHrvSpectralSettings(const HrvSpectralSettings& h, UserDialogs& dialogs,
                             const std::filesystem::path& iniFile);
HrvGeoSettings LoadHrvGeoSettings(const std::filesystem::path& file);
void SaveHrvGeoSettings(const HrvGeoSettings& h, UserDialogs& dialogs,
                        const std::filesystem::path& iniFile);

}  // namespace ardel
