// The main window's "&Plot" menu and the Data Array menu's plot entries. Every item runs its
// handler by name; the graphs they open appear in the "Graph Window" frame.
#pragma once

#include <QWidget>

#include "core/session.h"
#include "ui/plot/graph_window.h"

class QMenu;
class QMenuBar;

namespace ardel {

// Adds "&Plot" to the bar and makes a graph frame, owned by the bar's window, the session's
// graph sink. Returns the frame.
GraphFrame* AddPlotMenu(QMenuBar* bar, Session& s, RunHandler run);

// The Data Array menu's entries: frequency and cumulative histograms of each array and the X-Y
// plot of the two.
void AddArrayPlotItems(QMenu* arrayMenu, RunHandler run);

}  // namespace ardel
