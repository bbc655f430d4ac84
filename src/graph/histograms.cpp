#include "graph/histograms.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "core/number_text.h"
#include "graph/graph_model.h"
#include "graph/graph_sink.h"

namespace ardel {

const std::array<std::string_view, 16> kPlotFieldCaptions = {
    "",           "Amplitude",     "Time",          "Time to Rise",         "Time to Decay",
    "Area",       "Noise",         "Baseline",      "Rise10-90",            "Half-width",
    "Rise 50",    "Slope10-90",    "Relative Time", "Inter-event interval", "Array #1",
    "Array #2"};

std::string_view RunningAverageCaption(int field) {
    if (field == kFieldArray1) return "Array #2 vs. Time in Array #1";
    if (field < 1 || field > kFieldInterval || field == 2) return {};
    return kPlotFieldCaptions[std::size_t(field)];
}

namespace {

enum class Unit { Adc, Sec, Msec, AdcMs, AdcPerMsec, XAxis };

struct Field {
    std::string_view name;
    Unit unit;
    std::string_view defaultBin;
};

constexpr std::array<Field, 16> kFields = {{
    {"", Unit::XAxis, ""},
    {"Amplitude", Unit::Adc, "1"},
    {"Time", Unit::Sec, "10"},
    {"Rise-time", Unit::Msec, "1"},
    {"Decay-time", Unit::Msec, "1"},
    {"Area", Unit::AdcMs, "10"},
    {"Noise", Unit::Adc, "1"},
    {"Baseline", Unit::Adc, "1"},
    {"Rise 10-90", Unit::Msec, "0.1"},
    {"Half-width", Unit::Msec, "1"},
    {"Rise 50", Unit::Msec, "0.1"},
    {"Slope10-90", Unit::AdcPerMsec, "1"},
    {"Relative Time", Unit::Msec, "10"},
    {"Inter-event Interval", Unit::Msec, "100"},
    {"Data Array#1", Unit::XAxis, "1"},
    {"Data Array#2", Unit::XAxis, "1"},
}};

std::string UnitText(const Session& s, Unit u) {
    const std::string& adc = s.recording.ADCUnits;
    switch (u) {
        case Unit::Adc: return adc;
        case Unit::Sec: return "sec";
        case Unit::Msec: return "msec";
        case Unit::AdcMs: return adc + "ms";
        case Unit::AdcPerMsec: return adc + "/msec";
        case Unit::XAxis: return "x-axis unit";
    }
    return {};
}

// The field's value of one event, converted as the histograms show it.
float EventValue(const Session& s, const EventRecord& e, int field) {
    const Recording& r = s.recording;
    switch (field) {
        case 1: return r.Bit2pA2(e.Amplitude);
        case 2: return e.Time / 1000.0f;
        case 3: return r.Bit2msec(e.Rise);
        case 4: return r.Bit2msec(e.Decay);
        case 5: return e.Area;
        case 6: return r.Bit2pA2(e.Noise);
        case 7: return r.Bit2pA(e.Baseline);
        case 8: return e.Rise1090;
        case 9: return e.HalfWidth;
        case 10: return r.Bit2msec(e.Rise50);
        case 11: return e.Slope1090;
        case 12: return r.Bit2msec(e.RelativeTime);
        default: return 0;
    }
}

// Which ends of the range a field's fill tracks. Both ends start at 0, so the range always
// holds 0. The table is uneven on purpose (see the subscript error it leads to).
struct Tracking {
    bool low = false;
    bool high = true;
};

Tracking RangeTracking(int field, bool grouped) {
    switch (field) {
        case 6:
        case 7: return grouped ? Tracking{false, true} : Tracking{true, true};
        case 11: return grouped ? Tracking{true, false} : Tracking{true, true};
        case kFieldArray1:
        case kFieldArray2: return {true, true};
        default: return {false, true};
    }
}

struct Collected {
    float lowest = 0;
    float highest = 0;
};

void Track(Collected& c, Tracking t, float v) {
    if (t.low && v < c.lowest) c.lowest = v;
    if (t.high && v > c.highest) c.highest = v;
}

// Asks the group; nullopt when the user cancelled or no event has the group (after the
// message). 0 means all events.
std::optional<double> AskGroup(const Session& s, UserDialogs& ui, std::int32_t& count) {
    const std::string reply = ui.InputText(
        "Group Number",
        "Please enter group number to plot grouped events only.  Entering zero will plot all "
        "events.",
        "0");
    if (reply.empty()) return std::nullopt;
    const double group = Val(reply);
    count = s.events.EventCount();
    if (group == 0) return group;
    count = 0;
    for (std::int32_t i = 1; i <= s.events.EventCount(); ++i)
        if (double(s.events[i].GroupNumber) == group) ++count;
    if (count == 0) {
        ui.Message("", "There is no events with group number " + CStr(group) +
                           ".  Try another group.");
        return std::nullopt;
    }
    return group;
}

// Fills HistogramData for the field; false when the command ends here.
bool CollectValues(Session& s, UserDialogs& ui, int field, const SortByTime& sortByTime,
                   Collected& range) {
    std::vector<float>& data = s.HistogramData;
    if (field == kFieldArray1 || field == kFieldArray2) {
        const DataArray& a = field == kFieldArray1 ? s.dataArray1 : s.dataArray2;
        if (a.UpperBound() <= 1) return false;
        data.assign(a.values.begin(), a.values.begin() + a.UpperBound() + 1);
        data[0] = 0;
        const Tracking t = RangeTracking(field, false);
        for (std::size_t i = 1; i < data.size(); ++i) Track(range, t, data[i]);
        return true;
    }
    if (s.events.EventCount() == 0) return false;
    std::int32_t count = 0;
    const auto group = AskGroup(s, ui, count);
    if (!group) return false;
    const bool grouped = *group != 0;
    const Tracking t = RangeTracking(field, grouped);
    data.assign(std::size_t(count) + 1, 0.0f);
    auto selected = [&](std::int32_t i) {
        return !grouped || double(s.events[i].GroupNumber) == *group;
    };
    if (field == kFieldInterval) {
        sortByTime(s);
        // Each event after the first selected one gives its distance to the one before; the
        // first place keeps its 0, which counts as a value.
        std::int32_t j = 0;
        float previous = 0;
        for (std::int32_t i = 1; i <= s.events.EventCount(); ++i) {
            if (!selected(i)) continue;
            const float time = s.events[i].Time;
            if (++j >= 2) {
                data[std::size_t(j)] = time - previous;
                Track(range, t, data[std::size_t(j)]);
            }
            previous = time;
        }
        return true;
    }
    std::int32_t j = 0;
    for (std::int32_t i = 1; i <= s.events.EventCount(); ++i) {
        if (!selected(i)) continue;
        const float v = EventValue(s, s.events[i], field);
        data[std::size_t(++j)] = v;
        Track(range, t, v);
    }
    return true;
}

// The bin size's input box; nullopt for an empty reply or 0, which end the command silently.
std::optional<float> AskBinSize(UserDialogs& ui, std::string_view title, const std::string& text,
                                 std::string_view defaultText) {
    const std::string reply = ui.InputText(title, text, defaultText);
    if (reply.empty()) return std::nullopt;
    // Bins are single precision, as the values: 3 / 0.1 falls into bin 30, not 29.
    const float bin = float(Val(reply));
    if (bin == 0) return std::nullopt;
    return bin;
}

std::span<const float> Values(const Session& s) {
    if (s.HistogramData.size() < 2) return {};
    return std::span<const float>(s.HistogramData).subspan(1);
}

// Ascending, as the float quicksort leaves them; a NaN (which no comparison orders) goes last.
void SortAscending(std::vector<float>& data) {
    if (data.size() < 2) return;
    auto end = std::partition(data.begin() + 1, data.end(), [](float v) { return !std::isnan(v); });
    std::sort(data.begin() + 1, end);
}

void FrequencyGraph(Session& s, const FrequencyHistogramNames& names, float bin,
                    const BinCounts& b) {
    GraphModel g;
    g.Caption = names.caption;
    g.GraphTitle = GraphTitleText(names.name + " Frequency Histogram " + s.Label11 +
                                  " bin size=" + CStr(bin));
    g.LeftTitle = names.leftTitle;
    g.BottomTitle = names.name + " (" + names.unit + ")";
    g.GraphStyle = kStyleBars;
    // Bars as wide as a bin, so that neighbours touch.
    g.BarWidth = bin;
    const std::int32_t n = b.upper - b.lower + 1;
    g.SetPointCount(n);
    for (std::int32_t i = 0; i < n; ++i)
        g.AddPoint(float(double(b.lower + i) * bin), float(b.counts[std::size_t(i)]));
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void CumulativeGraph(Session& s, const Field& f, const std::string& unit, float bin,
                     const BinCounts& b) {
    GraphModel g;
    const std::string name(f.name);
    const std::string title = "Cumulative " + name + " Histogram " + s.Label11;
    g.Caption = title;
    g.GraphTitle = GraphTitleText(title + " bin size=" + CStr(bin));
    g.LeftTitle = "Cumulative Fraction";
    g.BottomTitle = name + " (" + unit + ")";
    g.GraphStyle = kStyleLines;
    const double total = double(Values(s).size());
    const std::int32_t n = b.upper - b.lower + 2;
    g.SetPointCount(n);
    std::int64_t running = 0;
    for (std::int32_t i = 0; i < n; ++i) {
        g.AddPoint(float(double(b.lower + i) * bin), float(double(running) / total));
        if (i < n - 1) running += b.counts[std::size_t(i)];
    }
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void NoBinGraph(Session& s, const Field& f, const std::string& unit, bool inverse) {
    SortAscending(s.HistogramData);
    GraphModel g;
    const std::string name(f.name);
    const std::string title = GraphTitleText(std::string(inverse ? "Inverse Cumulative " : "Cumulative ") +
                                             name + " Histogram " + s.Label11);
    g.Caption = title;
    g.GraphTitle = title;
    g.LeftTitle = inverse ? "Fraction" : "Cumulative Fraction";
    g.BottomTitle = name + " (" + unit + ")";
    g.GraphStyle = kStyleLines;
    const auto values = Values(s);
    const double n = double(values.size());
    g.SetPointCount(std::int32_t(values.size()));
    for (std::size_t i = 1; i <= values.size(); ++i) {
        const double fraction = double(i) / n;
        g.AddPoint(values[i - 1], float(inverse ? 1.0 - fraction : fraction));
    }
    g.Redraw();
    OpenGraph(s, std::move(g));
}

}  // namespace

BinResult CountBins(std::span<const float> values, float lowest, float highest, float binSize,
                    BinCounts& out) {
    constexpr double kMin = std::numeric_limits<std::int32_t>::min();
    constexpr double kMax = std::numeric_limits<std::int32_t>::max();
    const double upper = std::floor(highest / binSize);
    const double lower = std::floor(lowest / binSize);
    if (!(upper >= kMin && upper <= kMax && lower >= kMin && lower <= kMax)) return BinResult::Overflow;
    // Bounds that changed places (a negative bin size) cannot be dimensioned.
    if (lower > upper) return BinResult::SubscriptError;
    out.lower = std::int32_t(lower);
    out.upper = std::int32_t(upper);
    const std::int64_t bins = std::int64_t(out.upper) - out.lower + 1;
    const bool tooMany = bins > kMaxBins;
    // The program counted before it looked at the limit, so a value outside the bins is
    // reported first; past the limit nothing is allocated, only the values are checked.
    if (!tooMany) out.counts.assign(std::size_t(bins), 0);
    for (const float v : values) {
        const double k = std::floor(v / binSize);
        if (!(k >= lower && k <= upper)) return BinResult::SubscriptError;
        if (!tooMany) ++out.counts[std::size_t(std::int64_t(k) - out.lower)];
    }
    if (tooMany) {
        out.counts.clear();
        return BinResult::TooManyBins;
    }
    return BinResult::Ok;
}

bool CountOrSay(UserDialogs& ui, std::span<const float> values, float lowest, float highest,
                float bin, BinCounts& counts) {
    switch (CountBins(values, lowest, highest, bin, counts)) {
        case BinResult::Ok: return true;
        case BinResult::TooManyBins:
            ui.Message("Too many bins", "Too many bins!  Please readjust the bin size and try again.");
            return false;
        case BinResult::SubscriptError: ui.RuntimeError("Subscript out of range"); return false;
        case BinResult::Overflow: ui.RuntimeError("Overflow"); return false;
    }
    return false;
}

void Histogram(Session& s, UserDialogs& ui, int kind, const SortByTime& sortByTime) {
    if (kind < 1 || kind > kInverseCumulativeKind + kFieldArray2) return;
    const int family = kind > kInverseCumulativeKind ? kInverseCumulativeKind
                       : kind > kCumulativeNoBinKind ? kCumulativeNoBinKind
                       : kind > kCumulativeKind      ? kCumulativeKind
                                                     : kFrequencyKind;
    const int field = kind - family;
    // 16-20, 36-40 and 56-60 name no field; the menus never send them.
    if (field > kFieldArray2) return;
    const Field& f = kFields[std::size_t(field)];
    Collected range;
    if (!CollectValues(s, ui, field, sortByTime, range)) return;
    const std::string unit = UnitText(s, f.unit);

    if (family >= kCumulativeNoBinKind) {
        NoBinGraph(s, f, unit, family == kInverseCumulativeKind);
        return;
    }
    const auto bin = AskBinSize(ui, "Bin Size",
                                "Please enter the bin size for " + std::string(f.name) + " in " +
                                    unit + ".",
                                f.defaultBin);
    if (!bin) return;
    BinCounts counts;
    if (!CountOrSay(ui, Values(s), range.lowest, range.highest, *bin, counts)) return;
    if (family == kFrequencyKind) {
        const std::string name(f.name);
        FrequencyGraph(s, {name, unit, std::string(f.defaultBin),
                           name + " Frequency Histogram  " + s.Label11, "Number of Events"},
                       *bin, counts);
    }
    else
        CumulativeGraph(s, f, unit, *bin, counts);
}

void FrequencyHistogramOf(Session& s, UserDialogs& ui, const FrequencyHistogramNames& names,
                          float lowest, float highest) {
    const auto bin = AskBinSize(
        ui, "Bin Size", "Please enter the bin size for " + names.name + " in " + names.unit + ".",
        names.defaultBin);
    if (!bin) return;
    BinCounts counts;
    if (!CountOrSay(ui, Values(s), lowest, highest, *bin, counts)) return;
    FrequencyGraph(s, names, *bin, counts);
}

void RunningAveragePlot(Session& s, UserDialogs& ui, int field, const SortByTime& sortByTime) {
    if (s.events.EventCount() == 0) return;
    if (field < 1 || field > kFieldArray1) return;
    std::vector<float>& data = s.HistogramData;
    std::vector<float> times;
    if (field == kFieldArray1) {
        if (s.dataArray1.UpperBound() != s.dataArray2.UpperBound()) {
            ui.Message("Try Again",
                       "Data Array #1 and #2 should have the equal number of values.  Please make "
                       "sure you put time data for Array #1 and corresponding values for Array #2");
            return;
        }
        const std::int32_t n = s.dataArray1.UpperBound();
        if (n <= 1) return;
        data.assign(s.dataArray2.values.begin(), s.dataArray2.values.begin() + n + 1);
        data[0] = 0;
        times.assign(std::size_t(n), 0.0f);
        for (std::int32_t i = 1; i <= n; ++i) times[std::size_t(i - 1)] = s.dataArray1(i) / 1000.0f;
    } else {
        if (field == kFieldInterval) sortByTime(s);
        const std::int32_t n = s.events.EventCount();
        data.assign(std::size_t(n) + 1, 0.0f);
        times.assign(std::size_t(n), 0.0f);
        for (std::int32_t i = 1; i <= n; ++i) {
            const EventRecord& e = s.events[i];
            if (field == kFieldInterval) {
                if (i >= 2) data[std::size_t(i)] = e.Time - s.events[i - 1].Time;
            } else {
                data[std::size_t(i)] = EventValue(s, e, field);
            }
            times[std::size_t(i - 1)] = e.Time / 1000.0f;
        }
    }
    float highest = 0;
    for (float t : times) highest = std::max(highest, t);

    const auto bin = AskBinSize(ui, "Bin Size for running average plot.",
                                "Please enter the bin size for Time in second.", "10");
    if (!bin) return;
    // The counts of the time bins tell whether the bins fit; the sums follow in the same bins.
    BinCounts counts;
    if (!CountOrSay(ui, times, 0.0f, highest, *bin, counts)) return;
    const std::size_t bins = counts.counts.size();
    std::vector<double> mean(bins, 0.0), squares(bins, 0.0);
    auto binOf = [&](float t) { return std::size_t(std::int64_t(std::floor(t / *bin)) - counts.lower); };
    for (std::size_t i = 0; i < times.size(); ++i) mean[binOf(times[i])] += double(data[i + 1]);
    for (std::size_t k = 0; k < bins; ++k)
        mean[k] = counts.counts[k] == 0 ? 0.0 : mean[k] / double(counts.counts[k]);
    for (std::size_t i = 0; i < times.size(); ++i) {
        const std::size_t k = binOf(times[i]);
        const double d = double(data[i + 1]) - mean[k];
        squares[k] += d * d;
    }

    const Field& f = kFields[std::size_t(field)];
    const std::string name(field == kFieldInterval ? "Interevent Interval" : f.name);
    GraphModel g;
    g.Caption = name + " Running Average Plot  " + s.Label11;
    g.GraphTitle = GraphTitleText(g.Caption + " bin size=" + CStr(*bin));
    g.LeftTitle = name + " (" + UnitText(s, f.unit) + ")";
    g.BottomTitle = "Time (sec)";
    g.GraphStyle = kStyleLine;
    g.ErrorStyle = kErrorStyleOn;
    g.SetSymbol(1) = kSymbolCircle;
    g.SetPointCount(std::int32_t(bins));
    for (std::size_t k = 0; k < bins; ++k) {
        const double n = counts.counts[k];
        // Fewer than three values give no SEM.
        const double sem = n - 1 >= 2 ? std::sqrt(squares[k] / (n - 1)) / std::sqrt(n) : 0.0;
        GraphPoint& p = g.Point(1, int(k) + 1);
        p.x = float(double(counts.lower + std::int64_t(k)) * *bin);
        p.y = float(mean[k]);
        p.high = p.low = float(sem);
    }
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void menu_plotscatterXY(Session& s, UserDialogs& ui) {
    const std::int32_t n1 = s.dataArray1.UpperBound();
    const std::int32_t n2 = s.dataArray2.UpperBound();
    if (n1 <= 1 || n2 <= 1) return;
    if (n1 != n2) {
        ui.Message("Uneven Array#1 and Array#2",
                   "The number of datapoints for Array #1 does not match with that of Array #2.  "
                   "Please make sure Array #1 and Array #2 have the same number of datapoints.");
        return;
    }
    GraphModel g;
    g.Caption = "Array #1 vs. Array #2";
    g.GraphTitle = GraphTitleText("Array #1 vs. Array #2: n=" + CStr(n1));
    g.LeftTitle = "Y Axis";
    g.BottomTitle = "X Axis";
    g.GraphStyle = kStyleScatter;
    g.SetSymbol(1) = kSymbolCircle;
    g.SetPointCount(n1);
    for (std::int32_t i = 1; i <= n1; ++i) g.AddPoint(s.dataArray1(i), s.dataArray2(i));
    g.Redraw();
    OpenGraph(s, std::move(g));
}

}  // namespace ardel
