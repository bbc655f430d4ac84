// A graph window showing 100,000 points (a line with symbols off, as a long cumulative curve)
// redrawn offscreen. A redraw has to fit in a frame (16 ms).
#include <benchmark/benchmark.h>

#include <cmath>

#include <QApplication>
#include <qcustomplot.h>

#include "graph/graph_model.h"
#include "ui/plot/graph_render.h"

namespace {

void BM_GraphRedraw100kPoints(benchmark::State& state) {
    ardel::GraphModel g;
    g.GraphStyle = ardel::kStyleLines;
    const int n = 100'000;
    g.SetPointCount(n);
    for (int i = 0; i < n; ++i) g.AddPoint(float(i) * 0.01f, std::sin(float(i) * 0.001f) + float(i % 7) * 0.01f);
    QCustomPlot plot;
    plot.resize(1200, 800);
    ardel::RenderGraph(plot, g);
    for (auto _ : state) plot.replot(QCustomPlot::rpImmediateRefresh);
}
BENCHMARK(BM_GraphRedraw100kPoints)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
