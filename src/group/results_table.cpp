#include "group/results_table.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include "arrays/data_arrays.h"
#include "arrays/numeric_library.h"
#include "core/number_text.h"
#include "core/safe_file.h"
#include "graph/graph_model.h"
#include "graph/graph_sink.h"
#include "graph/histograms.h"

namespace ardel::group {

namespace {

void Name(GridCaptions& c, std::initializer_list<std::pair<int, const char*>> names) {
    for (const auto& [column, caption] : names) c[std::size_t(column)] = caption;
}

void Rebind(const ResultTable& table, ResultsGrid& grid) {
    const auto count = std::int32_t(table.rows.size());
    if (grid.row >= count) grid.row = count - 1;
    if (count == 0) grid.row = -1;
}

std::string ReadWholeFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

GridCaptions ResultsGrid::FittingCaptions() {
    GridCaptions c;
    Name(c, {{0, "Identifier"}, {1, "Amplitude"}, {2, "Time"}, {3, "Baseline"}, {4, "Rise"},
             {5, "Area"}, {6, "Half-width"}, {7, "Tau1"}, {8, "A1"}, {9, "Tau2"}, {10, "A2"},
             {11, "Stdev"}, {12, "Threshold"}, {13, "Width"}, {14, "AHP Area"},
             {15, "AHP Peak"}, {16, "Decay%"}});
    return c;
}

void SetResultTab(ResultsGrid& grid, ResultTable& table, int tab, const Recording& r) {
    GridCaptions& c = grid.captions;
    const std::string unit = r.ADCUnits;
    auto columns = [&](std::initializer_list<std::pair<const char*, std::string>> entries) {
        std::size_t i = 0;
        for (const auto& [name, u] : entries) {
            table.columns[i] = ResultColumn{name, u, "1"};
            ++i;
        }
    };
    switch (tab) {
        case kTabFitting:
            c = ResultsGrid::FittingCaptions();
            columns({{"Amplitude", unit}, {"Time", "ms"}, {"Baseline", unit},
                     {"10-90 Rise", "ms"}, {"Area", unit + "ms"}, {"Half-width", "ms"},
                     {"Tau 1", "ms"}, {"Amplitude 1", unit}, {"Tau 2", "ms"},
                     {"Amplitude 2", unit}, {"Stdev", unit}, {"Threshold", unit},
                     {"Width", "ms"}, {"AHP Area", unit + "ms"}, {"AHP Peak", unit},
                     {"Decay%", "%"}});
            return;
        case kTabApWave:
            Name(c, {{7, "Burst#"}, {8, "BurstE#"}, {9, "Slope"}, {10, "Peak"}, {11, "Peak2AHP90%"},
                     {13, "Width"}});
            break;
        case kTabAmperometric: Name(c, {{11, "Event D"}, {13, "Foot D"}, {14, "Foot A"}}); break;
        case kTabEcg:
            Name(c, {{7, "PQ Int"}, {8, "QT Int"}, {9, "R Amp"}, {10, "RS Amp"}});
            for (int k = 11; k <= 18; ++k) c[std::size_t(k)].clear();
            break;
        case kTabFieldEpsp:
            Name(c, {{1, "Amplitude1"}, {2, "Latency1"}, {3, "Baseline1"}, {4, "Coastline1"},
                     {5, "Slope1"}, {6, "Halfwidth1"}, {7, "Area1"}, {8, "Amplitude2"},
                     {9, "Latency2"}, {10, "Baseline2"}, {11, "Coastline2"}, {12, "Slope2"},
                     {13, "Halfwidth2"}, {14, "Area2"}, {15, "PP-Ratio"}});
            break;
        case kTabNonStationary:
            Name(c, {{1, "i"}, {2, "# chan"}, {3, "I max"}, {4, "Offset"}, {5, "Popen"}, {6, "R2"},
                     {7, "Iter"}, {8, "stdev"}, {9, "Base Var"}});
            break;
        case kTabMultiPeak:
            c[1] = "Baseline";
            for (int k = 1; k <= 9; ++k) {
                c[std::size_t(2 * k)] = "Peak" + CStr(k);
                c[std::size_t(2 * k + 1)] = "Time" + CStr(k);
            }
            break;
        default: return;  // the random walk tab names nothing
    }
    // The other tabs label their columns by the captions; slopes are per millisecond.
    for (int k = 1; k < kGridColumns; ++k) {
        const std::string& name = c[std::size_t(k)];
        const bool slope = tab == kTabFieldEpsp && name.starts_with("Slope");
        table.columns[std::size_t(k - 1)] = ResultColumn{name, slope ? unit + "/ms" : "", "1"};
    }
}

void AppendResult(ResultTable& table, ResultsGrid& grid, ResultRow row) {
    if (row.Identifier.size() > kIdentifierLength) row.Identifier.resize(kIdentifierLength);
    table.rows.push_back(std::move(row));
    grid.row = std::int32_t(table.rows.size()) - 1;
}

void SetFittingRunCaptions(ResultsGrid& grid) {
    Name(grid.captions, {{12, "R-Sqr"}, {13, "Offset"}, {14, "Tau3"}, {15, "A3"}, {16, "Diff Area"}});
}

void menu_LastResult(ResultTable& table, ResultsGrid& grid) {
    if (!table.rows.empty()) table.rows.pop_back();
    Rebind(table, grid);
}

void menu_DeleteSelected(ResultTable& table, ResultsGrid& grid) {
    if (grid.row < 0 || grid.row >= std::int32_t(table.rows.size())) return;
    table.rows.erase(table.rows.begin() + grid.row);
    Rebind(table, grid);
}

namespace {
// Keeps the rows of 0-based index first, first + 2, ...; the count becomes Int(count / 2 + 0.5).
void KeepEveryOther(ResultTable& table, ResultsGrid& grid, std::size_t first) {
    const std::size_t count = table.rows.size();
    std::size_t kept = 0;
    for (std::size_t i = first; i < count; i += 2) table.rows[kept++] = table.rows[i];
    table.rows.resize(std::size_t(std::floor(double(count) / 2 + 0.5)));
    Rebind(table, grid);
}
}  // namespace

void menu_DeleteEven(ResultTable& table, ResultsGrid& grid) { KeepEveryOther(table, grid, 0); }
void menu_DeleteOdd(ResultTable& table, ResultsGrid& grid) { KeepEveryOther(table, grid, 1); }

void menu_ClearResults(ResultTable& table, ResultsGrid& grid) {
    table.rows.clear();
    grid.row = -1;
}

std::string ResultCellText(const ResultRow& row, int column) {
    if (column == 0) return row.Identifier;
    if (column < 1 || column > int(kResultValues)) return {};
    return CStr(row.Values[std::size_t(column - 1)]);
}

std::string ResultsGridText(const ResultTable& table, const ResultsGrid& grid) {
    std::string text;
    for (int c = 0; c < kGridColumns; ++c) text += (c ? "\t" : "") + grid.captions[std::size_t(c)];
    text += "\r\n";
    for (const ResultRow& row : table.rows) {
        for (int c = 0; c < kGridColumns; ++c) text += (c ? "\t" : "") + ResultCellText(row, c);
        text += "\r\n";
    }
    return text;
}

std::string RslBytes(std::span<const ResultRow> rows) {
    std::string bytes = std::string("Ardelvantine Results File.           ").substr(0, kRslHeaderSize);
    bytes.reserve(kRslHeaderSize + rows.size() * kRslRowSize);
    for (const ResultRow& row : rows) {
        std::string id = row.Identifier.substr(0, kIdentifierLength);
        id.resize(kIdentifierLength, ' ');
        bytes += id;
        for (float v : row.Values) {
            const auto u = std::bit_cast<std::uint32_t>(v);
            for (int b = 0; b < 4; ++b) bytes += char((u >> (8 * b)) & 0xFF);
        }
    }
    return bytes;
}

std::optional<std::vector<ResultRow>> ReadRsl(std::string_view bytes) {
    if (bytes.size() < kRslMark.size() ||
        bytes.substr(0, kRslHeaderSize).find(kRslMark) == std::string_view::npos)
        return std::nullopt;
    const std::size_t body = bytes.size() > kRslHeaderSize ? bytes.size() - kRslHeaderSize : 0;
    // The count is rounded to nearest, halves to even, as the old division did; it is never
    // more than the length holds, so no count can ask for more memory than the file's size.
    const auto count = std::size_t(RoundHalfEven(double(body) / double(kRslRowSize)));
    std::vector<ResultRow> rows(count);
    for (std::size_t r = 0; r < count; ++r) {
        // What lies past the end reads as blanks and zeros.
        std::array<char, kRslRowSize> raw;
        raw.fill(0);
        std::fill_n(raw.begin(), kIdentifierLength, ' ');
        const std::size_t at = kRslHeaderSize + r * kRslRowSize;
        const std::size_t have = std::min(kRslRowSize, bytes.size() - at);
        std::memcpy(raw.data(), bytes.data() + at, have);
        rows[r].Identifier = RTrim(std::string_view(raw.data(), kIdentifierLength));
        for (std::size_t v = 0; v < kResultValues; ++v) {
            std::uint32_t u = 0;
            for (int b = 0; b < 4; ++b)
                u |= std::uint32_t(std::uint8_t(raw[kIdentifierLength + 4 * v + std::size_t(b)])) << (8 * b);
            rows[r].Values[v] = std::bit_cast<float>(u);
        }
    }
    return rows;
}

void menu_SaveResults(Session& s, UserDialogs& ui) {
    if (s.results.rows.empty() || !s.recording.FileIsOpen) return;
    FileDialogSpec spec;
    spec.title = "Save Results";
    spec.fileName = "*.RSL";
    spec.defaultExtension = "RSL";
    spec.filter = "Results File (*.RSL)";
    spec.initialDirectory = s.CurrentFolder;
    auto chosen = ui.SaveFileName(spec);
    if (!chosen) return;
    std::filesystem::path file = *chosen;
    const std::string name = file.filename().string();
    file.replace_filename(name.substr(0, name.find('.')) + ".RSL");
    if (std::filesystem::exists(file) &&
        ui.Ask("Replace", "File already exist.  Do you want to replace?", Buttons::YesNo) != Answer::Yes)
        return;
    WriteFileSafely(file, RslBytes(s.results.rows));
}

void menu_LoadResults(Session& s, UserDialogs& ui, ResultsGrid& grid) {
    FileDialogSpec spec;
    spec.title = "Load Results";
    spec.fileName = "*.RSL";
    spec.defaultExtension = "RSL";
    spec.filter = "Results File (*.RSL)";
    spec.initialDirectory = s.CurrentFolder;
    const auto file = ui.OpenFileName(spec);
    if (!file) return;
    auto loaded = ReadRsl(ReadWholeFile(*file));
    if (!loaded) return;
    auto& rows = s.results.rows;
    if (!rows.empty()) {
        const Answer a = ui.Ask("Clear results?",
                                "There are " + CStr(std::int64_t(rows.size())) +
                                    " previous results.  Would you like to clear the previous "
                                    "results before loading?",
                                Buttons::YesNo);
        if (a == Answer::Yes) rows.clear();
    }
    rows.insert(rows.end(), loaded->begin(), loaded->end());
    grid.row = rows.empty() ? -1 : std::int32_t(rows.size()) - 1;
}

void menu_copyasciifile(Session& s, UserDialogs& ui, const ResultsGrid& grid) {
    FileDialogSpec spec;
    spec.title = "Save as ASCII File";
    spec.fileName = "*.Fit";
    spec.defaultExtension = "Fit";
    spec.filter = "ASCII File (*.Fit)";
    spec.initialDirectory = s.CurrentFolder;
    const auto file = ui.SaveFileName(spec);
    if (!file) return;
    if (std::filesystem::exists(*file)) {
        ui.Message("File Exist", "File already exist.  Try again with different file name.");
        return;
    }
    WriteFileSafely(*file, ResultsGridText(s.results, grid));
}

void menu_copyresults(Session& s, UserDialogs& ui, const ResultsGrid& grid) {
    ui.SetClipboardText(ResultsGridText(s.results, grid));
}

namespace {

std::string ArrayName(int arrayNumber) { return "Array #" + CStr(arrayNumber); }

// Fills the array with the values, after asking whether to clear it when it holds data; the
// confirmation always names `doneArray`.
void FillArray(Session& s, UserDialogs& ui, int arrayNumber, const std::vector<float>& values,
               int doneArray) {
    if (values.empty()) return;
    DataArray& a = ArrayOf(s, arrayNumber);
    bool clear = true;
    if (!a.IsEmpty())
        clear = ui.Ask("Append data or clear Data before adding",
                       "Would you like to clear the array #" + CStr(arrayNumber) +
                           " before adding? (Answering 'No' will append the new data to the "
                           "previous data)",
                       Buttons::YesNo) == Answer::Yes;
    std::int64_t position = 0;
    if (clear) {
        a.Redim(std::int32_t(values.size()));
    } else {
        position = a.UpperBound();
        GrowArray(a, position + std::int64_t(values.size()));
    }
    for (float v : values) a(std::int32_t(++position)) = v;
    ui.Message("Done Filling " + ArrayName(doneArray),
               "All of " + Str(std::int64_t(values.size())) + " results are safely put into " +
                   ArrayName(doneArray) + " for further statistical data analysis.");
}

}  // namespace

void menu_Put2Array(Session& s, UserDialogs& ui, int arrayNumber, int column) {
    if (column < 1 || column > int(kResultValues)) return;
    std::vector<float> values;
    for (const ResultRow& row : s.results.rows) values.push_back(row.Values[std::size_t(column - 1)]);
    FillArray(s, ui, arrayNumber, values, arrayNumber);
}

void AoverSum(Session& s, UserDialogs& ui, int which, int index) {
    std::vector<float> values;
    for (const ResultRow& row : s.results.rows) {
        const double a1 = row.Values[7], a2 = row.Values[9];
        const double sum = a1 + a2;
        values.push_back(sum == 0 ? 0.0f : float((which == 2 ? a2 : a1) / sum));
    }
    // The confirmation has always named Array #1 for both arrays.
    FillArray(s, ui, index == 1 ? 2 : 1, values, 1);
}

namespace {

struct PlotColumn {
    std::string name;
    std::string unit;
    std::vector<float> values;
};

std::optional<PlotColumn> CollectColumn(const Session& s, const ResultsGrid& grid, int column) {
    PlotColumn p;
    if (column == kPlotArray1 || column == kPlotArray2) {
        const DataArray& a = ArrayOf(s, column == kPlotArray1 ? 1 : 2);
        if (a.UpperBound() <= 1) return std::nullopt;
        p.name = column == kPlotArray1 ? "Data Array#1" : "Data Array#2";
        p.unit = "x-axis unit";
        p.values.assign(a.values.begin() + 1, a.values.end());
        return p;
    }
    if (column < 1 || column >= kGridColumns || s.results.rows.empty()) return std::nullopt;
    const ResultColumn& rc = s.results.columns[std::size_t(column - 1)];
    p.name = rc.name.empty() ? grid.captions[std::size_t(column)] : rc.name;
    p.unit = rc.unit;
    for (const ResultRow& row : s.results.rows) p.values.push_back(row.Values[std::size_t(column - 1)]);
    return p;
}

void BinnedGraph(Session& s, UserDialogs& ui, const PlotColumn& p, bool cumulative) {
    const std::string reply =
        ui.InputText("Bin Size", "Please enter the bin size for " + p.name + " in " + p.unit + ".", "1");
    if (reply.empty()) return;
    const float bin = float(Val(reply));
    if (bin == 0) return;
    // The range always includes 0, as the event histograms' does.
    float lowest = 0, highest = 0;
    for (float v : p.values) {
        lowest = std::min(lowest, v);
        highest = std::max(highest, v);
    }
    BinCounts b;
    switch (CountBins(p.values, lowest, highest, bin, b)) {
        case BinResult::Ok: break;
        case BinResult::TooManyBins:
            ui.Message("Too many bins", "Too many bins!  Data range from " + CStr(lowest) + " to " +
                                            CStr(highest) + ".  Please readjust the bin size and try again.");
            return;
        case BinResult::SubscriptError: ui.RuntimeError("Subscript out of range"); return;
        case BinResult::Overflow: ui.RuntimeError("Overflow"); return;
    }
    s.HistogramData.assign(1, 0.0f);
    s.HistogramData.insert(s.HistogramData.end(), p.values.begin(), p.values.end());
    GraphModel g;
    const std::string kind = cumulative ? "Cumulative " + p.name + " Histogram " : p.name + " Frequency Histogram ";
    g.Caption = kind + s.Label11;
    g.GraphTitle = GraphTitleText(kind + s.Label11 + " bin size=" + CStr(bin));
    g.LeftTitle = cumulative ? "Cumulative Fraction" : "Number of Events";
    g.BottomTitle = p.name + " (" + p.unit + ")";
    g.GraphStyle = cumulative ? kStyleLines : kStyleBars;
    if (!cumulative) g.BarWidth = bin;
    const std::int32_t bins = b.upper - b.lower + 1;
    g.SetPointCount(cumulative ? bins + 1 : bins);
    std::int64_t running = 0;
    for (std::int32_t i = 0; i < bins; ++i) {
        const float x = float(double(b.lower + i) * bin);
        if (cumulative) {
            g.AddPoint(x, float(double(running) / double(p.values.size())));
            running += b.counts[std::size_t(i)];
        } else {
            g.AddPoint(x, float(b.counts[std::size_t(i)]));
        }
    }
    if (cumulative) g.AddPoint(float(double(b.upper + 1) * bin), float(double(running) / double(p.values.size())));
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void TimeCourse(Session& s, UserDialogs& ui, const PlotColumn& p) {
    const std::string reply = ui.InputText(
        "Number of points to normalize",
        "Please enter number of first points to normalize.  Entering 0 will generate non-normalized plot.",
        "10");
    if (reply.empty()) return;
    const auto first = std::size_t(std::clamp(Val(reply), 0.0, double(p.values.size())));
    // Normalised to the mean of the first points, in percent.
    double divisor = 1;
    if (first > 0) {
        double sum = 0;
        for (std::size_t i = 0; i < first; ++i) sum += p.values[i];
        divisor = sum / double(first) / 100.0;
        if (divisor == 0) divisor = 1;
    }
    GraphModel g;
    g.Caption = p.name + " Time Course " + s.Label11 + (first > 0 ? " (Normalized)" : "");
    g.GraphTitle = GraphTitleText(g.Caption);
    g.LeftTitle = first > 0 ? p.name + " (%)" : p.name + " (" + p.unit + ")";
    g.BottomTitle = "Event #";
    g.GraphStyle = kStyleLine;
    g.SetPointCount(std::int32_t(p.values.size()));
    for (std::size_t i = 0; i < p.values.size(); ++i)
        g.AddPoint(float(i + 1), float(double(p.values[i]) / divisor));
    g.Redraw();
    OpenGraph(s, std::move(g));
}

}  // namespace

void ResultsHistogram(Session& s, UserDialogs& ui, const ResultsGrid& grid, ResultPlot kind,
                      int column) {
    const auto p = CollectColumn(s, grid, column);
    if (!p) return;
    if (kind == ResultPlot::TimeCourse)
        TimeCourse(s, ui, *p);
    else
        BinnedGraph(s, ui, *p, kind == ResultPlot::Cumulative);
}

void menu_ColumnStat(const Session& s, const ResultsGrid& grid, CStatForm& form) {
    form.Caption = "Results Statistics";
    form.ColumnTitles.clear();
    std::vector<std::vector<std::string>> columns;
    for (int c = 1; c < kGridColumns; ++c) {
        if (Trim(grid.captions[std::size_t(c)]).empty()) continue;
        form.ColumnTitles.push_back(grid.captions[std::size_t(c)]);
        std::vector<double> values;
        for (const ResultRow& row : s.results.rows) values.push_back(row.Values[std::size_t(c - 1)]);
        const Descriptive d = DescriptiveStatistics(values);
        std::vector<std::string> cells;
        const double stats[] = {d.mean, d.sd,     d.sem,    d.cv,  d.invCv2, d.variance,
                                d.skewness, d.kurtosis, d.median, d.min, d.max, double(d.n)};
        for (double v : stats) cells.push_back(values.size() < 2 ? std::string() : Format(v, "##0.000"));
        columns.push_back(std::move(cells));
    }
    form.Rows.clear();
    for (std::size_t r = 0; r < kDescriptiveRowLabels.size(); ++r) {
        std::vector<std::string> row{kDescriptiveRowLabels[r]};
        for (const auto& col : columns) row.push_back(col[r]);
        form.Rows.push_back(std::move(row));
    }
}

}  // namespace ardel::group
