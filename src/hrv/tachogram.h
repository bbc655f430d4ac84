// The commands made directly from the beat intervals: the tachogram as a graph, as text and as
// a recording, the RR and delta-RR histograms, the Lorenz plot, and the two scans that mark
// bad beats.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "hrv/beat_intervals.h"

namespace ardel::hrv {

// The group numbers the scans give.
inline constexpr std::uint8_t kRejectedGroup = 255;
inline constexpr std::uint8_t kMissingBeatGroup = 253;

// One interval of a tachogram: the number of the beat that ends it, and its length in ms.
struct Beat {
    std::int32_t number = 0;
    float rr = 0;
};

// The tachogram commands of the main menu take every interval; those of the time-domain window
// only the intervals within its bounds (filter set).
using IntervalFilter = std::optional<RRBounds>;

// What every tachogram command does first: nothing without events (nullopt); else the table is
// sorted by time for good, HistogramData is dimensioned 1 to N and holds RR(i) at i, and the
// intervals the filter lets through come back in beat order.
std::optional<std::vector<Beat>> PrepareTachogram(Session& s, const IntervalFilter& filter);

// "Generate Plot": RR against beat number.
void menu_TachogramPlot(Session& s, const IntervalFilter& filter = {});
// "Save as ASCII": the tachogram text through a save dialog.
void menu_TachogramASCII(Session& s, UserDialogs& ui, const IntervalFilter& filter = {});
// The tachogram text of a data file, CR LF line ends.
std::string TachogramText(const std::filesystem::path& dataFile, const std::vector<Beat>& beats);
// "Save as ABF File": the intervals as a one-channel recording written from the template beside
// the program (programDir), named after the data file.
void menu_TachogramABF(Session& s, UserDialogs& ui, const std::filesystem::path& programDir,
                       const IntervalFilter& filter = {});

// "RR Interval Histogram" and "Delta RR Interval Histogram".
void menu_RRHisto(Session& s, UserDialogs& ui);
void menu_DeltaRRHisto(Session& s, UserDialogs& ui);
// "Lorenz Plot": each interval against the next.
void menu_LorenzPlot(Session& s);

// HRVSpurious "Scan and Select": intervals shorter than the value asked reject their second
// beat (group 255). No sort: neighbours in table order.
void HRVSpurious_Command1(Session& s, UserDialogs& ui);
// "Scan Missing Beats": intervals longer than the value asked mark their first beat (group 253).
void menu_ScanMissingBeats(Session& s, UserDialogs& ui);

}  // namespace ardel::hrv
