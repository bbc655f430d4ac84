#include "events/burst_analysis.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

#include "core/number_text.h"
#include "core/safe_file.h"
#include "events/event_list.h"
#include "graph/graph_model.h"
#include "graph/graph_sink.h"

namespace ardel {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

// Values in the report: plain decimals with three places.
std::string Number(double v) { return Format(v, "0.000"); }

void FillArrays(Session& s, const std::vector<Burst>& bursts) {
    // One row per burst; with no burst both arrays are left in their cleared shape.
    const auto n = std::int32_t(bursts.size());
    s.dataArray1.Redim(n);
    s.dataArray2.Redim(n);
    for (std::int32_t b = 1; b <= n; ++b) {
        const Burst& burst = bursts[std::size_t(b - 1)];
        s.dataArray1(b) = s.events[burst.first].Time;
        s.dataArray2(b) = float(burst.Count());
    }
}

void MarkBursts(EventTable& t, const std::vector<Burst>& bursts) {
    for (std::size_t b = 0; b < bursts.size(); ++b) {
        // A burst number beyond 16 bits does not fit the field; such rows keep the burst group
        // with the number they had.
        const auto number = ToInt16(double(b + 1));
        for (std::int32_t i = bursts[b].first; i <= bursts[b].last; ++i) {
            EventRecord& e = t[i];
            e.GroupNumber = kGroupBurst;
            if (number) e.BurstNumber = *number;
            if (const auto seq = ToInt16(double(i - bursts[b].first + 1))) e.BurstEventNumber = *seq;
        }
    }
}

void PlotBursts(Session& s, std::size_t count) {
    GraphModel g;
    g.Caption = "  Burst Analysis: Number of Events vs. Time";
    g.GraphTitle = GraphTitleText("  Number of Events vs. Time: n=" + CStr(std::int64_t(count)));
    g.BottomTitle = "Time (ms)";
    g.LeftTitle = "Number of Events";
    g.GraphStyle = kStyleScatter;
    g.SetSymbol(1) = kSymbolCircle;
    g.SetPointCount(int(count));
    for (std::int32_t b = 1; b <= std::int32_t(count); ++b)
        g.AddPoint(s.dataArray1(b), s.dataArray2(b));
    g.Redraw();
    OpenGraph(s, std::move(g));
}

// The name offered for the report: the file's name up to its first ".".
std::string ReportFileName(const std::string& label) {
    const auto dot = label.find('.');
    return label.substr(0, dot) + " Burst Report";
}

void SaveReport(UserDialogs& ui, const Session& s, const std::string& report) {
    FileDialogSpec spec;
    spec.fileName = ReportFileName(s.Label11);
    spec.defaultExtension = "ASC";
    spec.filter = "ASCII File (*.ASC)";
    spec.initialDirectory = s.CurrentFolder;
    const auto file = ui.SaveFileName(spec);
    if (!file) return;
    std::error_code ec;
    if (std::filesystem::exists(*file, ec)) {
        ui.Message("File Exist", "File already exist.  Try again with different file name.");
        return;
    }
    try {
        WriteFileSafely(*file, report);
    } catch (const std::system_error& e) {
        ui.RuntimeError(e.what());
    }
}

}  // namespace

std::vector<float> InterEventIntervals(const EventTable& t) {
    const std::int32_t n = t.EventCount();
    std::vector<float> intervals(std::size_t(n) + 1, 0.0f);
    for (std::int32_t i = 1; i < n; ++i) intervals[std::size_t(i)] = t[i + 1].Time - t[i].Time;
    if (n >= 1) intervals[std::size_t(n)] = std::numeric_limits<float>::quiet_NaN();
    return intervals;
}

std::vector<Burst> FindBursts(const std::vector<float>& intervals, double maxInterval,
                              double minEvents) {
    std::vector<Burst> bursts;
    const auto n = std::int32_t(intervals.size()) - 1;
    auto close = [&](std::int32_t i) { return double(intervals[std::size_t(i)]) <= maxInterval; };
    std::int32_t i = 1;
    while (i <= n) {
        if (!close(i)) {
            ++i;
            continue;
        }
        std::int32_t last = i;
        while (last < n && close(last)) ++last;
        const Burst run{i, last};
        if (double(run.Count()) >= minEvents) bursts.push_back(run);
        i = last + 1;
    }
    return bursts;
}

std::string BurstReportText(const Session& s, const CriteriaForm& f,
                            const std::vector<Burst>& bursts, const std::vector<float>& intervals) {
    const Recording& rec = s.recording;
    const EventTable& t = s.events;
    std::string text = "Burst Analysis for " + s.Label11 + std::string(kLineEnd);
    text += "Minimum Number of Events " + CStr(Val(f.Text7)) + std::string(kLineEnd);
    text += "Maximum Inter-event Interval " + CStr(Val(f.Text6)) + std::string(kLineEnd);
    text +=
        "Burst#\tBurst Time(ms)\tEvents in Burst\tBurst Duration (ms)\tInterburst Interval "
        "(ms)\tIntrabusrt Sequence\tIntraburst Time (ms)\tPeak Amplitude\tPeak Vertical "
        "Position\tHalf-width\tRise\tRise10-90\tDecay\tInter-event Interval";
    text += kLineEnd;
    for (std::size_t b = 0; b < bursts.size(); ++b) {
        const Burst& burst = bursts[b];
        const float start = t[burst.first].Time;
        for (std::int32_t i = burst.first; i <= burst.last; ++i) {
            const EventRecord& e = t[i];
            // The burst's own columns stand on its first line only, so that a spreadsheet
            // counts each burst once.
            if (i == burst.first) {
                text += CStr(std::int64_t(b + 1)) + "\t" + Number(start) + "\t" +
                        CStr(burst.Count()) + "\t" + Number(t[burst.last].Time - start) + "\t";
                // The first burst has no burst before it.
                if (b > 0) text += Number(start - t[bursts[b - 1].last].Time);
                text += "\t";
            } else {
                text += "\t\t\t\t\t";
            }
            const double peak = double(e.PeakDirection) * double(e.Amplitude) + double(e.Baseline);
            text += CStr(i - burst.first + 1) + "\t" + Number(e.Time - start) + "\t" +
                    Number(rec.Bit2pA2(e.Amplitude)) + "\t" + Number(rec.Bit2pA2(peak)) + "\t" +
                    Number(e.HalfWidth) + "\t" + Number(rec.Bit2msec(e.Rise)) + "\t" +
                    Number(e.Rise1090) + "\t" + Number(rec.Bit2msec(e.Decay)) + "\t";
            // The table's last row has no interval after it.
            const float interval = intervals[std::size_t(i)];
            if (!std::isnan(interval)) text += Number(interval);
            text += kLineEnd;
        }
    }
    return text;
}

void Criteria_Command4(Session& s, UserDialogs& ui, CriteriaForm& f) {
    const double minEvents = Val(f.Text7);
    if (minEvents < 2) {
        ui.Message("",
                   "Minimum number of consecutive events to consider as a burst cannot be smaller "
                   "than 2.  Please check the number and try again.");
        f.Text7 = "2";
        return;
    }
    // Unlike the search by interval, the burst search sorts without asking.
    menu_sort(s, kSortByTime);
    EventTable& t = s.events;
    const std::vector<float> intervals = InterEventIntervals(t);
    // Only the numbering is cleared: rows of an earlier burst keep their group even where they
    // no longer qualify.
    for (std::int32_t i = 1; i <= t.EventCount(); ++i) {
        t[i].BurstNumber = 0;
        t[i].BurstEventNumber = 0;
    }
    const std::vector<Burst> bursts = FindBursts(intervals, Val(f.Text6), minEvents);
    MarkBursts(t, bursts);
    FillArrays(s, bursts);

    const std::string report = BurstReportText(s, f, bursts, intervals);
    ui.SetClipboardText(report);
    PlotBursts(s, bursts.size());
    UpdateTDBGrid(t);
    Display(s);
    const Answer a = ui.Ask(
        "Save Reports",
        Str(std::int64_t(bursts.size())) +
            " bursts are grouped as number 254 and displayed as B.  The detailed reports are "
            "copied onto the clipboard.  Do you want to save the reports as ASCII file?",
        Buttons::YesNo);
    if (a == Answer::Yes) SaveReport(ui, s, report);
}

}  // namespace ardel
