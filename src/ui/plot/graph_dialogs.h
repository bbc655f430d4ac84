// The two dialogs of the graph windows: the choice of graphs to print and the customise dialog
// (colours, symbols, bars or lines, axis ranges).
#pragma once

#include <memory>
#include <vector>

#include "graph/graph_model.h"

class QWidget;

namespace ardel {

// "Select Graphs to Print": the open graphs by caption, all checked. Empty when cancelled.
std::vector<std::shared_ptr<GraphModel>> ChooseGraphsToPrint(
    const std::vector<std::shared_ptr<GraphModel>>& graphs, QWidget* parent);

// "Customize Graph". True when the user pressed OK (the graph then holds the choices).
bool CustomizeGraph(GraphModel& g, QWidget* parent);

}  // namespace ardel
