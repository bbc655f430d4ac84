// The graph frame and its children: a histogram opened through the Plot menu's handler shows
// bars, the child's menu runs the graph's handlers by number, pictures come out in each format.
#include "ui/plot/graph_window.h"

#include <QAction>
#include <QImage>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <qcustomplot.h>

#include <gtest/gtest.h>

#include "graph/graph_sink.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"
#include "ui/plot/graph_render.h"

namespace ardel {
namespace {

struct Rig {
    Session session;
    testing::ScriptedDialogs ui;
    Forms forms;
    CommandTable table;
    CommandContext context{session, ui, forms};
    Rig() {
        context.headless = true;
        RegisterAllCommands(table);
    }
    RunHandler Runner() {
        return [this](const std::string& name) {
            const CommandEntry* entry = table.Find(name);
            ASSERT_NE(entry, nullptr) << name;
            RunCommand(context, *entry);
        };
    }
};

TEST(GraphWindow, AHistogramOfArray1ShowsBarsAndItsMenuRunsTheGraphsHandlers) {
    Rig r;
    GraphFrame frame(r.session, r.Runner());
    EXPECT_EQ(r.session.graphSink, &frame);
    r.session.dataArray1.Redim(40);
    for (int i = 1; i <= 40; ++i) r.session.dataArray1(i) = float(i % 9) + 0.5f * float(i % 3);
    r.ui.ExpectInput("Bin Size", std::nullopt, "1");
    r.Runner()("menu_plotFreqHist1");
    ASSERT_EQ(r.session.graphs.size(), 1u);
    ASSERT_EQ(frame.area()->subWindowList().size(), 1);
    auto* child = qobject_cast<GraphChild*>(frame.area()->subWindowList()[0]->widget());
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->windowTitle().toStdString(), "Data Array#1 Frequency Histogram  ");

    // Not blank, and the bars' colour covers a fair part of the plot.
    child->resize(640, 420);
    const QImage image = child->plot()->toPixmap(640, 420).toImage();
    const QColor bar = GraphColor(r.session.graphs[0]->SetColor(1));
    int barPixels = 0, inked = 0;
    for (int y = 0; y < image.height(); y += 2)
        for (int x = 0; x < image.width(); x += 2) {
            const QColor c = image.pixelColor(x, y);
            if (c != QColor(Qt::white)) ++inked;
            if (std::abs(c.blue() - bar.blue()) < 40 && std::abs(c.red() - bar.red()) < 60 &&
                c.blue() > c.red() + 40)
                ++barPixels;
        }
    EXPECT_GT(inked, 2000);
    EXPECT_GT(barPixels, 2000);

    // The child's menu item runs Graph(1).menu_copydata: the values on the clipboard and the
    // set marked, which the window draws at once.
    auto* copy = child->findChild<QAction*>("menu_copydata");
    ASSERT_NE(copy, nullptr);
    copy->trigger();
    EXPECT_EQ(r.ui.clipboard, GraphValueText(*r.session.graphs[0]));
    EXPECT_EQ(r.session.graphs[0]->SetColor(1), 9);

    // A blank graph from the child's menu is Graph(2); closing the first renumbers it.
    child->findChild<QAction*>("menu_BlankGraph")->trigger();
    ASSERT_EQ(r.session.graphs.size(), 2u);
    EXPECT_EQ(frame.area()->subWindowList().size(), 2);
    frame.area()->subWindowList()[0]->close();
    ASSERT_EQ(r.session.graphs.size(), 1u);
    EXPECT_EQ(r.session.graphs[0]->Caption, "Blank Graph");
}

TEST(GraphWindow, PicturesInEachFormat) {
    GraphModel g;
    g.GraphTitle = "Cumulative";
    g.GraphStyle = kStyleLines;
    g.SetPointCount(3);
    g.AddPoint(0, 0);
    g.AddPoint(1, 0.5f);
    g.AddPoint(2, 1);
    const std::string png = GraphPicture(g, PictureFormat::Png);
    const std::string pdf = GraphPicture(g, PictureFormat::Pdf);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
    QImage image;
    ASSERT_TRUE(image.loadFromData(QByteArray::fromStdString(png), "PNG"));
    // Twice the pixels of the picture's size, for sharp prints.
    EXPECT_EQ(image.width(), 1600);
#ifdef ARDEL_HAVE_QTSVG
    const std::string svg = GraphPicture(g, PictureFormat::Svg);
    EXPECT_NE(svg.find("<svg"), std::string::npos);
    // Vectors and real text, not an embedded bitmap.
    EXPECT_NE(svg.find("<polyline"), std::string::npos);
    EXPECT_NE(svg.find("<text"), std::string::npos);
    EXPECT_EQ(svg.find("<image"), std::string::npos);
#endif
}

}  // namespace
}  // namespace ardel
