#include "hrv/tachogram.h"

#include <algorithm>

#include "core/abf_writer.h"
#include "core/text_save.h"
#include "core/number_text.h"
#include "events/event_list.h"
#include "graph/graph_model.h"
#include "graph/graph_sink.h"
#include "graph/histograms.h"

namespace ardel::hrv {

namespace fs = std::filesystem;

namespace {

// The value of a scan's input box; nullopt for an empty reply or 0, which end the scan.
std::optional<double> AskScanLimit(UserDialogs& ui, std::string_view title,
                                   std::string_view prompt, std::string_view defaultText) {
    const std::string reply = ui.InputText(title, prompt, defaultText);
    if (reply.empty()) return std::nullopt;
    const double limit = Val(reply);
    if (limit == 0) return std::nullopt;
    return limit;
}

// Gives the group to event i - back for each i = 2..N whose interval t(i) - t(i-1), in table
// order, the test picks; returns how many. A mark overwrites the group the event held.
template <typename Test>
std::int64_t MarkIntervals(Session& s, Test picks, std::int32_t back, std::uint8_t group) {
    std::int64_t count = 0;
    for (std::int32_t i = 2; i <= s.events.EventCount(); ++i) {
        if (!picks(double(s.events[i].Time - s.events[i - 1].Time))) continue;
        s.events[i - back].GroupNumber = group;
        ++count;
    }
    return count;
}

// A graph whose inner title is its caption.
GraphModel TitledGraph(const std::string& caption, std::string left, std::string bottom) {
    GraphModel g;
    g.Caption = caption;
    g.GraphTitle = GraphTitleText(caption);
    g.LeftTitle = std::move(left);
    g.BottomTitle = std::move(bottom);
    return g;
}

std::vector<float> IntervalsOf(const std::vector<Beat>& beats) {
    std::vector<float> rr;
    rr.reserve(beats.size());
    for (const Beat& b : beats) rr.push_back(b.rr);
    return rr;
}

}  // namespace

std::optional<std::vector<Beat>> PrepareTachogram(Session& s, const IntervalFilter& filter) {
    if (s.events.EventCount() < 1) return std::nullopt;
    menu_sort(s, kSortByTime);
    s.HistogramData = RRIntervals(s.events);
    std::vector<Beat> beats;
    const auto n = std::int32_t(s.HistogramData.size()) - 1;
    beats.reserve(std::size_t(std::max(n - 1, 0)));
    for (std::int32_t i = 2; i <= n; ++i) {
        const float rr = s.HistogramData[std::size_t(i)];
        if (!filter || filter->Accepts(rr)) beats.push_back({i, rr});
    }
    return beats;
}

void menu_TachogramPlot(Session& s, const IntervalFilter& filter) {
    const auto beats = PrepareTachogram(s, filter);
    if (!beats) return;
    GraphModel g = TitledGraph("Tachogram " + s.Label11, "RR Interval (msec)", "Beat #");
    g.GraphStyle = kStyleLines;
    g.SetPointCount(int(beats->size()));
    for (const Beat& b : *beats) g.AddPoint(float(b.number), b.rr);
    g.Redraw();
    OpenGraph(s, std::move(g));
}

std::string TachogramText(const fs::path& dataFile, const std::vector<Beat>& beats) {
    std::string text = "ATF\t1.0\r\n3\t2\r\n\"Tachogram: " + dataFile.string() +
                       "\"\r\n\"Beat #\"\t\"RR Interval (ms)\"\r\n";
    for (const Beat& b : beats)
        text += Str(b.number) + "\t" + Format(b.rr, "0.000") + "\r\n";
    return text;
}

void menu_TachogramASCII(Session& s, UserDialogs& ui, const IntervalFilter& filter) {
    const auto beats = PrepareTachogram(s, filter);
    if (!beats) return;
    FileDialogSpec spec;
    spec.defaultExtension = "txt";
    spec.filter = "Text File (*.txt)";
    spec.fileName = s.Label11.substr(0, s.Label11.find('.'));
    spec.initialDirectory = s.CurrentFolder;
    SaveTextThroughDialog(ui, spec, TachogramText(s.recording.DataFilePath, *beats),
                          ExistingFile::AskToReplace);
}

void menu_TachogramABF(Session& s, UserDialogs& ui, const fs::path& programDir,
                       const IntervalFilter& filter) {
    if (s.events.EventCount() < 2) return;
    // The interval vector is filled in table order; the sort of the other tachogram commands
    // is not done here, so an unsorted table gives negative intervals.
    std::vector<float> intervals;
    for (std::int32_t i = 2; i <= s.events.EventCount(); ++i) {
        const float rr = s.events[i].Time - s.events[i - 1].Time;
        if (!filter || filter->Accepts(rr)) intervals.push_back(rr);
    }
    if (intervals.empty()) return;
    WriteTachogramAbf(programDir, s.recording.DataFilePath, intervals, ui);
}

void menu_RRHisto(Session& s, UserDialogs& ui) {
    const auto beats = PrepareTachogram(s, {});
    if (!beats) return;
    float highest = 0;
    for (const Beat& b : *beats) highest = std::max(highest, b.rr);
    FrequencyHistogramOf(s, ui,
                         {"RR Interval", "msec", "1", "RR Interval Histogram " + s.Label11,
                          "Number of RR Intervals"},
                         0.0f, highest);
}

void menu_DeltaRRHisto(Session& s, UserDialogs& ui) {
    if (!PrepareTachogram(s, {})) return;
    const std::int32_t n = s.events.EventCount();
    std::vector<float>& d = s.HistogramData;
    std::fill(d.begin(), d.end(), 0.0f);
    float lowest = 0, highest = 0;
    // Elements 1 and N stay 0 and are counted with the differences.
    for (std::int32_t i = 2; i <= n - 1; ++i) {
        const float v = (s.events[i + 1].Time - s.events[i].Time) -
                        (s.events[i].Time - s.events[i - 1].Time);
        d[std::size_t(i)] = v;
        lowest = std::min(lowest, v);
        highest = std::max(highest, v);
    }
    FrequencyHistogramOf(s, ui,
                         {"Delta RR Interval", "msec", "1",
                          "Delta RR Interval Histogram " + s.Label11,
                          "Number of Pairs of RR Intervals"},
                         lowest, highest);
}

void menu_LorenzPlot(Session& s) {
    const auto beats = PrepareTachogram(s, {});
    if (!beats) return;
    const auto rr = IntervalsOf(*beats);
    GraphModel g = TitledGraph("Lorenz Plot " + s.Label11, "R(i+1)R(i+2) Interval (msec)",
                               "R(i)R(i+1) Interval (msec)");
    g.GraphStyle = kStyleScatter;
    g.SetSymbol(1) = kSymbolCircle;
    g.SetPointCount(rr.size() < 2 ? 0 : int(rr.size()) - 1);
    for (std::size_t i = 0; i + 1 < rr.size(); ++i) g.AddPoint(rr[i], rr[i + 1]);
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void HRVSpurious_Command1(Session& s, UserDialogs& ui) {
    const auto limit = AskScanLimit(
        ui, "Maximum Interval",
        "This function scans every event and rejects RR-intervals that are too short.  Rejected "
        "events are marked as group #255 and can later be removed.  Please enter the maximum "
        "RR-interval to be rejected in msec.",
        "20");
    if (!limit) return;
    const auto count = MarkIntervals(s, [&](double rr) { return rr < *limit; }, 0, kRejectedGroup);
    ui.Message("Search Finished", Str(count) + " events are rejected and marked as group #255");
}

void menu_ScanMissingBeats(Session& s, UserDialogs& ui) {
    const auto limit = AskScanLimit(
        ui, "Missing Beats",
        "This function scans and finds missing beats (area with undetected events).  The last "
        "event before missing beat will be marked as group #253.  Please enter the maximum "
        "interval to be considered as a missing beat in msec.",
        "100");
    if (!limit) return;
    const auto count = MarkIntervals(s, [&](double rr) { return rr > *limit; }, 1, kMissingBeatGroup);
    ui.Message("Search Finished", "There are " + CStr(count) +
                                      " areas with potential missing beats.  The events are "
                                      "marked as group #253.");
}

}  // namespace ardel::hrv
