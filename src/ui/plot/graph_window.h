// The "Graph Window" frame (an MDI area of graph children) and the graph children. Each child
// draws one graph model and offers the graph's menu, in its menu bar and on a right click; the
// items run the graph's handlers by name ("Graph(N).menu_CopyDataASCII") through the same
// table as scripts. The frame is the session's graph sink while it lives.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QMainWindow>
#include <QWidget>

#include "ui/run_handler.h"
#include "core/session.h"
#include "graph/graph_sink.h"

class QCustomPlot;
class QMdiArea;
class QMenu;
class QMenuBar;

namespace ardel {

// Runs a handler of the command table by name.

class GraphChild : public QWidget {
    Q_OBJECT
  public:
    GraphChild(Session& s, std::shared_ptr<GraphModel> graph, RunHandler run,
               QWidget* parent = nullptr);
    ~GraphChild() override;

    const std::shared_ptr<GraphModel>& graph() const { return graph_; }
    QCustomPlot* plot() const { return plot_; }
    // Draws the model again when it changed since the last drawing.
    void Refresh(bool force = false);

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void FillMenu(QMenu* graphMenu, QMenu* windowsMenu);
    void RunItem(const std::string& item);

    Session& session_;
    std::shared_ptr<GraphModel> graph_;
    RunHandler run_;
    QCustomPlot* plot_ = nullptr;
    std::uint64_t drawn_ = ~std::uint64_t(0);
};

class GraphFrame : public QMainWindow, public GraphSink {
    Q_OBJECT
  public:
    GraphFrame(Session& s, RunHandler run, QWidget* parent = nullptr);
    ~GraphFrame() override;

    QMdiArea* area() const { return area_; }
    // Brings every child up to date with its model.
    void RefreshAll();

    void GraphOpened(Session& s, const std::shared_ptr<GraphModel>& graph) override;
    std::string PictureBytes(const GraphModel& graph, PictureFormat format) override;
    void CopyPicture(const GraphModel& graph) override;
    void Print(UserDialogs& ui, const std::vector<std::shared_ptr<GraphModel>>& graphs) override;
    void SelectGraphsToPrint(Session& s, UserDialogs& ui) override;
    bool Customize(GraphModel& graph) override;
    void Arrange(int code) override;

  private:
    Session& session_;
    RunHandler run_;
    QMdiArea* area_ = nullptr;
};

// Pictures without windows, for "ardelvantine --run": graphs stay data, pictures are drawn
// offscreen, the clipboard gets the image; printing is left to the desktop.
class OffscreenGraphSink : public GraphSink {
  public:
    void GraphOpened(Session&, const std::shared_ptr<GraphModel>&) override {}
    std::string PictureBytes(const GraphModel& graph, PictureFormat format) override;
    void CopyPicture(const GraphModel& graph) override;
    void Print(UserDialogs& ui, const std::vector<std::shared_ptr<GraphModel>>& graphs) override;
    void SelectGraphsToPrint(Session& s, UserDialogs& ui) override;
    bool Customize(GraphModel&) override { return false; }
    void Arrange(int) override {}
};

// Prints graphs on the default printer, one a page, each in the middle half of its page.
void PrintGraphs(UserDialogs& ui, const std::vector<std::shared_ptr<GraphModel>>& graphs);

}  // namespace ardel
