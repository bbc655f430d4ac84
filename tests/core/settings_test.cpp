#include "core/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "core/ini_file.h"
#include "core/safe_file.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;

// Records every interaction as one line and answers from queues; an interaction with nothing
// scripted for it fails the test.
class ScriptedDialogs : public UserDialogs {
  public:
    std::vector<std::string> log;
    std::deque<Answer> answers;
    std::deque<std::optional<fs::path>> fileNames;
    std::vector<FileDialogSpec> specs;

    void Message(std::string_view title, std::string_view text) override {
        log.push_back("Message|" + std::string(title) + "|" + std::string(text));
    }
    Answer Ask(std::string_view title, std::string_view text, Buttons, Answer) override {
        log.push_back("Ask|" + std::string(title) + "|" + std::string(text));
        if (answers.empty()) {
            ADD_FAILURE() << "unexpected question: " << text;
            return Answer::Cancel;
        }
        const Answer a = answers.front();
        answers.pop_front();
        return a;
    }
    std::optional<std::string> Input(std::string_view, std::string_view,
                                     std::string_view) override {
        ADD_FAILURE() << "unexpected input box";
        return std::nullopt;
    }
    std::optional<fs::path> SaveFileName(const FileDialogSpec& spec) override {
        log.push_back("Save");
        return NextName(spec);
    }
    std::optional<fs::path> OpenFileName(const FileDialogSpec& spec) override {
        log.push_back("Open");
        return NextName(spec);
    }
    std::vector<fs::path> OpenFileNames(const FileDialogSpec&) override {
        ADD_FAILURE() << "unexpected dialog";
        return {};
    }
    std::string ClipboardText() override { return {}; }
    void SetClipboardText(std::string_view) override {}
    void Beep() override {}
    void Yield() override {}

  private:
    std::optional<fs::path> NextName(const FileDialogSpec& spec) {
        specs.push_back(spec);
        if (fileNames.empty()) {
            ADD_FAILURE() << "unexpected file dialog";
            return std::nullopt;
        }
        auto name = fileNames.front();
        fileNames.pop_front();
        return name;
    }
};

const std::string kSaved = "Message|Settings Saved|The settings are saved into Ardelvan.ini file.";

class SettingsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        programDir_ =
            fs::temp_directory_path() / ("ardel_set_" + std::to_string(std::random_device{}()));
        fs::create_directories(programDir_);
        ini_ = ArdelvanIniPath(programDir_);
    }
    void TearDown() override { fs::remove_all(programDir_); }

    void WriteIni(const std::string& text) { WriteFileReplacing(ini_, text); }
    std::string IniText() const { return ReadFileBytes(ini_).value_or("<missing>"); }
    std::string Key(const char* section, const char* key) const {
        return GetPrivateProfileString(section, key, "<none>", 100, ini_);
    }
    std::string ProgramDirWithSeparator() const {
        return programDir_.string() + char(fs::path::preferred_separator);
    }

    fs::path programDir_, ini_;
    Session s_;
    ScriptedDialogs dialogs_;
};

TEST(TextToBoolean, TakesWordsAndNumbersOnly) {
    for (const char* t : {"True", "tRUE", " true ", "-1", "1", "2.5", "1e3", "&H1", "#TRUE#"})
        EXPECT_EQ(TextToBoolean(t), std::optional<bool>(true)) << t;
    for (const char* t : {"False", "FALSE", "0", " 0 ", "-0", "0.0", "&H0"})
        EXPECT_EQ(TextToBoolean(t), std::optional<bool>(false)) << t;
    for (const char* t : {"", "Yes", "no", "1x", "e5", ".", "-", "Tru", "1e", "&H", "&HG"})
        EXPECT_EQ(TextToBoolean(t), std::nullopt) << t;
}

TEST_F(SettingsTest, MissingFileGivesTheTableDefaults) {
    s_.params.ThresholdAmplitude = 77;
    s_.params.PeakDirection = 1;
    s_.options.FilterFreq = "50";
    s_.display.FractionWindow = 0.9f;
    s_.recording.BlocksPerScreen = 16;
    const MainWindowTexts t = LoadIniSettings(s_, ini_, programDir_);

    EXPECT_EQ(s_.params, DetectionParameters{});
    ProgramOptions defaults;
    defaults.DataDir = ProgramDirWithSeparator();  // "c:\" is no folder here
    EXPECT_EQ(s_.options, defaults);
    EXPECT_FALSE(s_.display.LockBase);
    EXPECT_FLOAT_EQ(s_.display.FractionWindow, 0.25f);
    EXPECT_TRUE(s_.display.DisplayTrace);
    EXPECT_FLOAT_EQ(s_.recording.BlocksPerScreen, 4.0f);
    EXPECT_FALSE(t.ParkToolTips);
    EXPECT_EQ(t.Combo1, "Negative");
    EXPECT_EQ(t.Text4,
              (std::array<std::string, 7>{"5", "10000", "6000", "20000", "0.32", "2000", "50"}));
    EXPECT_FALSE(fs::exists(ini_));  // reading never creates the file
}

TEST_F(SettingsTest, MainWindowValuesAreCutAtNineCharactersButDataDirAt99) {
    const std::string dataDir = (programDir_ / "a folder with a long name").string();
    fs::create_directories(dataDir);
    ASSERT_GT(dataDir.size(), 9u);
    ASSERT_LT(dataDir.size(), 100u);
    WriteIni("[Program]\r\nDataDir=" + dataDir +
             "\r\n[Analysis]\r\nThresholdAmplitude!=1.23456789\r\n"
             "PeriodToSearchMax&=1234567890123\r\nNumberPointsPeak=2.5000000001\r\n"
             "[Display]\r\nGroupNavigate=1234567890\r\n");
    LoadIniSettings(s_, ini_, programDir_);
    EXPECT_EQ(s_.options.DataDir, dataDir);
    EXPECT_FLOAT_EQ(s_.params.ThresholdAmplitude, 1.2345678f);
    EXPECT_EQ(s_.params.PeriodToSearchMax, 123456789);
    // "2.5000000" is all that arrives, and it rounds half to even.
    EXPECT_EQ(s_.options.Combo2, "2.5000000");
    EXPECT_EQ(s_.params.NumberPointsPeak, 2);
    EXPECT_EQ(s_.options.GroupNavigate, "123456789");

    // A folder whose name is longer than the buffer is looked for under its cut name.
    const fs::path deep = fs::path(dataDir) / std::string(100, 'd');
    fs::create_directories(deep);
    WriteIni("[Program]\r\nDataDir=" + deep.string() + "\r\n");
    LoadIniSettings(s_, ini_, programDir_);
    EXPECT_EQ(s_.options.DataDir, ProgramDirWithSeparator());
}

TEST_F(SettingsTest, PeakDirectionOtherThanPlusOneIsNegative) {
    for (const auto& [text, expected, combo] :
         {std::tuple{"0", -1, "Negative"}, std::tuple{"1", 1, "Positive"},
          std::tuple{" 1", 1, "Positive"}, std::tuple{"-1", -1, "Negative"},
          std::tuple{"2", -1, "Negative"}}) {
        WriteIni(std::string("[Analysis]\r\nPeakDirection%=") + text + "\r\n");
        const MainWindowTexts t = LoadIniSettings(s_, ini_, programDir_);
        EXPECT_EQ(s_.params.PeakDirection, expected) << text;
        EXPECT_EQ(t.Combo1, combo) << text;
    }
}

TEST_F(SettingsTest, MissingDataDirFallsBackToTheProgramFolder) {
    WriteIni("[Program]\r\nDataDir=" + (programDir_ / "gone").string() + "\r\n");
    s_.options.DataDir = "unchanged?";
    LoadIniSettings(s_, ini_, programDir_);
    EXPECT_EQ(s_.options.DataDir, ProgramDirWithSeparator());
}

TEST_F(SettingsTest, OnlyChannelZeroKeepsAStoredGain) {
    WriteIni("[Display]\r\nDisplayGain= 2.5\r\nDisplayOffset&=-300\r\n");
    s_.display.DisplayGain.fill(3.0f);
    MainWindowTexts t = LoadIniSettings(s_, ini_, programDir_);
    EXPECT_FLOAT_EQ(s_.display.DisplayGain[0], 2.5f);
    for (int c = 1; c < 16; ++c) EXPECT_FLOAT_EQ(s_.display.DisplayGain[c], 1.0f) << c;
    EXPECT_EQ(s_.display.DisplayOffset[0], -300);
    EXPECT_EQ(t.Text1, "2.5");

    // With channel 3 active the stored gain goes to channel 3 and is then reset with the rest;
    // the box still shows what was read.
    Session other;
    other.recording.ChannelIndex = 3;
    other.display.DisplayGain.fill(3.0f);
    t = LoadIniSettings(other, ini_, programDir_);
    EXPECT_FLOAT_EQ(other.display.DisplayGain[0], 3.0f);
    EXPECT_FLOAT_EQ(other.display.DisplayGain[3], 1.0f);
    EXPECT_EQ(other.display.DisplayOffset[3], -300);
    EXPECT_EQ(other.display.DisplayOffset[0], 0);
    EXPECT_EQ(t.Text1, "2.5");
    EXPECT_EQ(t.Slider1, -300);
}

TEST_F(SettingsTest, FlagsTakeWordsOrNumbersAndRefuseAnythingElse) {
    WriteIni(
        "[Program]\r\nSoundOn=-1\r\nDisplayTooltips=false\r\n"
        "[Display]\r\nLockBase= 1 \r\nDisplayTrace=0\r\n[Analysis]\r\nComplexPeak=tRUE\r\n");
    MainWindowTexts t = LoadIniSettings(s_, ini_, programDir_);
    EXPECT_TRUE(s_.options.SoundFlag);
    EXPECT_TRUE(s_.options.SoundOn);
    EXPECT_TRUE(s_.display.LockBase);
    EXPECT_TRUE(s_.options.ckLockBase);
    EXPECT_FALSE(s_.display.DisplayTrace);
    EXPECT_TRUE(s_.options.ComplexPeak);
    // The tips are parked only for the exact word; the box still reads it as false.
    EXPECT_FALSE(t.ParkToolTips);
    EXPECT_FALSE(s_.options.DisplayTooltips);
    WriteIni("[Program]\r\nDisplayTooltips=False\r\n");
    EXPECT_TRUE(LoadIniSettings(s_, ini_, programDir_).ParkToolTips);

    WriteIni("[Display]\r\nLockBase=Yes\r\nDisplayGain=9\r\n");
    const Session before = s_;
    try {
        LoadIniSettings(s_, ini_, programDir_);
        FAIL() << "a flag reading \"Yes\" was accepted";
    } catch (const SettingsError& e) {
        EXPECT_EQ(e.Section(), "Display");
        EXPECT_EQ(e.Key(), "LockBase");
        EXPECT_EQ(e.Text(), "Yes");
        EXPECT_NE(std::string(e.what()).find("LockBase"), std::string::npos);
    }
    EXPECT_EQ(s_.display.DisplayGain, before.display.DisplayGain);
    EXPECT_EQ(s_.options, before.options);

    WriteIni("[Display]\r\nDisplayOffset&=1e10\r\n");
    EXPECT_THROW(LoadIniSettings(s_, ini_, programDir_), SettingsError);
}

TEST_F(SettingsTest, FullSaveOnChannelThreeStoresChannelZeroInItsOrder) {
    s_.options.DataDir = "/data/cells/";
    s_.recording.ChannelIndex = 3;
    s_.display.DisplayGain[0] = 2.5f;
    s_.display.DisplayOffset[0] = 100;
    s_.display.DisplayGain[3] = 8.0f;
    s_.display.DisplayOffset[3] = -7;
    s_.params.ThresholdAmplitude = 12.5f;
    s_.options.Combo2 = "3";
    s_.options.ComplexPeak = true;  // the box alone: the flag is what the full save writes
    s_.options.cbFraction = "0.5";
    Command6(s_, dialogs_, ini_);
    EXPECT_EQ(IniText(),
              "[Program]\r\n"
              "DataDir=/data/cells/\r\n"
              "SoundOn=False\r\n"
              "[Display]\r\n"
              "LockBase=False\r\n"
              "DisplayGain= 2.5\r\n"
              "DisplayOffset&= 100\r\n"
              "DisplayTotalNumberBlockPerScreen= 4\r\n"
              "FilterType= 4\r\n"
              "FilterFreq=1000\r\n"
              "[Analysis]\r\n"
              "PeakDirection%=-1\r\n"
              "ThresholdAmplitude!= 12.5\r\n"
              "PeriodToSearchMax&= 10000\r\n"
              "PeriodStartBaseline&= 6000\r\n"
              "PeriodFindDecayTime&= 20000\r\n"
              "DecayPercent!= .32\r\n"
              "PeriodBaselineAverage&= 2000\r\n"
              "AreaThreshold!= 50\r\n"
              "ComplexPeak=False\r\n"
              "NumberPointsPeak=3\r\n");
    EXPECT_EQ(dialogs_.log, std::vector<std::string>{kSaved});
}

TEST_F(SettingsTest, OnlyTheOptionsSaveWritesThePanelAndTakesItsBoxesIntoEffect) {
    WriteIni("; mine\r\n[Display]\r\nFractionWindow=0.25\r\n");
    s_.options.cbFraction = "0.5";
    s_.options.ckLockBase = true;
    s_.options.ComplexPeak = true;
    s_.options.SoundOn = true;
    s_.options.GroupNavigate = "3";
    Command6(s_, dialogs_, ini_);
    EXPECT_EQ(Key("Display", "FractionWindow"), "0.25");
    EXPECT_EQ(Key("Display", "LockBase"), "False");
    EXPECT_EQ(Key("Analysis", "ComplexPeak"), "False");
    EXPECT_EQ(Key("Display", "GroupNavigate"), "<none>");
    EXPECT_FLOAT_EQ(s_.display.FractionWindow, 0.25f);

    Command7(s_, dialogs_, ini_);
    EXPECT_EQ(Key("Display", "FractionWindow"), "0.5");
    EXPECT_EQ(Key("Display", "LockBase"), "True");
    EXPECT_EQ(Key("Program", "SoundOn"), "True");
    EXPECT_NE(IniText().find("GroupNavigate= 3\r\n"), std::string::npos);  // through Str
    EXPECT_EQ(IniText().rfind("; mine\r\n[Display]\r\nFractionWindow=0.5\r\n", 0), 0u);
    EXPECT_FLOAT_EQ(s_.display.FractionWindow, 0.5f);
    EXPECT_TRUE(s_.display.LockBase);
    EXPECT_TRUE(s_.options.ComplexPeakFlag);
    EXPECT_TRUE(s_.options.SoundFlag);
    EXPECT_EQ(dialogs_.log, (std::vector<std::string>{kSaved, kSaved}));

    // The flags now hold, so a later full save keeps them.
    Command6(s_, dialogs_, ini_);
    EXPECT_EQ(Key("Analysis", "ComplexPeak"), "True");

    // Str of a text that is no number is a type error, not " 0"; nothing is written then.
    const std::string before = IniText();
    s_.options.JumpInterval = "soon";
    s_.options.cbFraction = "0.75";
    EXPECT_THROW(Command7(s_, dialogs_, ini_), SettingsError);
    EXPECT_EQ(IniText(), before);
    EXPECT_FLOAT_EQ(s_.display.FractionWindow, 0.5f);
}

TEST_F(SettingsTest, SavedSettingsLoadBackUnchanged) {
    s_.options.DataDir = programDir_.string();
    s_.params = {-2.5f, 500, 300, 40000, 0.5f, 100, 0.125f, 1, 3};
    s_.options.Combo2 = "3";
    s_.options.SoundOn = true;
    s_.options.DisplayTooltips = false;
    s_.options.ComplexPeak = true;
    s_.options.FilterType = 2;
    s_.options.FilterFreq = "250";
    s_.options.GroupNavigate = "7";
    s_.options.JumpInterval = "500";
    s_.options.cbFraction = "0.75";
    s_.display.DisplayTrace = false;
    s_.display.DisplayGain[0] = 0.1f;
    s_.display.DisplayOffset[0] = -1234;
    s_.recording.BlocksPerScreen = 8;
    Command7(s_, dialogs_, ini_);
    Command6(s_, dialogs_, ini_);

    Session loaded;
    const MainWindowTexts t = LoadIniSettings(loaded, ini_, programDir_);
    EXPECT_EQ(loaded.params, s_.params);
    EXPECT_EQ(loaded.options, s_.options);
    EXPECT_EQ(loaded.display.DisplayGain[0], 0.1f);
    EXPECT_EQ(loaded.display.DisplayOffset[0], -1234);
    EXPECT_FALSE(loaded.display.DisplayTrace);
    EXPECT_FLOAT_EQ(loaded.display.FractionWindow, 0.75f);
    EXPECT_FLOAT_EQ(loaded.recording.BlocksPerScreen, 8.0f);
    EXPECT_EQ(t.Text4[0], "-2.5");
    EXPECT_EQ(t.Combo1, "Positive");
}

TEST_F(SettingsTest, CustomSaveAsksBeforeReplacingThenCopiesTheFullSave) {
    const fs::path set = programDir_ / "cell.SET";
    dialogs_.fileNames = {std::nullopt};
    EXPECT_FALSE(menu_SaveSettingsCustom(s_, dialogs_, ini_));
    EXPECT_FALSE(fs::exists(ini_));
    ASSERT_EQ(dialogs_.specs.size(), 1u);
    EXPECT_EQ(dialogs_.specs[0].fileName, "*.SET");
    EXPECT_EQ(dialogs_.specs[0].defaultExtension, "SET");
    EXPECT_EQ(dialogs_.specs[0].filter, "Custom Settings File (*.SET)");
    EXPECT_EQ(dialogs_.specs[0].initialDirectory, programDir_);

    WriteFileReplacing(set, "old");
    dialogs_.log.clear();
    dialogs_.fileNames = {set};
    dialogs_.answers = {Answer::No};
    EXPECT_FALSE(menu_SaveSettingsCustom(s_, dialogs_, ini_));
    EXPECT_EQ(ReadFileBytes(set), "old");
    EXPECT_FALSE(fs::exists(ini_));

    WriteIni("[Other]\r\nKeep=1\r\n");
    dialogs_.log.clear();
    dialogs_.fileNames = {set};
    dialogs_.answers = {Answer::Yes};
    EXPECT_TRUE(menu_SaveSettingsCustom(s_, dialogs_, ini_));
    EXPECT_EQ(dialogs_.log,
              (std::vector<std::string>{
                  "Save", "Ask|Replace File|File already exist.  Do you want to replace this file?",
                  kSaved}));
    EXPECT_EQ(Key("Other", "Keep"), "1");
    EXPECT_EQ(Key("Analysis", "PeakDirection%"), "-1");
    EXPECT_EQ(ReadFileBytes(set), ReadFileBytes(ini_));
}

TEST_F(SettingsTest, AFileThatIsThereButCannotBeReadIsAnErrorNotTheDefaults) {
    s_.params.ThresholdAmplitude = 42;
    fs::create_directory(ini_);  // a folder where the file should be
    EXPECT_THROW(LoadIniSettings(s_, ini_, programDir_), SettingsError);
    EXPECT_THROW(LoadGroupAnalysisSettings(ini_), SettingsError);
    EXPECT_THROW(LoadHrvSettings(ini_), SettingsError);
    fs::remove(ini_);

    // A pipe is refused without waiting for a writer.
    ASSERT_EQ(::mkfifo(ini_.c_str(), 0600), 0);
    try {
        LoadIniSettings(s_, ini_, programDir_);
        ADD_FAILURE() << "a pipe was loaded as settings";
    } catch (const SettingsError& e) {
        EXPECT_EQ(std::string(e.what()), "The settings file \"" + ini_.string() +
                                             "\" cannot be read: it is a pipe, not a regular "
                                             "file.");
    }
    EXPECT_EQ(s_.params.ThresholdAmplitude, 42);  // the session is as it was
    fs::remove(ini_);

    WriteIni("[Analysis]\r\nThresholdAmplitude!=8\r\n");
    fs::permissions(ini_, fs::perms::none);
    if (::geteuid() != 0) {  // the superuser reads whatever the permissions say
        EXPECT_THROW(LoadIniSettings(s_, ini_, programDir_), SettingsError);
        EXPECT_EQ(s_.params.ThresholdAmplitude, 42);
    }
}

TEST_F(SettingsTest, ACustomSaveThatFailsKeepsTheOldCustomFile) {
    const fs::path set = programDir_ / "cell.SET";
    WriteFileReplacing(set, "old");
    WriteIni("[Other]\r\nKeep=1\r\n");
    {
        ScopedWriteCall full([](int, const void*, std::size_t) -> ssize_t {
            errno = ENOSPC;
            return -1;
        });
        dialogs_.fileNames = {set};
        dialogs_.answers = {Answer::Yes};
        EXPECT_THROW(menu_SaveSettingsCustom(s_, dialogs_, ini_), SettingsError);
    }
    EXPECT_EQ(ReadFileBytes(set), "old");
    EXPECT_EQ(IniText(), "[Other]\r\nKeep=1\r\n");
}

TEST_F(SettingsTest, ACustomFileCarriesEverySectionAndLoadsOnlyTheWindowsOwn) {
    GroupAnalysisSettings g;
    g.GroupAnalysis.DisplayGroup = false;
    g.GroupAnalysis.AnalysisType = "Scaled Superimpose";
    g.Fitting.tau2 = "250";
    g.Fitting.IncludeOffset = true;
    g.RandomWalk.Tolerance = "0.01";
    g.NonStationary.IncludeOffset = true;
    SaveGroupAnalysisSettings(g, dialogs_, ini_);
    HrvSettings h;
    h.NPointsSeg = "1000";
    SaveHrvSettings(h, dialogs_, ini_);

    const fs::path set = programDir_ / "all.SET";
    s_.params.ThresholdAmplitude = 42;
    dialogs_.fileNames = {set};
    ASSERT_TRUE(menu_SaveSettingsCustom(s_, dialogs_, ini_));

    // Ardelvan.ini moves on; the custom file keeps what it held then.
    SaveGroupAnalysisSettings(GroupAnalysisSettings{}, dialogs_, ini_);
    s_.params.ThresholdAmplitude = 5;
    Command6(s_, dialogs_, ini_);
    const std::string iniBefore = IniText();

    GroupAnalysisSettings loaded;
    dialogs_.fileNames = {set};
    ASSERT_TRUE(LoadGroupAnalysisSettingsCustom(loaded, dialogs_, ini_));
    EXPECT_EQ(loaded, g);
    EXPECT_EQ(dialogs_.specs.back().filter, "Custom Settings File (*.SET)|*.SET");
    EXPECT_EQ(LoadHrvSettings(set).NPointsSeg, "1000");

    dialogs_.fileNames = {set};
    ASSERT_TRUE(menu_LoadSettings(s_, dialogs_, ini_).has_value());
    EXPECT_FLOAT_EQ(s_.params.ThresholdAmplitude, 42.0f);
    EXPECT_EQ(IniText(), iniBefore);

    dialogs_.fileNames = {std::nullopt};
    EXPECT_FALSE(LoadGroupAnalysisSettingsCustom(loaded, dialogs_, ini_));
    EXPECT_EQ(loaded, g);
}

TEST_F(SettingsTest, GroupAnalysisKeysDefaultsCutAndSaveOrder) {
    EXPECT_EQ(LoadGroupAnalysisSettings(ini_), GroupAnalysisSettings{});

    SaveGroupAnalysisSettings(GroupAnalysisSettings{}, dialogs_, ini_);
    EXPECT_EQ(dialogs_.log, std::vector<std::string>{kSaved});
    const std::string text = IniText();
    const std::size_t fitting = text.find("[Fitting]\r\n");
    const std::size_t randomWalk = text.find("[RandomWalk]\r\n");
    ASSERT_NE(fitting, std::string::npos);
    ASSERT_NE(randomWalk, std::string::npos);
    std::vector<std::string> keys;
    const std::string body = text.substr(fitting, randomWalk - fitting);
    for (std::size_t pos = body.find("\r\n") + 2; pos < body.size();
         pos = body.find("\r\n", pos) + 2)
        keys.push_back(body.substr(pos, body.find('=', pos) - pos));
    EXPECT_EQ(keys, (std::vector<std::string>{"FitRange",
                                              "MaxIteration",
                                              "IncludeOffset",
                                              "FixAmplitude",
                                              "NumberExponential",
                                              "Tolerance",
                                              "UseGuess",
                                              "tau1",
                                              "tau2",
                                              "tau3",
                                              "A1",
                                              "A2",
                                              "A3",
                                              "Rise",
                                              "WidthAboveThreshold",
                                              "Ym",
                                              "Yt",
                                              "UseThresholdBaseline",
                                              "AmperoRise",
                                              "Electrons",
                                              "DecayPercent"}));
    EXPECT_EQ(Key("Fitting", "IncludeOffset"), "False");
    EXPECT_EQ(Key("GroupAnalysis", "DisplayGroup"), "True");
    EXPECT_EQ(Key("GroupAnalysis", "DisplayOffset"), "0");  // no type mark in this window

    const std::string longText(150, 'x');
    WriteIni("[RandomWalk]\r\nType=" + longText + "\r\n[NonStationary]\r\nIncludeOffset=1\r\n");
    const GroupAnalysisSettings g = LoadGroupAnalysisSettings(ini_);
    EXPECT_EQ(g.RandomWalk.Type, std::string(99, 'x'));
    EXPECT_TRUE(g.NonStationary.IncludeOffset);
    EXPECT_FALSE(g.Fitting.IncludeOffset);  // same key, other section

    WriteIni("[GroupAnalysis]\r\nBaselineAdjust=checked\r\n");
    EXPECT_THROW(LoadGroupAnalysisSettings(ini_), SettingsError);
}

TEST_F(SettingsTest, HeartRateWindowsShareTheirCommonKeysAndTheLastSaveWins) {
    HrvSettings hrv;
    hrv.RRUBound = "200";
    hrv.NPointsSeg = "5000";
    hrv.IncludeZero = true;
    SaveHrvSettings(hrv, dialogs_, ini_);
    HrvSpectralSettings spectral;
    spectral.RRUBound = "150";
    spectral.Windowing = "Hanning";
    SaveHrvSpectralSettings(spectral, dialogs_, ini_);

    EXPECT_EQ(IniText(),
              "[HRV]\r\nRRUBound=150\r\nRRLBound=10\r\nNPointsSeg=5000\r\nThreshdeltaRR=50\r\n"
              "IncludeZero=True\r\nExcludeLastSeg=False\r\nRRBinSize=1\r\nDeltaRRBinSize=1\r\n"
              "Windowing=Hanning\r\n");
    const HrvSettings reread = LoadHrvSettings(ini_);
    EXPECT_EQ(reread.RRUBound, "150");
    EXPECT_EQ(reread.NPointsSeg, "5000");
    EXPECT_TRUE(reread.IncludeZero);
    EXPECT_EQ(LoadHrvGeoSettings(ini_).RRUBound, "150");
    EXPECT_EQ(LoadHrvSpectralSettings(ini_), spectral);
    EXPECT_EQ(dialogs_.log, (std::vector<std::string>{kSaved, kSaved}));
}

TEST_F(SettingsTest, AnalysisKeysCanBeSetByName) {
    EXPECT_TRUE(ApplyAnalysisParam(s_, "ThresholdAmplitude!", "12.5"));
    EXPECT_TRUE(ApplyAnalysisParam(s_, "periodtosearchmax&", " 2500.5 "));
    EXPECT_TRUE(ApplyAnalysisParam(s_, "PeakDirection%", "0"));
    EXPECT_TRUE(ApplyAnalysisParam(s_, "ComplexPeak", "True"));
    EXPECT_TRUE(ApplyAnalysisParam(s_, "NumberPointsPeak", "5"));
    EXPECT_FLOAT_EQ(s_.params.ThresholdAmplitude, 12.5f);
    EXPECT_EQ(s_.params.PeriodToSearchMax, 2500);  // half to even
    EXPECT_EQ(s_.params.PeakDirection, -1);
    EXPECT_TRUE(s_.options.ComplexPeak);
    EXPECT_TRUE(s_.options.ComplexPeakFlag);
    EXPECT_EQ(s_.params.NumberPointsPeak, 5);
    EXPECT_EQ(s_.options.Combo2, "5");
    // No 9-character cut: the value does not come through the file's buffer.
    EXPECT_TRUE(ApplyAnalysisParam(s_, "AreaThreshold!", "1234567890"));
    EXPECT_FLOAT_EQ(s_.params.AreaThreshold, 1234567890.0f);

    EXPECT_FALSE(ApplyAnalysisParam(s_, "ThresholdAmplitude", "1"));  // the mark is the name
    EXPECT_FALSE(ApplyAnalysisParam(s_, "DisplayGain", "1"));
    EXPECT_THROW(ApplyAnalysisParam(s_, "ComplexPeak", "maybe"), SettingsError);
    EXPECT_THROW(ApplyAnalysisParam(s_, "NumberPointsPeak", "40000"), SettingsError);
}

TEST_F(SettingsTest, EffectiveSettingsAreListedAsTheFileWouldHoldThem) {
    ApplyAnalysisParam(s_, "DecayPercent!", "0.5");
    const std::vector<std::string> lines = RenderEffectiveSettings(s_);
    auto has = [&](const std::string& line) {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    };
    EXPECT_TRUE(has("[Analysis]"));
    EXPECT_TRUE(has("DecayPercent!= .5"));
    EXPECT_TRUE(has("PeakDirection%=-1"));
    EXPECT_TRUE(has("NumberPointsPeak= 1"));
    EXPECT_TRUE(has("DisplayTotalNumberBlockPerScreen= 4"));
    EXPECT_TRUE(has("FractionWindow= .25"));
}

}  // namespace
}  // namespace ardel
