// Where graphs go once a producer has filled them. The session keeps the open graphs in opening
// order (Session::graphs); a sink, where one is installed, shows them and draws their pictures.
// Without a sink (the command line) graphs stay data that scripts read.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "graph/graph_model.h"

namespace ardel {

// The picture formats a graph is saved in, by the file's extension.
enum class PictureFormat { Png, Svg, Pdf };

class GraphSink {
  public:
    virtual ~GraphSink() = default;

    // The graph was appended to Session::graphs: show it in the graph frame.
    virtual void GraphOpened(Session& s, const std::shared_ptr<GraphModel>& graph) = 0;
    // The graph's picture as the bytes of a file; std::runtime_error with a sentence when it
    // cannot be drawn.
    virtual std::string PictureBytes(const GraphModel& graph, PictureFormat format) = 0;
    // Puts the picture on the clipboard.
    virtual void CopyPicture(const GraphModel& graph) = 0;
    // Prints the graphs, one a page, in the middle half of the page.
    virtual void Print(UserDialogs& ui, const std::vector<std::shared_ptr<GraphModel>>& graphs) = 0;
    // "Select Graphs to Print": lets the user choose among the open graphs, then prints them.
    virtual void SelectGraphsToPrint(Session& s, UserDialogs& ui) = 0;
    // The customise dialog; true when the user changed the graph.
    virtual bool Customize(GraphModel& graph) = 0;
    // Arranges the frame's windows: 0 cascade, 1 tile horizontally, 2 tile vertically.
    virtual void Arrange(int code) = 0;
};

// Appends the graph to the open graphs and shows it where a sink is installed. Returns it.
std::shared_ptr<GraphModel> OpenGraph(Session& s, GraphModel graph);

// The open graph N (1-based, in opening order); nullptr when there is none.
std::shared_ptr<GraphModel> GraphNumber(const Session& s, int number);

// Drops a graph from the open graphs (its window was closed).
void CloseGraph(Session& s, const GraphModel* graph);

// The format a file name's extension asks for (any case); nullopt for other extensions.
std::optional<PictureFormat> PictureFormatOf(const std::filesystem::path& file);

}  // namespace ardel
