// The detection parameters and the program options that the main window's controls hold.
#pragma once

#include <cstdint>
#include <string>

namespace ardel {

// Key names of the settings file's "Analysis" section carry their type mark.
struct DetectionParameters {
    float ThresholdAmplitude = 5;           // "ThresholdAmplitude!", amplitude unit
    std::int32_t PeriodToSearchMax = 10000;   // "PeriodToSearchMax&", microseconds
    std::int32_t PeriodStartBaseline = 6000;  // "PeriodStartBaseline&", microseconds
    std::int32_t PeriodFindDecayTime = 20000; // "PeriodFindDecayTime&", microseconds
    float DecayPercent = 0.32f;             // "DecayPercent!", fraction of amplitude
    std::int32_t PeriodBaselineAverage = 2000;  // "PeriodBaselineAverage&", microseconds
    float AreaThreshold = 50;               // "AreaThreshold!", amplitude unit x ms
    std::int16_t PeakDirection = -1;        // "PeakDirection%", +1 or -1
    std::int16_t NumberPointsPeak = 1;      // "NumberPointsPeak", points

    bool operator==(const DetectionParameters&) const = default;
};

// Check boxes and combo boxes of the options panel and the analysis frame.
struct ProgramOptions {
    bool SoundOn = false;          // ckSoundOn
    bool DisplayTooltips = true;   // ckTooltips
    bool ComplexPeak = false;      // ckComplexPeak
    bool FilterOn = false;         // Check1
    std::int32_t FilterType = 4;   // list index of Combo4
    std::string FilterFreq = "1000";  // text of Combo5, Hz
    std::string GroupNavigate = "1";  // cbGpNav
    std::string JumpInterval = "1000";  // cbInterval, ms
    std::string DataDir;           // folder shown in the file list

    // Program-wide flags behind the panel's check boxes. The full settings save writes these,
    // and the boxes reach them only through a load or the options save, so a box clicked and
    // not saved from the panel leaves them as they were.
    bool SoundFlag = false;          // key "SoundOn"
    bool ComplexPeakFlag = false;    // key "ComplexPeak"
    bool DisplayTraceFlag = true;    // key "DisplayTrace"
    bool ckLockBase = false;         // the panel's box; DisplayState::LockBase is the flag
    std::string cbFraction = "0.25";  // the panel's text; DisplayState::FractionWindow the value
    std::string Combo2 = "1";        // text behind NumberPointsPeak, saved as it stands

    bool operator==(const ProgramOptions&) const = default;
};

}  // namespace ardel
