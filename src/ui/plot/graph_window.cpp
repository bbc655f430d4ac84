#include "ui/plot/graph_window.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QImage>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPrinter>
#include <QVBoxLayout>
#include <qcustomplot.h>

#include "graph/graph_menu.h"
#include "ui/plot/graph_dialogs.h"
#include "ui/plot/graph_render.h"

namespace ardel {

namespace {

struct MenuItem {
    const char* name;
    const char* caption;
};

constexpr MenuItem kGraphMenu[] = {
    {"menu_CopyGraph", "Copy &Graph as Picture"},
    {"menu_Copy2BMP", "Save Graph as &Picture"},
    {"menu_copydata", "Copy Graph Values to Clipboard"},
    {"menu_CopyDataASCII", "Save Graph Values as ASCII file"},
    {"menu_Array1", "Copy Graph Values to Array #1 and Array #2"},
    {"menu_AddPlot1", "Add a Plot from Array #1 and Array #2"},
    {"menu_BlankGraph", "Open a Blank Graph"},
    {"menu_PrintGraph", "&Print Current Graph"},
    {"menu_SelectPlot", "&Select Graphs to Print"},
    {"menu_customize", "Customize Graph"},
    {"menu_changeXMax", "Change X axis Maximum"},
    {"menu_changeYMax", "Change Y axis Maximum"},
    {"menu_XTicks", "Change X axis Number of Ticks"},
    {"menu_YTicks", "Change Y axis Number of Ticks"},
    {"menu_EditTitle", "Edit Graph Title"},
    {"menu_XTitle", "Edit X Axis Title"},
    {"menu_YTitle", "Edit Y Axis Title"},
};
constexpr MenuItem kWindowsMenu[] = {
    {"menu_tile_horizontal", "Tile &Horizontally"},
    {"menu_tile_vertical", "Tile &Vertically"},
    {"menu_cascade", "&Cascade"},
};

}  // namespace

GraphChild::GraphChild(Session& s, std::shared_ptr<GraphModel> graph, RunHandler run,
                       QWidget* parent)
    : QWidget(parent), session_(s), graph_(std::move(graph)), run_(std::move(run)) {
    setObjectName("GraphFormMDI");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QString::fromStdString(graph_->Caption));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* bar = new QMenuBar(this);
    QMenu* graphMenu = bar->addMenu("&Graph and Data");
    graphMenu->setObjectName("menu_graph");
    QMenu* windowsMenu = bar->addMenu("&Windows");
    windowsMenu->setObjectName("menu_windows");
    FillMenu(graphMenu, windowsMenu);
    layout->setMenuBar(bar);

    plot_ = new QCustomPlot(this);
    plot_->setObjectName("Graph1");
    plot_->setToolTip("Click right mouse button!");
    plot_->setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    plot_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(plot_, &QWidget::customContextMenuRequested, this, [this, graphMenu](const QPoint& at) {
        graphMenu->exec(plot_->mapToGlobal(at));
    });
    // A double click undoes zooming and panning.
    connect(plot_, &QCustomPlot::mouseDoubleClick, this,
            [this](QMouseEvent*) { ResetGraphRanges(*plot_, *graph_); });
    layout->addWidget(plot_);
    resize(640, 420);
    Refresh(true);
}

GraphChild::~GraphChild() = default;

void GraphChild::FillMenu(QMenu* graphMenu, QMenu* windowsMenu) {
    auto add = [this](QMenu* menu, const MenuItem& item) {
        QAction* a = menu->addAction(item.caption);
        a->setObjectName(item.name);
        connect(a, &QAction::triggered, this, [this, name = std::string(item.name)] { RunItem(name); });
    };
    for (const MenuItem& item : kGraphMenu) add(graphMenu, item);
    for (const MenuItem& item : kWindowsMenu) add(windowsMenu, item);
}

void GraphChild::RunItem(const std::string& item) {
    const auto it = std::find(session_.graphs.begin(), session_.graphs.end(), graph_);
    if (it == session_.graphs.end()) return;
    const auto number = std::distance(session_.graphs.begin(), it) + 1;
    // The handler may open graphs or close this one; keep the model until it is done.
    const auto keep = graph_;
    run_("Graph(" + std::to_string(number) + ")." + item);
    if (auto* frame = qobject_cast<GraphFrame*>(window())) frame->RefreshAll();
    else Refresh();
}

void GraphChild::Refresh(bool force) {
    if (!force && graph_->DrawCount() == drawn_) return;
    drawn_ = graph_->DrawCount();
    setWindowTitle(QString::fromStdString(graph_->Caption));
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget())) sub->setWindowTitle(windowTitle());
    RenderGraph(*plot_, *graph_);
}

void GraphChild::closeEvent(QCloseEvent* event) {
    CloseGraph(session_, graph_.get());
    QWidget::closeEvent(event);
}

GraphFrame::GraphFrame(Session& s, RunHandler run, QWidget* parent)
    : QMainWindow(parent, Qt::Window), session_(s), run_(std::move(run)) {
    setObjectName("GraphWindow");
    setWindowTitle("Graph Window");
    area_ = new QMdiArea(this);
    area_->setBackground(QColor(236, 236, 236));
    setCentralWidget(area_);
    QMenu* windows = menuBar()->addMenu("&Windows");
    windows->setObjectName("menu_windows");
    const std::pair<const char*, int> arrangements[] = {
        {"Tile &Horizontally", 1}, {"Tile &Vertically", 2}, {"&Cascade", 0}};
    for (const auto& [caption, code] : arrangements)
        windows->addAction(caption, this, [this, code = code] { Arrange(code); });
    resize(1100, 760);
    session_.graphSink = this;
}

GraphFrame::~GraphFrame() {
    if (session_.graphSink == this) session_.graphSink = nullptr;
}

void GraphFrame::RefreshAll() {
    for (QMdiSubWindow* sub : area_->subWindowList())
        if (auto* child = qobject_cast<GraphChild*>(sub->widget())) child->Refresh();
}

void GraphFrame::GraphOpened(Session& s, const std::shared_ptr<GraphModel>& graph) {
    auto* child = new GraphChild(s, graph, run_);
    QMdiSubWindow* sub = area_->addSubWindow(child);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->resize(640, 440);
    show();
    raise();
    child->show();
}

std::string GraphFrame::PictureBytes(const GraphModel& graph, PictureFormat format) {
    return GraphPicture(graph, format);
}

void GraphFrame::CopyPicture(const GraphModel& graph) {
    QImage image;
    image.loadFromData(QByteArray::fromStdString(GraphPicture(graph, PictureFormat::Png)), "PNG");
    QApplication::clipboard()->setImage(image);
}

void GraphFrame::Print(UserDialogs& ui, const std::vector<std::shared_ptr<GraphModel>>& graphs) {
    PrintGraphs(ui, graphs);
}

void GraphFrame::SelectGraphsToPrint(Session& s, UserDialogs& ui) {
    const auto chosen = ChooseGraphsToPrint(s.graphs, this);
    if (!chosen.empty()) PrintGraphs(ui, chosen);
}

bool GraphFrame::Customize(GraphModel& graph) { return CustomizeGraph(graph, this); }

void GraphFrame::Arrange(int code) {
    if (code == 0) {
        area_->cascadeSubWindows();
        return;
    }
    // Tiled side by side (2) or one above the other (1).
    const auto subs = area_->subWindowList();
    if (subs.isEmpty()) return;
    const QRect r = area_->viewport()->rect();
    const int n = int(subs.size());
    for (int i = 0; i < n; ++i) {
        subs[i]->showNormal();
        if (code == 1)
            subs[i]->setGeometry(0, r.height() * i / n, r.width(), r.height() / n);
        else
            subs[i]->setGeometry(r.width() * i / n, 0, r.width() / n, r.height());
    }
}

std::string OffscreenGraphSink::PictureBytes(const GraphModel& graph, PictureFormat format) {
    return GraphPicture(graph, format);
}

void OffscreenGraphSink::CopyPicture(const GraphModel& graph) {
    QImage image;
    image.loadFromData(QByteArray::fromStdString(GraphPicture(graph, PictureFormat::Png)), "PNG");
    QApplication::clipboard()->setImage(image);
}

void OffscreenGraphSink::Print(UserDialogs& ui, const std::vector<std::shared_ptr<GraphModel>>&) {
    ui.Message(kNeedsDesktopTitle, "Printing needs the desktop program's window.");
}

void OffscreenGraphSink::SelectGraphsToPrint(Session&, UserDialogs& ui) {
    ui.Message(kNeedsDesktopTitle, "Printing needs the desktop program's window.");
}

void PrintGraphs(UserDialogs& ui, const std::vector<std::shared_ptr<GraphModel>>& graphs) {
    QPrinter printer(QPrinter::HighResolution);
    if (!printer.isValid()) {
        ui.Message("Print Graph", "No printer is set up on this computer.");
        return;
    }
    QCPPainter painter;
    if (!painter.begin(&printer)) {
        ui.Message("Print Graph", "The printer could not be started.");
        return;
    }
    painter.setMode(QCPPainter::pmVectorized);
    painter.setMode(QCPPainter::pmNoCaching);
    const QRect page = printer.pageLayout().paintRectPixels(printer.resolution());
    bool first = true;
    for (const auto& g : graphs) {
        if (!first) printer.newPage();
        first = false;
        // The graph fills the middle half of the page, as it always has.
        const QRect target(page.width() / 4, page.height() / 4, page.width() / 2, page.height() / 2);
        QCustomPlot plot;
        plot.resize(800, 520);
        RenderGraph(plot, *g);
        painter.save();
        painter.setViewport(target);
        painter.setWindow(0, 0, 800, 520);
        plot.toPainter(&painter, 800, 520);
        painter.restore();
    }
    painter.end();
}

}  // namespace ardel
