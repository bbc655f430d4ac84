// Everything one open recording and its analysis work on, passed explicitly to every command
// so that several sessions can run side by side (the command line analyses files in parallel).
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/event_table.h"
#include "core/parameters.h"
#include "core/recording.h"
#include "core/result_table.h"

namespace ardel {

class GraphModel;  // graph/graph_model.h
class GraphSink;   // graph/graph_sink.h

// A mark drawn over the trace while a scan runs; the next redraw loses it.
struct TraceMark {
    enum class Kind { Cross, Point } kind = Kind::Cross;
    std::uint8_t r = 0, g = 0, b = 0;
    double x = 0;  // point index on the screen
    double y = 0;  // picture units (0 top, 65536 bottom)
    int penWidth = 1;
};

struct DisplayState {
    std::array<float, 16> DisplayGain{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    std::array<std::int32_t, 16> DisplayOffset{};
    bool LockBase = false;
    float FractionWindow = 0.25f;
    bool DisplayTrace = true;  // ckDisplayTrace: draw the trace during non-stop analysis
    bool NonStopRunning = false;
    bool BatchRunning = false;  // the companion flag that Interrupt clears too
    std::vector<TraceMark> transientMarks;
    std::int32_t SelectedEvent = 0;  // event marked by PlotSelected, 0 for none

    // Vertical picture position of a raw value of the active channel. The centre constant is
    // 32786, not 32768; the picture has always been drawn 18 units off and stays so.
    double CalculateYPosition(double sample, int channel) const;
};

// 1-based vector of floats; a cleared array has shape 1 to 1.
struct DataArray {
    std::vector<float> values = std::vector<float>(2, 0.0f);  // index 0 unused
    std::int32_t UpperBound() const { return std::int32_t(values.size()) - 1; }
    bool IsEmpty() const { return UpperBound() < 2; }
    void Redim(std::int32_t upper) { values.assign(std::size_t(upper < 1 ? 1 : upper) + 1, 0.0f); }
    float& operator()(std::int32_t i) { return values[std::size_t(i)]; }
    float operator()(std::int32_t i) const { return values[std::size_t(i)]; }
};

struct Session {
    Recording recording;
    EventTable events;
    DetectionParameters params;
    ProgramOptions options;
    DisplayState display;
    DataArray dataArray1, dataArray2;
    // The values of the last histogram, 1-based like the Data Arrays (element 0 unused).
    std::vector<float> HistogramData;
    // The group analyses' results; survives closing the group window.
    ResultTable results;
    std::string Label11;      // the open file's name as the main window shows it
    std::string FileComment;  // the 56-character comment that event files carry
    // The folder the file list shows; file dialogs start there.
    std::filesystem::path CurrentFolder;
    // The grid's highlighted rows as event numbers, in the order they were highlighted: the
    // list that the commands on "highlighted events" work through. Rows beyond the table are
    // kept as given; each command checks them against its own bounds.
    std::vector<std::int32_t> HighlightedRows;
    // The runtime's uniform generator (Rnd). It is never reseeded, so every program start
    // draws the same sequence.
    std::uint32_t RndState = 0x50000;
    // The open graph windows in opening order: scripts name them Graph(1), Graph(2), ... A graph
    // closed in the desktop leaves the list, so the later ones move up, as the window list does.
    std::vector<std::shared_ptr<GraphModel>> graphs;
    // Shows graphs and draws pictures where a screen is there (the desktop program); without
    // one the graphs stay data. Not owned.
    GraphSink* graphSink = nullptr;

    // Called at the end of every Display so that a window can repaint; the engine draws
    // nothing itself.
    std::function<void(Session&)> onDisplay;
    // Applied to the freshly loaded screen buffers when the filter box is checked.
    std::function<void(Session&)> screenFilter;
    // The pointer readout's label doubles as a progress text while old event files are
    // converted.
    std::function<void(Session&, std::string_view)> onLabel4;
};

// Loads the screen buffers for ScreenBlock, filters them when asked, drops the transient
// marks and lets the window repaint. Does nothing without an open file.
void Display(Session& s);

// Empties the table: EventCount 0, grid rebind, redraw.
void ClearGrid(Session& s);

}  // namespace ardel
