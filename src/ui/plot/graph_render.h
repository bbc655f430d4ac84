// Draws a graph model with QCustomPlot: bars, lines, symbols, error bars, titles and axes. The
// only place besides the graph windows that knows the plotting library.
#pragma once

#include <string>

#include <QColor>
#include <QPixmap>
#include <QSize>

#include "graph/graph_model.h"
#include "graph/graph_sink.h"

class QCustomPlot;

namespace ardel {

// The colour of a colour code 0..15 (others wrap).
QColor GraphColor(int code);

// Replaces what the plot shows by the model: plottables, titles, axis ranges and ticks.
void RenderGraph(QCustomPlot& plot, const GraphModel& g);
// Sets the axis ranges from the model (the data's extent, or the user's maxima) and redraws:
// what a double click returns to after zooming.
void ResetGraphRanges(QCustomPlot& plot, const GraphModel& g);

// The picture of a graph as file bytes: PNG at twice the size for sharp prints, SVG and PDF as
// vectors. std::runtime_error with a sentence when the format cannot be written here.
std::string GraphPicture(const GraphModel& g, PictureFormat format, QSize size = QSize(800, 520));
// The picture for a widget of the given size, drawn at the screen's pixel ratio: no file format
// in between, so a window that shows several graphs redraws them quickly.
QPixmap GraphPixmap(const GraphModel& g, QSize size, double pixelRatio);

}  // namespace ardel
