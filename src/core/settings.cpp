#include "core/settings.h"

#include <cfloat>
#include <cmath>
#include <functional>
#include <system_error>
#include <type_traits>
#include <utility>

#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/safe_file.h"

namespace ardel {

namespace fs = std::filesystem;

namespace {

// Read buffers of the main window hold 9 characters (DataDir 99); the other windows' 99.
constexpr std::size_t kMainBuffer = 10;
constexpr std::size_t kLongBuffer = 100;

constexpr std::string_view kReplaceTitle = "Replace File";
constexpr std::string_view kReplaceText = "File already exist.  Do you want to replace this file?";

std::string_view TrimSpaceTab(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The whole text is one number the runtime would coerce: decimal with an optional exponent,
// or "&H"/"&O" integers.
bool IsNumberText(std::string_view t) {
    if (t.size() >= 3 && t[0] == '&' &&
        (t[1] == 'H' || t[1] == 'h' || t[1] == 'O' || t[1] == 'o')) {
        const bool hex = t[1] == 'H' || t[1] == 'h';
        for (char c : t.substr(2)) {
            const bool ok = hex ? (IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'))
                                : (c >= '0' && c <= '7');
            if (!ok) return false;
        }
        return true;
    }
    std::size_t i = 0;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    std::size_t digits = 0;
    while (i < t.size() && IsDigit(t[i])) ++i, ++digits;
    if (i < t.size() && t[i] == '.') {
        ++i;
        while (i < t.size() && IsDigit(t[i])) ++i, ++digits;
    }
    if (digits == 0) return false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E' || t[i] == 'd' || t[i] == 'D')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
        std::size_t expDigits = 0;
        while (i < t.size() && IsDigit(t[i])) ++i, ++expDigits;
        if (expDigits == 0) return false;
    }
    return i == t.size();
}

// Conversions of a value text to the variable it feeds, as the runtime made them: refusals are
// errors that name where the text came from.
bool FlagFrom(std::string_view section, std::string_view key, std::string_view text) {
    if (const auto b = TextToBoolean(text)) return *b;
    throw SettingsError(std::string(section), std::string(key), std::string(text),
                        "is neither \"True\", \"False\" nor a number");
}

float SingleFrom(std::string_view section, std::string_view key, std::string_view text) {
    const double v = Val(text);
    if (!std::isfinite(v) || std::fabs(v) > double(FLT_MAX))
        throw SettingsError(std::string(section), std::string(key), std::string(text),
                            "is too large for a single-precision number");
    return static_cast<float>(v);
}

std::int32_t LongFrom(std::string_view section, std::string_view key, std::string_view text) {
    if (const auto v = ToInt32(Val(text))) return *v;
    throw SettingsError(std::string(section), std::string(key), std::string(text),
                        "does not fit a 32-bit integer");
}

// The runtime's Str applied to a control's text first makes the text a number, and text that
// is not one is a type error rather than 0.
std::string StrOfText(std::string_view section, std::string_view key, std::string_view text) {
    if (!IsNumberText(TrimSpaceTab(text)))
        throw SettingsError(std::string(section), std::string(key), std::string(text),
                            "is not a number");
    return Str(Val(text));
}

std::int16_t IntegerFrom(std::string_view section, std::string_view key, std::string_view text) {
    if (const auto v = ToInt16(Val(text))) return *v;
    throw SettingsError(std::string(section), std::string(key), std::string(text),
                        "does not fit a 16-bit integer");
}

// Only +1 means positive peaks; 0 and anything else stored is negative.
std::int16_t PeakDirectionFrom(std::string_view text) {
    return IntegerFrom("Analysis", "PeakDirection%", text) == 1 ? std::int16_t(1)
                                                                : std::int16_t(-1);
}

// The seven numeric detection keys in the order they are read, shown and saved.
struct DetectionKey {
    const char* key;
    const char* def;
    float DetectionParameters::*single;
    std::int32_t DetectionParameters::*integer;
};
constexpr DetectionKey kDetectionKeys[7] = {
    {"ThresholdAmplitude!", "5", &DetectionParameters::ThresholdAmplitude, nullptr},
    {"PeriodToSearchMax&", "10000", nullptr, &DetectionParameters::PeriodToSearchMax},
    {"PeriodStartBaseline&", "6000", nullptr, &DetectionParameters::PeriodStartBaseline},
    {"PeriodFindDecayTime&", "20000", nullptr, &DetectionParameters::PeriodFindDecayTime},
    {"DecayPercent!", "0.32", &DetectionParameters::DecayPercent, nullptr},
    {"PeriodBaselineAverage&", "2000", nullptr, &DetectionParameters::PeriodBaselineAverage},
    {"AreaThreshold!", "50", &DetectionParameters::AreaThreshold, nullptr},
};

void SetDetectionKey(DetectionParameters& p, const DetectionKey& k, std::string_view text) {
    if (k.single)
        p.*k.single = SingleFrom("Analysis", k.key, text);
    else
        p.*k.integer = LongFrom("Analysis", k.key, text);
}

std::string DetectionKeyStr(const DetectionParameters& p, const DetectionKey& k) {
    return k.single ? Str(p.*k.single) : Str(p.*k.integer);
}

std::string DetectionKeyCStr(const DetectionParameters& p, const DetectionKey& k) {
    return k.single ? CStr(p.*k.single) : CStr(p.*k.integer);
}

// A missing settings file gives the defaults. One that is there but cannot be read must not:
// the program would run with other values than the file holds, and a save would replace it.
IniDocument LoadSettingsDocument(const fs::path& file) {
    std::error_code ec;
    if (!fs::exists(file, ec)) return IniDocument();
    if (const auto reason = NotARegularFile(file))
        throw SettingsError("The settings file \"" + file.string() + "\" cannot be read: " +
                            *reason + ".");
    const auto bytes = ReadFileBytes(file);
    if (!bytes) throw SettingsError("The settings file \"" + file.string() + "\" cannot be read.");
    return IniDocument::Parse(*bytes);
}

struct KeyValue {
    std::string section, key, value;
};

// The saves write key by key; doing it on one copy of the file and replacing the file once
// gives the same text and never leaves a half-saved file behind.
void WriteKeys(const fs::path& iniFile, const std::vector<KeyValue>& keys) {
    const auto bytes = ReadFileBytes(iniFile);
    std::error_code ec;
    if (!bytes && fs::exists(iniFile, ec))
        throw SettingsError("The settings file \"" + iniFile.string() + "\" cannot be read.");
    IniDocument doc = IniDocument::Parse(bytes ? std::string_view(*bytes) : std::string_view());
    for (const KeyValue& kv : keys) doc.Set(kv.section, kv.key, kv.value);
    try {
        WriteFileReplacing(iniFile, doc.Text());
    } catch (const std::system_error& e) {
        throw SettingsError("The settings file \"" + iniFile.string() +
                            "\" cannot be written: " + e.code().message() + ".");
    }
}

void ReportSaved(UserDialogs& dialogs) {
    dialogs.Message(kSettingsSavedTitle, kSettingsSavedText);
}

FileDialogSpec CustomSaveSpec(const fs::path& iniFile) {
    FileDialogSpec spec;
    spec.fileName = "*.SET";
    spec.defaultExtension = "SET";
    spec.filter = "Custom Settings File (*.SET)";
    spec.initialDirectory = iniFile.parent_path();
    return spec;
}

FileDialogSpec CustomLoadSpec(const fs::path& iniFile) {
    FileDialogSpec spec;
    spec.fileName = "*.SET";
    spec.defaultExtension = "SET";
    spec.filter = "Custom Settings File (*.SET)|*.SET";
    spec.initialDirectory = iniFile.parent_path();
    return spec;
}

// A custom file is the whole of Ardelvan.ini after the window's own full save, so that it
// carries every window's sections.
bool SaveCustom(UserDialogs& dialogs, const fs::path& iniFile,
                const std::function<void()>& fullSave) {
    const auto chosen = dialogs.SaveFileName(CustomSaveSpec(iniFile));
    if (!chosen) return false;
    std::error_code ec;
    if (fs::exists(*chosen, ec)) {
        // The old file is not deleted here but replaced by the copy below, in one rename: the
        // end is the same, and a save that fails on the way leaves it as it was.
        if (dialogs.Ask(kReplaceTitle, kReplaceText, Buttons::YesNo) != Answer::Yes) return false;
    }
    fullSave();
    if (fs::equivalent(*chosen, iniFile, ec)) return true;  // the copy would be the file itself
    const auto bytes = ReadFileBytes(iniFile);
    if (!bytes)
        throw SettingsError("The settings file \"" + iniFile.string() + "\" cannot be read.");
    try {
        WriteFileReplacing(*chosen, *bytes);
    } catch (const std::system_error& e) {
        throw SettingsError("The custom settings file \"" + chosen->string() +
                            "\" cannot be written: " + e.code().message() + ".");
    }
    return true;
}

template <class T>
using IsFlag = std::is_same<std::remove_cvref_t<T>, bool>;

// Reads every key that a visitor names, with the window's buffer.
template <class Settings, class Visit>
Settings ReadWindowKeys(const fs::path& file, Visit visit) {
    const IniDocument doc = LoadSettingsDocument(file);
    Settings out;
    visit(out, [&](const char* section, const char* key, const char* def, auto& field) {
        const std::string text = doc.Get(section, key, def, kLongBuffer);
        if constexpr (IsFlag<decltype(field)>::value)
            field = FlagFrom(section, key, text);
        else
            field = text;
    });
    return out;
}

template <class Settings, class Visit>
std::vector<KeyValue> WindowKeyValues(const Settings& s, Visit visit) {
    std::vector<KeyValue> keys;
    visit(s, [&](const char* section, const char* key, const char*, const auto& field) {
        if constexpr (IsFlag<decltype(field)>::value)
            keys.push_back({section, key, FlagText(field)});
        else
            keys.push_back({section, key, field});
    });
    return keys;
}

// The group analysis keys. The save writes them in the reading order but for the head of
// Fitting, which it has always written as MaxIteration, IncludeOffset, FixAmplitude,
// NumberExponential, Tolerance.
template <class G, class F>
void VisitGroupAnalysisKeys(G& g, bool saveOrder, F&& f) {
    auto& ga = g.GroupAnalysis;
    f("GroupAnalysis", "DisplayGroup", "True", ga.DisplayGroup);
    f("GroupAnalysis", "DisplayGain", "1", ga.DisplayGain);
    f("GroupAnalysis", "DisplayOffset", "0", ga.DisplayOffset);
    f("GroupAnalysis", "GroupNumber", "1", ga.GroupNumber);
    f("GroupAnalysis", "AnalysisType", "Average", ga.AnalysisType);
    f("GroupAnalysis", "PeakAlignment", "Peak", ga.PeakAlignment);
    f("GroupAnalysis", "BlocktoAnalyze", "1", ga.BlocktoAnalyze);
    f("GroupAnalysis", "DisplayEveryPoint", "1", ga.DisplayEveryPoint);
    f("GroupAnalysis", "BaselineAdjust", "0", ga.BaselineAdjust);

    auto& fit = g.Fitting;
    f("Fitting", "FitRange", "Peak to End", fit.FitRange);
    f("Fitting", "MaxIteration", "1000", fit.MaxIteration);
    if (saveOrder) {
        f("Fitting", "IncludeOffset", "0", fit.IncludeOffset);
        f("Fitting", "FixAmplitude", "0", fit.FixAmplitude);
        f("Fitting", "NumberExponential", "2", fit.NumberExponential);
        f("Fitting", "Tolerance", "0.001", fit.Tolerance);
    } else {
        f("Fitting", "Tolerance", "0.001", fit.Tolerance);
        f("Fitting", "NumberExponential", "2", fit.NumberExponential);
        f("Fitting", "IncludeOffset", "0", fit.IncludeOffset);
        f("Fitting", "FixAmplitude", "0", fit.FixAmplitude);
    }
    f("Fitting", "UseGuess", "0", fit.UseGuess);
    f("Fitting", "tau1", "5", fit.tau1);
    f("Fitting", "tau2", "100", fit.tau2);
    f("Fitting", "tau3", "1000", fit.tau3);
    f("Fitting", "A1", "100", fit.A1);
    f("Fitting", "A2", "50", fit.A2);
    f("Fitting", "A3", "25", fit.A3);
    f("Fitting", "Rise", "0", fit.Rise);
    f("Fitting", "WidthAboveThreshold", "20", fit.WidthAboveThreshold);
    f("Fitting", "Ym", "5", fit.Ym);
    f("Fitting", "Yt", "2", fit.Yt);
    f("Fitting", "UseThresholdBaseline", "0", fit.UseThresholdBaseline);
    f("Fitting", "AmperoRise", "50-90% Rise", fit.AmperoRise);
    f("Fitting", "Electrons", "2", fit.Electrons);
    f("Fitting", "DecayPercent", "90-37%", fit.DecayPercent);

    auto& rw = g.RandomWalk;
    f("RandomWalk", "Type", "Amperometry in Slice", rw.Type);
    f("RandomWalk", "Edge", "Diffusing", rw.Edge);
    f("RandomWalk", "Vmax", "3.500", rw.Vmax);
    f("RandomWalk", "Km", "0.240", rw.Km);
    f("RandomWalk", "Release", "2.000", rw.Release);
    f("RandomWalk", "DeadRadius", "4.000", rw.DeadRadius);
    f("RandomWalk", "BinSize", "1.000", rw.BinSize);
    f("RandomWalk", "TotalRadius", "25.000", rw.TotalRadius);
    f("RandomWalk", "DiffusionCoeff", "2.7e-6", rw.DiffusionCoeff);
    f("RandomWalk", "MaxIter", "500", rw.MaxIter);
    f("RandomWalk", "Tolerance", "0.001", rw.Tolerance);

    auto& ns = g.NonStationary;
    f("NonStationary", "AmplitudeBin", "100", ns.AmplitudeBin);
    f("NonStationary", "AverageTrace", "5", ns.AverageTrace);
    f("NonStationary", "SubtractBaseVar", "0", ns.SubtractBaseVar);
    f("NonStationary", "IncludeOffset", "0", ns.IncludeOffset);
}

template <class H, class F>
void VisitHrvKeys(H& h, F&& f) {
    f("HRV", "RRUBound", "100", h.RRUBound);
    f("HRV", "RRLBound", "10", h.RRLBound);
    f("HRV", "NPointsSeg", "30000", h.NPointsSeg);
    f("HRV", "ThreshdeltaRR", "50", h.ThreshdeltaRR);
    f("HRV", "IncludeZero", "0", h.IncludeZero);
    f("HRV", "ExcludeLastSeg", "0", h.ExcludeLastSeg);
}

template <class H, class F>
void VisitHrvSpectralKeys(H& h, F&& f) {
    f("HRV", "RRUBound", "100", h.RRUBound);
    f("HRV", "RRLBound", "10", h.RRLBound);
    f("HRV", "RRBinSize", "1", h.RRBinSize);
    f("HRV", "DeltaRRBinSize", "1", h.DeltaRRBinSize);
    f("HRV", "Windowing", "Blackman", h.Windowing);
}

template <class H, class F>
void VisitHrvGeoKeys(H& h, F&& f) {
    f("HRV", "RRUBound", "100", h.RRUBound);
    f("HRV", "RRLBound", "10", h.RRLBound);
    f("HRV", "RRBinSize", "1", h.RRBinSize);
    f("HRV", "DeltaRRBinSize", "1", h.DeltaRRBinSize);
}

}  // namespace

fs::path ArdelvanIniPath(const fs::path& programDir) {
    return programDir / kIniFileName;
}

SettingsError::SettingsError(std::string section, std::string key, std::string text,
                             std::string reason)
    : std::runtime_error("The value \"" + text + "\" of \"" + key + "\" in section [" + section +
                         "] of the settings " + reason + "."),
      section_(std::move(section)),
      key_(std::move(key)),
      text_(std::move(text)) {}

SettingsError::SettingsError(const std::string& message) : std::runtime_error(message) {}

std::optional<bool> TextToBoolean(std::string_view text) {
    const std::string_view t = TrimSpaceTab(text);
    if (EqualsNoCase(t, "True") || EqualsNoCase(t, "#TRUE#")) return true;
    if (EqualsNoCase(t, "False") || EqualsNoCase(t, "#FALSE#")) return false;
    if (IsNumberText(t)) return Val(t) != 0.0;
    return std::nullopt;
}

// ---------------------------------------------------------------------------------------------
// Main window

MainWindowTexts LoadIniSettings(Session& s, const fs::path& file, const fs::path& programDir) {
    const IniDocument doc = LoadSettingsDocument(file);
    auto get = [&](const char* section, const char* key, const char* def) {
        return doc.Get(section, key, def, kMainBuffer);
    };

    // Everything is read into copies first: a value the program refuses leaves the session as
    // it was.
    ProgramOptions options = s.options;
    DetectionParameters params = s.params;
    std::array<float, 16> gains = s.display.DisplayGain;
    std::array<std::int32_t, 16> offsets = s.display.DisplayOffset;
    MainWindowTexts texts;
    const int channel = s.recording.ChannelIndex < 16 ? s.recording.ChannelIndex : 0;

    std::string dataDir = doc.Get("Program", "DataDir", "c:\\", kLongBuffer);
    std::error_code ec;
    if (dataDir.empty() || !fs::is_directory(fs::path(dataDir), ec)) {
        dataDir = programDir.string();
        const char sep = char(fs::path::preferred_separator);
        if (dataDir.empty() || dataDir.back() != sep) dataDir += sep;
    }
    options.DataDir = dataDir;

    options.SoundFlag = FlagFrom("Program", "SoundOn", get("Program", "SoundOn", "False"));
    // Only the exact word turns the tips off; any other text leaves them as they are.
    texts.ParkToolTips = get("Program", "DisplayTooltips", "True") == "False";

    const bool lockBase = FlagFrom("Display", "LockBase", get("Display", "LockBase", "False"));
    const float fraction =
        SingleFrom("Display", "FractionWindow", get("Display", "FractionWindow", "0.25"));
    options.DisplayTraceFlag =
        FlagFrom("Display", "DisplayTrace", get("Display", "DisplayTrace", "True"));

    const float gain = SingleFrom("Display", "DisplayGain", get("Display", "DisplayGain", "1"));
    gains[std::size_t(channel)] = gain;
    texts.Text1 = CStr(gain);
    // Only channel 0 keeps a gain from the file, even when another channel is the active one.
    for (std::size_t c = 1; c < 16; ++c) gains[c] = 1.0f;

    const std::int32_t offset =
        LongFrom("Display", "DisplayOffset&", get("Display", "DisplayOffset&", "0"));
    offsets[std::size_t(channel)] = offset;
    texts.Slider1 = offset;

    const float blocksPerScreen =
        SingleFrom("Display", "DisplayTotalNumberBlockPerScreen",
                   get("Display", "DisplayTotalNumberBlockPerScreen", "4"));
    texts.Text3 = CStr(blocksPerScreen);

    params.PeakDirection = PeakDirectionFrom(get("Analysis", "PeakDirection%", "-1"));
    texts.Combo1 = params.PeakDirection == 1 ? "Positive" : "Negative";

    for (std::size_t i = 0; i < 7; ++i) {
        const DetectionKey& k = kDetectionKeys[i];
        SetDetectionKey(params, k, get("Analysis", k.key, k.def));
        texts.Text4[i] = DetectionKeyCStr(params, k);
    }

    options.ComplexPeakFlag =
        FlagFrom("Analysis", "ComplexPeak", get("Analysis", "ComplexPeak", "False"));
    options.ComplexPeak = options.ComplexPeakFlag;

    options.Combo2 = get("Analysis", "NumberPointsPeak", "1");
    params.NumberPointsPeak = IntegerFrom("Analysis", "NumberPointsPeak", options.Combo2);

    // The options panel reads its keys again, with its own defaults.
    auto trimmed = [&](const char* section, const char* key, const char* def) {
        return Trim(get(section, key, def));
    };
    options.SoundOn = FlagFrom("Program", "SoundOn", trimmed("Program", "SoundOn", "0"));
    options.DisplayTooltips =
        FlagFrom("Program", "DisplayTooltips", trimmed("Program", "DisplayTooltips", "-1"));
    options.ckLockBase = FlagFrom("Display", "LockBase", trimmed("Display", "LockBase", "0"));
    options.cbFraction = get("Display", "FractionWindow", "0.25");
    const bool ckDisplayTrace =
        FlagFrom("Display", "DisplayTrace", trimmed("Display", "DisplayTrace", "-1"));
    options.GroupNavigate = trimmed("Display", "GroupNavigate", "1");
    options.JumpInterval = trimmed("Display", "JumpInterval", "1000");
    options.FilterType = LongFrom("Display", "FilterType", trimmed("Display", "FilterType", "4"));
    options.FilterFreq = trimmed("Display", "FilterFreq", "1000");

    s.options = std::move(options);
    s.params = params;
    s.display.DisplayGain = gains;
    s.display.DisplayOffset = offsets;
    s.display.LockBase = lockBase;
    s.display.FractionWindow = fraction;
    s.display.DisplayTrace = ckDisplayTrace;
    // As Text3 takes it: within its limits, with the buffers dimensioned for it.
    s.recording.BlocksPerScreen = blocksPerScreen;
    s.recording.DimensionBuffers();
    return texts;
}

void Command6(Session& s, UserDialogs& dialogs, const fs::path& iniFile) {
    const DetectionParameters& p = s.params;
    std::vector<KeyValue> keys = {
        {"Program", "DataDir", s.options.DataDir},
        {"Program", "SoundOn", FlagText(s.options.SoundFlag)},
        {"Display", "LockBase", FlagText(s.display.LockBase)},
        {"Display", "DisplayGain", Str(s.display.DisplayGain[0])},
        {"Display", "DisplayOffset&", Str(s.display.DisplayOffset[0])},
        {"Display", "DisplayTotalNumberBlockPerScreen", Str(s.recording.BlocksPerScreen)},
        {"Display", "FilterType", Str(std::int64_t(s.options.FilterType))},
        {"Display", "FilterFreq", s.options.FilterFreq},
        {"Analysis", "PeakDirection%", Str(p.PeakDirection)},
    };
    for (const DetectionKey& k : kDetectionKeys)
        keys.push_back({"Analysis", k.key, DetectionKeyStr(p, k)});
    keys.push_back({"Analysis", "ComplexPeak", FlagText(s.options.ComplexPeakFlag)});
    keys.push_back({"Analysis", "NumberPointsPeak", s.options.Combo2});
    WriteKeys(iniFile, keys);
    ReportSaved(dialogs);
}

void Command7(Session& s, UserDialogs& dialogs, const fs::path& iniFile) {
    ProgramOptions& o = s.options;
    // Taken before anything is written, so that a text the program refuses saves nothing.
    const float fraction = SingleFrom("Display", "FractionWindow", o.cbFraction);
    const std::string groupNavigate = StrOfText("Display", "GroupNavigate", o.GroupNavigate);
    const std::string jumpInterval = StrOfText("Display", "JumpInterval", o.JumpInterval);
    const std::vector<KeyValue> keys = {
        {"Program", "SoundOn", FlagText(o.SoundOn)},
        {"Program", "DisplayTooltips", FlagText(o.DisplayTooltips)},
        {"Display", "LockBase", FlagText(o.ckLockBase)},
        {"Display", "FractionWindow", o.cbFraction},
        {"Display", "DisplayTrace", FlagText(s.display.DisplayTrace)},
        {"Display", "GroupNavigate", groupNavigate},
        {"Display", "JumpInterval", jumpInterval},
        {"Analysis", "ComplexPeak", FlagText(o.ComplexPeak)},
        {"Display", "FilterType", Str(std::int64_t(o.FilterType))},
        {"Display", "FilterFreq", o.FilterFreq},
    };
    WriteKeys(iniFile, keys);
    o.SoundFlag = o.SoundOn;
    s.display.LockBase = o.ckLockBase;
    o.DisplayTraceFlag = s.display.DisplayTrace;
    o.ComplexPeakFlag = o.ComplexPeak;
    s.display.FractionWindow = fraction;
    ReportSaved(dialogs);
}

bool menu_SaveSettingsCustom(Session& s, UserDialogs& dialogs, const fs::path& iniFile) {
    return SaveCustom(dialogs, iniFile, [&] { Command6(s, dialogs, iniFile); });
}

std::optional<MainWindowTexts> menu_LoadSettings(Session& s, UserDialogs& dialogs,
                                                 const fs::path& iniFile) {
    const auto chosen = dialogs.OpenFileName(CustomLoadSpec(iniFile));
    if (!chosen) return std::nullopt;
    return LoadIniSettings(s, *chosen, iniFile.parent_path());
}

bool ApplyAnalysisParam(Session& s, std::string_view key, std::string_view valueText) {
    // The file reader drops the blanks around a value; a value given directly loses them too.
    const std::string_view text = TrimSpaceTab(valueText);
    if (EqualsNoCase(key, "PeakDirection%")) {
        s.params.PeakDirection = PeakDirectionFrom(text);
        return true;
    }
    for (const DetectionKey& k : kDetectionKeys) {
        if (EqualsNoCase(key, k.key)) {
            SetDetectionKey(s.params, k, text);
            return true;
        }
    }
    if (EqualsNoCase(key, "ComplexPeak")) {
        s.options.ComplexPeakFlag = FlagFrom("Analysis", "ComplexPeak", text);
        s.options.ComplexPeak = s.options.ComplexPeakFlag;
        return true;
    }
    if (EqualsNoCase(key, "NumberPointsPeak")) {
        const std::int16_t n = IntegerFrom("Analysis", "NumberPointsPeak", text);
        s.options.Combo2 = std::string(text);
        s.params.NumberPointsPeak = n;
        return true;
    }
    // The filter's two keys live in the Display section; they are accepted here as well so that
    // one option sets everything the detection sees.
    if (EqualsNoCase(key, "FilterType")) {
        s.options.FilterType = IntegerFrom("Display", "FilterType", text);
        return true;
    }
    if (EqualsNoCase(key, "FilterFreq")) {
        s.options.FilterFreq = std::string(text);
        return true;
    }
    return false;
}

std::vector<std::string> RenderEffectiveSettings(const Session& s) {
    const DetectionParameters& p = s.params;
    const ProgramOptions& o = s.options;
    const int channel = s.recording.ChannelIndex < 16 ? s.recording.ChannelIndex : 0;
    std::vector<std::string> lines;
    auto line = [&](std::string_view key, const std::string& value) {
        lines.push_back(std::string(key) + "=" + value);
    };
    lines.push_back("[Program]");
    line("DataDir", o.DataDir);
    line("SoundOn", FlagText(o.SoundOn));
    line("DisplayTooltips", FlagText(o.DisplayTooltips));
    lines.push_back("[Display]");
    line("LockBase", FlagText(s.display.LockBase));
    line("FractionWindow", Str(s.display.FractionWindow));
    line("DisplayTrace", FlagText(s.display.DisplayTrace));
    line("DisplayGain", Str(s.display.DisplayGain[0]));
    line("DisplayOffset&", Str(s.display.DisplayOffset[0]));
    if (channel != 0) {
        // What the active channel is drawn with, when it is not channel 0.
        lines.push_back("; channel " + CStr(channel) + ": DisplayGain" +
                        Str(s.display.DisplayGain[std::size_t(channel)]) + ", DisplayOffset&" +
                        Str(s.display.DisplayOffset[std::size_t(channel)]));
    }
    line("DisplayTotalNumberBlockPerScreen", Str(s.recording.BlocksPerScreen));
    line("GroupNavigate", Str(Val(o.GroupNavigate)));
    line("JumpInterval", Str(Val(o.JumpInterval)));
    line("FilterType", Str(std::int64_t(o.FilterType)));
    line("FilterFreq", o.FilterFreq);
    lines.push_back("[Analysis]");
    line("PeakDirection%", Str(p.PeakDirection));
    for (const DetectionKey& k : kDetectionKeys) line(k.key, DetectionKeyStr(p, k));
    line("ComplexPeak", FlagText(o.ComplexPeak));
    line("NumberPointsPeak", Str(p.NumberPointsPeak));
    return lines;
}

// ---------------------------------------------------------------------------------------------
// Group analysis window

GroupAnalysisSettings LoadGroupAnalysisSettings(const fs::path& file) {
    return ReadWindowKeys<GroupAnalysisSettings>(
        file, [](auto& g, auto&& f) { VisitGroupAnalysisKeys(g, false, f); });
}

void SaveGroupAnalysisSettings(const GroupAnalysisSettings& g, UserDialogs& dialogs,
                               const fs::path& iniFile) {
    WriteKeys(iniFile,
              WindowKeyValues(g, [](auto& x, auto&& f) { VisitGroupAnalysisKeys(x, true, f); }));
    ReportSaved(dialogs);
}

bool SaveGroupAnalysisSettingsCustom(const GroupAnalysisSettings& g, UserDialogs& dialogs,
                                     const fs::path& iniFile) {
    return SaveCustom(dialogs, iniFile, [&] { SaveGroupAnalysisSettings(g, dialogs, iniFile); });
}

bool LoadGroupAnalysisSettingsCustom(GroupAnalysisSettings& g, UserDialogs& dialogs,
                                     const fs::path& iniFile) {
    const auto chosen = dialogs.OpenFileName(CustomLoadSpec(iniFile));
    if (!chosen) return false;
    g = LoadGroupAnalysisSettings(*chosen);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Heart rate windows

HrvSettings LoadHrvSettings(const fs::path& file) {
    return ReadWindowKeys<HrvSettings>(file, [](auto& h, auto&& f) { VisitHrvKeys(h, f); });
}

void SaveHrvSettings(const HrvSettings& h, UserDialogs& dialogs, const fs::path& iniFile) {
    WriteKeys(iniFile, WindowKeyValues(h, [](auto& x, auto&& f) { VisitHrvKeys(x, f); }));
    ReportSaved(dialogs);
}

HrvSpectralSettings LoadHrvSpectralSettings(const fs::path& file) {
    return ReadWindowKeys<HrvSpectralSettings>(
        file, [](auto& h, auto&& f) { VisitHrvSpectralKeys(h, f); });
}

void SaveHrvSpectralSettings(const HrvSpectralSettings& h, UserDialogs& dialogs,
                             const fs::path& iniFile) {
    WriteKeys(iniFile, WindowKeyValues(h, [](auto& x, auto&& f) { VisitHrvSpectralKeys(x, f); }));
    ReportSaved(dialogs);
}

HrvGeoSettings LoadHrvGeoSettings(const fs::path& file) {
    return ReadWindowKeys<HrvGeoSettings>(file, [](auto& h, auto&& f) { VisitHrvGeoKeys(h, f); });
}

void SaveHrvGeoSettings(const HrvGeoSettings& h, UserDialogs& dialogs, const fs::path& iniFile) {
    WriteKeys(iniFile, WindowKeyValues(h, [](auto& x, auto&& f) { VisitHrvGeoKeys(x, f); }));
    ReportSaved(dialogs);
}

}  // namespace ardel
