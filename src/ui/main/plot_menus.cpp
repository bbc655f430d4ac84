#include "ui/main/plot_menus.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include "graph/histograms.h"
#include "ui/main/analysis_menus.h"
#include "ui/main/window_helpers.h"

namespace ardel {

namespace {

void AddItem(QMenu* menu, const QString& caption, const std::string& name, const RunHandler& run) {
    mainwindow::AddHandlerItem(menu, caption, name, run);
}

// A field sub-menu: item k runs NAME(offset + k).
void AddFieldMenu(QMenu* plot, const QString& caption, const char* name, int offset,
                  const RunHandler& run) {
    QMenu* menu = plot->addMenu(caption);
    menu->setObjectName(name);
    // The items are made the first time the menu opens, as the window always did.
    QObject::connect(menu, &QMenu::aboutToShow, menu, [menu, name, offset, run] {
        if (!menu->isEmpty()) return;
        for (int field = 1; field <= kFieldArray2; ++field) {
            AddItem(menu, QString::fromUtf8(kPlotFieldCaptions[std::size_t(field)].data(),
                                            qsizetype(kPlotFieldCaptions[std::size_t(field)].size())),
                    std::string(name) + "(" + std::to_string(offset + field) + ")", run);
        }
    });
}

}  // namespace

GraphFrame* AddPlotMenu(QMenuBar* bar, Session& s, RunHandler run) {
    auto* frame = new GraphFrame(s, run, bar->window());
    QMenu* plot = bar->addMenu("&Plot");
    plot->setObjectName("menu_Plot");
    AddFieldMenu(plot, "Frequency Histogram", "menu_FreqHisto", kFrequencyKind, run);
    AddFieldMenu(plot, "Cumulative Histogram", "menu_CumulHisto", kCumulativeKind, run);
    AddFieldMenu(plot, "Cumulative Histogram without Bins", "menu_CumulHistoNoBin",
                 kCumulativeNoBinKind, run);
    AddFieldMenu(plot, "Inverse Cumulative Histogram", "menu_InverseCumuloHisto",
                 kInverseCumulativeKind, run);
    QMenu* running = plot->addMenu("Running Average Histo (Avg+SEM)");
    running->setObjectName("menu_RunningAverage");
    for (int field = 1; field <= kFieldArray1; ++field) {
        const std::string_view caption = RunningAverageCaption(field);
        if (caption.empty()) continue;
        AddItem(running, QString::fromUtf8(caption.data(), qsizetype(caption.size())),
                "menu_RunningAverage(" + std::to_string(field) + ")", run);
    }
    plot->addSeparator();
    AddPlotCorrelogramItems(plot, run);
    AddItem(plot, "X-Y Plot of Array #1 and Array #2", "menu_plotscatterXY", run);
    AddItem(plot, "Open a Blank Graph", "menu_OpenGraph", run);
    plot->addSeparator();
    QAction* show = plot->addAction("Show Graph Window");
    QObject::connect(show, &QAction::triggered, frame, [frame] {
        frame->show();
        frame->raise();
    });
    return frame;
}

void AddArrayPlotItems(QMenu* arrayMenu, RunHandler run) {
    AddItem(arrayMenu, "Frequency Histogram of Array#1", "menu_plotFreqHist1", run);
    AddItem(arrayMenu, "Frequency Histogram of Array#2", "menu_plotFreqHist2", run);
    AddItem(arrayMenu, "Cumulative Histogram of Array#1", "menu_plotCumHist1", run);
    AddItem(arrayMenu, "Cumulative Histogram of Array#2", "menu_plotCumHist2", run);
    AddItem(arrayMenu, "Cumulative Histogram of Array#1 without Bins", "menu_plotCumHistnobin1", run);
    AddItem(arrayMenu, "Cumulative Histogram of Array#2 without Bins", "menu_plotCumHistnobin2", run);
    AddItem(arrayMenu, "X-Y Plot of Array #1 and Array #2", "menu_plotscatterXY", run);
}

}  // namespace ardel
