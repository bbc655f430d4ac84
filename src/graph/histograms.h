// The Plot menu's histograms and time courses of event fields and Data Arrays: frequency,
// cumulative with and without bins, inverse cumulative, the running average with its SEM, and
// the X-Y plot of the two arrays. Each opens a new graph (graph_sink.h).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Family offsets of Histogram's Kind (Kind = offset + field code 1..15).
inline constexpr int kFrequencyKind = 0;
inline constexpr int kCumulativeKind = 20;
inline constexpr int kCumulativeNoBinKind = 40;
inline constexpr int kInverseCumulativeKind = 60;
inline constexpr int kFieldInterval = 13;
inline constexpr int kFieldArray1 = 14;
inline constexpr int kFieldArray2 = 15;
// More bins than this are refused with "Too many bins".
inline constexpr std::int64_t kMaxBins = 60000;

// The captions of the Plot menu's field items 1..15 (index 0 unused).
extern const std::array<std::string_view, 16> kPlotFieldCaptions;
// The running average's items: 1 and 3..14 (14: Array #2 against the times in Array #1).
std::string_view RunningAverageCaption(int field);

// Sorts the event table by time as "Sort Events by Time" does; the inter-event interval
// needs it. Passed in because the event list's sort sits above the graphs.
using SortByTime = std::function<void(Session&)>;

// Histogram(Kind): collects the values into Session::HistogramData, asks the bin size where
// the kind has bins, and opens the graph. Kinds without a field (16-20, 36-40, 56-60) and
// kinds outside 1..75 do nothing.
void Histogram(Session& s, UserDialogs& ui, int kind, const SortByTime& sortByTime);

// RunningAveragePlot(Field): the mean of the field per time bin, with SEM error bars.
void RunningAveragePlot(Session& s, UserDialogs& ui, int field, const SortByTime& sortByTime);

// "X-Y plot of Array #1 and Array #2".
void menu_plotscatterXY(Session& s, UserDialogs& ui);

// A frequency histogram of Session::HistogramData (elements 1..) under names of the caller's,
// counted as the Plot menu's frequency histograms count: the bin size asked, floor-based bins
// spanning lowest..highest, the bin limit and its message. The heart rate commands use it for
// their interval histograms.
struct FrequencyHistogramNames {
    std::string name;        // what is counted: "RR Interval"
    std::string unit;        // "msec"
    std::string defaultBin;  // the bin size box's default
    std::string caption;     // the window's caption
    std::string leftTitle;   // "Number of RR Intervals"
};
void FrequencyHistogramOf(Session& s, UserDialogs& ui, const FrequencyHistogramNames& names,
                          float lowest, float highest);

// The counters of a histogram: bin k holds the values v with floor(v / binSize) = k, for k
// from lower to upper.
struct BinCounts {
    std::int32_t lower = 0;
    std::int32_t upper = 0;
    std::vector<std::int32_t> counts;  // counts[k - lower]
};

enum class BinResult {
    Ok,
    TooManyBins,       // more than kMaxBins
    SubscriptError,    // a value outside the bins allotted from lowest..highest
    Overflow,          // a bin number beyond 32 bits
};

// Counts values into the bins that lowest..highest span. A value outside them is the
// runtime's subscript error, reported before the bin limit as the counting came first.
// Bin numbers are floor(value / binSize) in single precision.
BinResult CountBins(std::span<const float> values, float lowest, float highest, float binSize,
                    BinCounts& out);

// CountBins, with a failure reported as the program does ("Too many bins", or the runtime's
// subscript error or overflow); true when the counts are there.
bool CountOrSay(UserDialogs& ui, std::span<const float> values, float lowest, float highest,
                float bin, BinCounts& counts);

}  // namespace ardel
