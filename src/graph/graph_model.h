// What a graph window holds: data sets of equal point count with x, y and error values,
// titles, axis settings, style, colours and symbols. Producers fill a model and open it
// (graph_sink.h); the desktop renders it, scripts read its value text. A graph's data live
// here only: nothing else keeps them after the producer is done.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ardel {

struct GraphPoint {
    float x = 0;
    float y = 0;
    // Upper and lower error of the point (PointHigh, PointLow); PointError sets both.
    float high = 0;
    float low = 0;
};

// The graph's kind: every producer makes X-Y graphs.
inline constexpr int kGraphKindXY = 9;

// GraphStyle values. Bars and lines are the histogram styles; the others are this program's
// own choice for the plots that name none.
inline constexpr int kStyleLine = 0;      // a connected line, symbols where the set has one
inline constexpr int kStyleScatter = 1;   // symbols only
inline constexpr int kStyleBars = 3;      // touching bars from each x to x + BarWidth
inline constexpr int kStyleLines = 6;     // a connected line (cumulative histograms)

// ErrorStyle 5: the points carry error values, drawn as bars and exported as "Std Error".
inline constexpr int kErrorStyleOn = 5;
// XAxisStyleFlag / YAxisStyleFlag 2: the axis maximum is the user's, not the data's.
inline constexpr int kAxisUserDefined = 2;

// Colour codes 0-15 and symbol codes 0-6 (the renderer's palette and shapes).
inline constexpr int kColorCount = 16;
enum GraphSymbol : int {
    kSymbolNone = 0,
    kSymbolCross = 1,
    kSymbolPlus = 2,
    kSymbolCircle = 3,
    kSymbolSquare = 4,
    kSymbolTriangle = 5,
    kSymbolDiamond = 6,
};
inline constexpr int kSymbolCount = 7;

class GraphModel {
  public:
    GraphModel();

    std::string Caption;  // the window's caption
    std::string GraphTitle;
    std::string BottomTitle;
    std::string LeftTitle;
    int GraphKind = kGraphKindXY;
    int GraphStyle = kStyleLine;
    int ErrorStyle = 0;
    // Bars' width in x units; 0 lets the renderer take the spacing of the points.
    double BarWidth = 0;

    int XAxisStyleFlag = 0;
    double XAxisMaximum = 0;
    int XAxisTicks = 5;
    int YAxisStyleFlag = 0;
    double YAxisMaximum = 0;
    int YAxisTicks = 5;
    // The customise dialog can set the lower ends too; used only with the style flag 2.
    double XAxisMinimum = 0;
    double YAxisMinimum = 0;
    bool XAxisUserMinimum = false;
    bool YAxisUserMinimum = false;

    // The addressed set and point, 1-based.
    int CurrentSet = 1;
    int CurrentPoint = 1;

    int PointCount() const { return pointCount_; }
    int SetCount() const { return int(sets_.size()); }
    // A new point count applies to every set: new points are 0, points beyond are dropped.
    void SetPointCount(int n);
    // New sets get points of 0 and the colour of their number.
    void SetSetCount(int n);

    // Point p of set s, both 1-based; std::out_of_range outside.
    GraphPoint& Point(int set, int point);
    const GraphPoint& Point(int set, int point) const;
    const std::vector<GraphPoint>& Points(int set) const;
    int& SetColor(int set);
    int SetColor(int set) const;
    int& SetSymbol(int set);
    int SetSymbol(int set) const;

    // Writes x and y of the current point of the current set, then moves to the next point
    // (PointX, PointValue, AutoAdvance).
    void AddPoint(float x, float y);

    // DrawMode 2: the picture is to be drawn again. The count lets a window see that its
    // graph changed.
    void Redraw() { ++drawCount_; }
    std::uint64_t DrawCount() const { return drawCount_; }

    // The y maximum the axis shows when the user has set none: the largest y (with its upper
    // error), at least 0.
    double AutoYMaximum() const;

  private:
    struct Set {
        std::vector<GraphPoint> points;
        int color = 1;
        int symbol = kSymbolNone;
    };
    Set& SetAt(int set);
    const Set& SetAt(int set) const;

    std::vector<Set> sets_;
    int pointCount_ = 0;
    std::uint64_t drawCount_ = 0;
};

// Cuts a graph title to the 80 characters the graph shows.
std::string GraphTitleText(std::string_view title);

// "Save Graph Values as ASCII file" and "Copy Graph Values to Clipboard": the ATF header, the
// titles, then the rows of every set one set after another (x, y, and with error style 5 the
// error), each value through Str and followed by a tab, CR LF line ends. The second line
// announces two columns per set although the sets follow each other.
std::string GraphValueText(const GraphModel& g);

}  // namespace ardel
