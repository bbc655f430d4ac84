// The time-domain measures of heart rate variability (the HRV window): over the whole record
// and per segment of a fixed number of sample points, one row of measures per analysis so that
// several files compare in one table.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "hrv/beat_intervals.h"

namespace ardel::hrv {

// One row of the measures grid: the file's name and up to 40 single-precision measures, of
// which the first kTimeDomainMeasures are used.
struct TimeDomainRow {
    std::string FileName;
    std::array<float, 40> values{};
};
inline constexpr int kTimeDomainMeasures = 15;
// The measures' order in a row.
enum TimeDomainMeasure : int {
    kMRR, kSDRR, kCV, kMANN, kSDANN, kMSDNN, kSDSDNN, kNRR, kNdRR, kNSegment,
    kMdRR, kSDdRR, kRMSSD, kPercentNN, kNNN
};

// One segment of the last analysis.
struct SegmentRecord {
    std::int32_t number = 0;
    double startTime = 0;  // s
    std::int64_t nRR = 0;
    double mean = 0;
    double sd = 0;
};

// The HRV window's controls, with a freshly loaded form's defaults.
struct HrvForm {
    std::string Caption = "Heart Rate Variability Analysis: Time Domain Measurements";
    std::string Combo2 = "100";    // RRUBound: "Do not use RR intervals greater than"
    std::string Combo3 = "10";     // RRLBound: "and smaller than"
    std::string Text1 = "30000";   // NPointsSeg: sample points per segment
    std::string Combo1 = "50";     // ThreshdeltaRR: delta RR threshold of %NN and nNN (ms)
    bool Check1 = false;           // IncludeZero: segments with no interval count
    bool Check2 = false;           // ExcludeLastSeg
    // The segment's duration beside Text1: NPointsSeg x sample interval, in ms.
    std::string Label4;
    std::vector<TimeDomainRow> TDBGrid1;      // "Time-Domain Measures"
    std::vector<SegmentRecord> TDBGrid2;      // "Segment Results", of the last analysis

    RRBounds Bounds() const;
};

inline constexpr std::string_view kTimeDomainCaption = "Time-Domain Measures";
inline constexpr std::string_view kSegmentCaption = "Segment Results";
// The column captions of the two grids.
extern const std::array<std::string_view, 16> kTimeDomainColumns;
extern const std::array<std::string_view, 5> kSegmentColumns;
// What a click on a column header of the measures grid shows, titled "Definition".
std::string_view TimeDomainDefinition(int column);
void HRV_TDBGrid1_HeadClick(UserDialogs& ui, int column);

// Label4's text for the form's segment size and the open file's sample interval.
void UpdateSegmentTime(HrvForm& f, const Session& s);

// The measures of a list of events, without any question: what "Start Analysis" computes once
// the table is in the order it is used in. totalPoints is the channel's sample count and
// sampleIntervalUs its sample interval.
struct TimeDomainInput {
    RRBounds bounds;
    double pointsPerSegment = 30000;
    double thresholdDeltaRR = 50;
    bool includeZero = false;
    bool excludeLastSegment = false;
    double totalPoints = 0;
    double sampleIntervalUs = 0;
};
struct TimeDomainResult {
    std::array<float, kTimeDomainMeasures> measures{};
    std::vector<SegmentRecord> segments;
};
// pointsPerSegment must be above 0 and the segments not too many (SegmentCountProblem).
TimeDomainResult ComputeTimeDomain(const EventTable& events, const TimeDomainInput& in);
// Why the segments cannot be made (a segment of no points, too many segments), as the message
// to show; empty when they can.
std::string SegmentCountProblem(double totalPoints, double pointsPerSegment);

// "Start Analysis" (Command1): the sort question, then one more row and the last segments.
void HRV_Command1(Session& s, UserDialogs& ui, HrvForm& f);

// The grids as text: the column captions, then one line per row, each cell followed by a tab,
// numbers through Str, CR LF line ends. Saved, copied and shown to scripts alike.
std::string TimeDomainGridText(const HrvForm& f);
std::string SegmentGridText(const HrvForm& f);
// The cells as the window shows them (numbers without the leading blank).
std::vector<std::vector<std::string>> TimeDomainGridCells(const HrvForm& f);
std::vector<std::vector<std::string>> SegmentGridCells(const HrvForm& f);

// menu_TimeDomain and menu_SegmentResults: save a grid's text through a save dialog; an
// existing file is refused.
void SaveGridText(const Session& s, UserDialogs& ui, const std::string& text);

// The HRV section of the settings: read at the form's load, written by "Save Options"
// (Command2) with its message.
void LoadIniSettings(HrvForm& f, const std::filesystem::path& iniFile);
void HRV_Command2(UserDialogs& ui, const HrvForm& f, const std::filesystem::path& iniFile);

}  // namespace ardel::hrv
