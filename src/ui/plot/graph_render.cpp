#include "ui/plot/graph_render.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include <QBuffer>
#include <QPdfWriter>
#include <QPageSize>
#include <qcustomplot.h>
#ifdef ARDEL_HAVE_QTSVG
#include <QSvgGenerator>
#endif

namespace ardel {

QColor GraphColor(int code) {
    // Colours that read well on white and in print; 15 is white as in the old palette.
    static const std::array<QColor, kColorCount> kPalette = {
        QColor(0, 0, 0),       QColor(31, 119, 180), QColor(44, 160, 44),  QColor(23, 190, 207),
        QColor(214, 39, 40),   QColor(148, 103, 189), QColor(140, 86, 75), QColor(127, 127, 127),
        QColor(64, 64, 64),    QColor(255, 127, 14), QColor(152, 223, 138), QColor(158, 218, 229),
        QColor(255, 152, 150), QColor(227, 119, 194), QColor(188, 189, 34), QColor(255, 255, 255)};
    return kPalette[std::size_t(((code % kColorCount) + kColorCount) % kColorCount)];
}

namespace {

QCPScatterStyle::ScatterShape Shape(int symbol) {
    switch (symbol) {
        case kSymbolCross: return QCPScatterStyle::ssCross;
        case kSymbolPlus: return QCPScatterStyle::ssPlus;
        case kSymbolCircle: return QCPScatterStyle::ssDisc;
        case kSymbolSquare: return QCPScatterStyle::ssSquare;
        case kSymbolTriangle: return QCPScatterStyle::ssTriangle;
        case kSymbolDiamond: return QCPScatterStyle::ssDiamond;
        default: return QCPScatterStyle::ssNone;
    }
}

QCPTextElement* TitleElement(QCustomPlot& plot) {
    if (plot.plotLayout()->rowCount() < 2 || !plot.plotLayout()->element(0, 0) ||
        !qobject_cast<QCPTextElement*>(plot.plotLayout()->element(0, 0))) {
        plot.plotLayout()->insertRow(0);
        QFont font = plot.font();
        font.setPointSizeF(11);
        font.setBold(true);
        plot.plotLayout()->addElement(0, 0, new QCPTextElement(&plot, QString(), font));
    }
    return qobject_cast<QCPTextElement*>(plot.plotLayout()->element(0, 0));
}

// A title of up to 80 characters does not fit a tiled window on one line: a long one is broken
// at the blank nearest its middle, so both halves stay readable in a narrow window.
QString TitleLines(const QString& title) {
    constexpr int kOneLine = 45;
    if (title.size() <= kOneLine) return title;
    const int middle = int(title.size()) / 2;
    int best = -1;
    for (int i = 0; i < int(title.size()); ++i)
        if (title[i] == ' ' && (best < 0 || std::abs(i - middle) < std::abs(best - middle))) best = i;
    if (best <= 0) return title;
    return title.left(best).trimmed() + "\n" + title.mid(best + 1).trimmed();
}

// Bars span their bin: from x to x + width, so the ticks name the bins' edges.
double BarWidthOf(const GraphModel& g) {
    if (g.BarWidth > 0) return g.BarWidth;
    const auto& p = g.Points(1);
    return p.size() >= 2 ? std::max(double(p[1].x - p[0].x), 1e-12) : 1.0;
}

void StyleAxis(QCPAxis* axis, const QFont& base) {
    QFont label = base;
    label.setPointSizeF(10);
    QFont ticks = base;
    ticks.setPointSizeF(9);
    axis->setLabelFont(label);
    axis->setTickLabelFont(ticks);
    axis->setBasePen(QPen(Qt::black, 1));
    axis->setTickPen(QPen(Qt::black, 1));
    axis->setSubTickPen(QPen(Qt::black, 1));
    axis->grid()->setPen(QPen(QColor(225, 225, 225), 1, Qt::DotLine));
    axis->grid()->setZeroLinePen(QPen(QColor(180, 180, 180), 1));
}

}  // namespace

void ResetGraphRanges(QCustomPlot& plot, const GraphModel& g) {
    plot.rescaleAxes();
    QCPRange x = plot.xAxis->range();
    QCPRange y = plot.yAxis->range();
    // Counts and fractions start at 0; a flat graph still gets room.
    if (y.lower > 0) y.lower = 0;
    if (y.upper < 0) y.upper = 0;
    if (y.size() <= 0) y.upper = y.lower + 1;
    y.upper += y.size() * 0.05;
    if (g.GraphStyle == kStyleBars && g.PointCount() > 0) {
        // From the first bin's lower edge to the last bin's upper edge.
        const double width = BarWidthOf(g);
        x.lower = x.upper = double(g.Points(1).front().x);
        for (int set = 1; set <= g.SetCount(); ++set)
            for (const GraphPoint& p : g.Points(set)) {
                x.lower = std::min(x.lower, double(p.x));
                x.upper = std::max(x.upper, double(p.x) + width);
            }
    }
    const double pad = x.size() > 0 ? x.size() * 0.02 : 0.5;
    x.lower -= pad;
    x.upper += pad;
    if (g.XAxisStyleFlag == kAxisUserDefined) {
        if (std::isfinite(g.XAxisMaximum) && g.XAxisMaximum > x.lower) x.upper = g.XAxisMaximum;
        if (g.XAxisUserMinimum && g.XAxisMinimum < x.upper) x.lower = g.XAxisMinimum;
    }
    if (g.YAxisStyleFlag == kAxisUserDefined) {
        if (std::isfinite(g.YAxisMaximum) && g.YAxisMaximum > y.lower) y.upper = g.YAxisMaximum;
        if (g.YAxisUserMinimum && g.YAxisMinimum < y.upper) y.lower = g.YAxisMinimum;
    }
    plot.xAxis->setRange(x);
    plot.yAxis->setRange(y);
    plot.replot();
}

void RenderGraph(QCustomPlot& plot, const GraphModel& g) {
    plot.clearPlottables();
    plot.setAntialiasedElements(QCP::aeAll);
    // Long curves are drawn from two points per pixel column (the plot's adaptive sampling);
    // smoothing those many short segments would cost a frame, and a one-pixel line without it
    // looks the same.
    const bool dense = std::int64_t(g.PointCount()) * g.SetCount() > 20000;
    if (dense) plot.setNotAntialiasedElements(QCP::aePlottables);
    plot.setPlottingHint(QCP::phFastPolylines, dense);
    plot.setBackground(Qt::white);
    TitleElement(plot)->setText(TitleLines(QString::fromStdString(g.GraphTitle)));
    StyleAxis(plot.xAxis, plot.font());
    StyleAxis(plot.yAxis, plot.font());
    plot.xAxis->setLabel(QString::fromStdString(g.BottomTitle));
    plot.yAxis->setLabel(QString::fromStdString(g.LeftTitle));
    plot.xAxis->ticker()->setTickCount(std::clamp(g.XAxisTicks, 1, 50));
    plot.yAxis->ticker()->setTickCount(std::clamp(g.YAxisTicks, 1, 50));

    const double barWidth = g.GraphStyle == kStyleBars ? BarWidthOf(g) : 0.0;
    for (int set = 1; set <= g.SetCount(); ++set) {
        const auto& points = g.Points(set);
        QVector<double> keys, values, plus, minus;
        keys.reserve(qsizetype(points.size()));
        values.reserve(qsizetype(points.size()));
        for (const GraphPoint& p : points) {
            keys.push_back(double(p.x) + barWidth / 2);
            values.push_back(double(p.y));
            plus.push_back(double(p.high));
            minus.push_back(double(p.low));
        }
        const QColor color = GraphColor(g.SetColor(set));
        QCPAbstractPlottable1D<QCPGraphData>* withErrors = nullptr;
        if (g.GraphStyle == kStyleBars) {
            auto* bars = new QCPBars(plot.xAxis, plot.yAxis);
            bars->setWidthType(QCPBars::wtPlotCoords);
            bars->setWidth(barWidth);
            bars->setPen(QPen(color.darker(150), 0.8));
            QColor fill = color;
            fill.setAlpha(190);
            bars->setBrush(fill);
            bars->setData(keys, values, true);
        }
        if (g.GraphStyle != kStyleBars || g.SetSymbol(set) != kSymbolNone) {
            QCPGraph* line = plot.addGraph();
            line->setPen(QPen(color, g.GraphStyle == kStyleBars || dense ? 1.0 : 1.6));
            line->setLineStyle(g.GraphStyle == kStyleScatter || g.GraphStyle == kStyleBars
                                   ? QCPGraph::lsNone
                                   : QCPGraph::lsLine);
            line->setScatterStyle(QCPScatterStyle(Shape(g.SetSymbol(set)), color, color, 6));
            line->setData(keys, values);
            withErrors = line;
        }
        if (g.ErrorStyle == kErrorStyleOn && withErrors) {
            auto* errors = new QCPErrorBars(plot.xAxis, plot.yAxis);
            errors->setDataPlottable(withErrors);
            errors->setData(minus, plus);
            errors->setPen(QPen(color.darker(120), 1.2));
            errors->setWhiskerWidth(6);
        }
    }
    ResetGraphRanges(plot, g);
}

QPixmap GraphPixmap(const GraphModel& g, QSize size, double pixelRatio) {
    QCustomPlot plot;
    plot.resize(size);
    RenderGraph(plot, g);
    return plot.toPixmap(size.width(), size.height(), pixelRatio);
}

std::string GraphPicture(const GraphModel& g, PictureFormat format, QSize size) {
    QCustomPlot plot;
    plot.resize(size);
    RenderGraph(plot, g);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const int w = size.width();
    const int h = size.height();
    auto paintVector = [&](QPaintDevice& device) {
        QCPPainter painter;
        if (!painter.begin(&device)) throw std::runtime_error("The picture could not be drawn.");
        painter.setMode(QCPPainter::pmVectorized);
        painter.setMode(QCPPainter::pmNoCaching);
        painter.setWindow(0, 0, w, h);
        plot.toPainter(&painter, w, h);
        painter.end();
    };
    switch (format) {
        case PictureFormat::Png: {
            // Twice the pixels: sharp on high-density screens and in print.
            const QImage image = plot.toPixmap(w, h, 2.0).toImage();
            if (!image.save(&buffer, "PNG")) throw std::runtime_error("The PNG picture could not be made.");
            break;
        }
        case PictureFormat::Pdf: {
            QPdfWriter writer(&buffer);
            writer.setPageSize(QPageSize(QSizeF(w, h), QPageSize::Point));
            writer.setPageMargins(QMarginsF(0, 0, 0, 0));
            writer.setCreator("Ardelvantine");
            writer.setTitle(QString::fromStdString(g.GraphTitle));
            paintVector(writer);
            break;
        }
        case PictureFormat::Svg: {
#ifdef ARDEL_HAVE_QTSVG
            QSvgGenerator generator;
            generator.setOutputDevice(&buffer);
            generator.setSize(size);
            generator.setViewBox(QRect(0, 0, w, h));
            generator.setTitle(QString::fromStdString(g.GraphTitle));
            paintVector(generator);
            break;
#else
            throw std::runtime_error(
                "This build of the program cannot write SVG pictures; please save as PNG or PDF.");
#endif
        }
    }
    return std::string(bytes.constData(), std::size_t(bytes.size()));
}

}  // namespace ardel
