// The results table of the group analyses as the window works on it: appending a row, the row
// deletions, the .RSL file and the tab-delimited .Fit text, the grid's captions per analysis
// tab, and the hand-over of columns to the Data Arrays, histograms and column statistics.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "arrays/array_statistics.h"
#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel::group {

inline constexpr std::size_t kIdentifierLength = 60;
inline constexpr std::size_t kResultValues = 40;
inline constexpr std::size_t kRslHeaderSize = 32;
inline constexpr std::size_t kRslRowSize = kIdentifierLength + 4 * kResultValues;  // 220
// The grid shows the identifier and the first 19 values.
inline constexpr int kGridColumns = 20;
inline constexpr std::string_view kRslMark = "Ardelvantine Results File.";

using GridCaptions = std::array<std::string, kGridColumns>;

// What the results grid shows: its captions (column 0 the identifier, column c value c - 1)
// and its current row, 0-based (-1 for none). The row marker shows the row's number from 1.
struct ResultsGrid {
    GridCaptions captions = FittingCaptions();
    std::int32_t row = -1;
    static GridCaptions FittingCaptions();
};

// The tabs of SSTab1 that name columns.
enum ResultTab : int {
    kTabFitting = 1,
    kTabApWave = 2,
    kTabAmperometric = 3,
    kTabEcg = 4,
    kTabRandomWalk = 5,
    kTabFieldEpsp = 6,
    kTabNonStationary = 7,
    kTabMultiPeak = 8,
};

// The SSTab1 switch: the grid's captions of the tab (those it doesn't name stay as they were)
// and the ResultColumn names, units and multipliers that histograms and statistics read.
void SetResultTab(ResultsGrid& grid, ResultTable& table, int tab, const Recording& r);

// Appending by the analyses: the identifier cut at 60 characters, the row made current.
void AppendResult(ResultTable& table, ResultsGrid& grid, ResultRow row);
// The fitting run's own captions of columns 12 to 16.
void SetFittingRunCaptions(ResultsGrid& grid);

// Row deletions; each keeps the order of what stays.
void menu_LastResult(ResultTable& table, ResultsGrid& grid);
void menu_DeleteSelected(ResultTable& table, ResultsGrid& grid);
void menu_DeleteEven(ResultTable& table, ResultsGrid& grid);  // keeps the 1st, 3rd, ...
void menu_DeleteOdd(ResultTable& table, ResultsGrid& grid);   // keeps the 2nd, 4th, ...
void menu_ClearResults(ResultTable& table, ResultsGrid& grid);

// The text of a cell as the grid shows it: the identifier, or the value in the runtime's
// number text.
std::string ResultCellText(const ResultRow& row, int column);
// Captions, then one line a row, cells tab-separated, CR LF between lines.
std::string ResultsGridText(const ResultTable& table, const ResultsGrid& grid);

// The results file: a 32-byte mark, then 220 bytes a row. The row count is the file's length.
std::string RslBytes(std::span<const ResultRow> rows);
// nullopt for a file without the mark. A file cut inside a row counts the row when more than
// half of it is there; the part not there reads as blanks and zeros.
std::optional<std::vector<ResultRow>> ReadRsl(std::string_view bytes);

void menu_SaveResults(Session& s, UserDialogs& ui);
void menu_LoadResults(Session& s, UserDialogs& ui, ResultsGrid& grid);
// "Save as ASCII file": the grid's text in a new .Fit file; an existing name is refused.
void menu_copyasciifile(Session& s, UserDialogs& ui, const ResultsGrid& grid);
void menu_copyresults(Session& s, UserDialogs& ui, const ResultsGrid& grid);

// Columns to the Data Arrays: column c (1-based grid column) copies Values(c - 1) of every row.
void menu_Put2Array(Session& s, UserDialogs& ui, int arrayNumber, int column);
// A1 / (A1 + A2) (which 1) or A2 / (A1 + A2) (which 2) of every row into the array of `index`
// (0: Array #1, 1: Array #2).
void AoverSum(Session& s, UserDialogs& ui, int which, int index);

// The plot menu's column entries: 1..19 the grid columns, these two the arrays.
inline constexpr int kPlotArray1 = kGridColumns;
inline constexpr int kPlotArray2 = kGridColumns + 1;
enum class ResultPlot { Frequency, Cumulative, TimeCourse };
// The window's Histogram, fed from the results table.
void ResultsHistogram(Session& s, UserDialogs& ui, const ResultsGrid& grid, ResultPlot kind,
                      int column);

// Column statistics over the columns that have a caption.
void menu_ColumnStat(const Session& s, const ResultsGrid& grid, CStatForm& form);

}  // namespace ardel::group
