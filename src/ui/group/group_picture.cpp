#include "ui/group/group_picture.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPolygon>

#include "core/session.h"
#include "group/group_display.h"
#include "ui/qt_text.h"

namespace ardel {

namespace {

QPolygon Polygon(const std::vector<group::PixelPoint>& points) {
    QPolygon polygon(int(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i)
        polygon.setPoint(int(i), points[i].x, points[i].y);
    return polygon;
}

}  // namespace

GroupPicture::GroupPicture(const Session& session, group::GroupWindow& window, QWidget* parent)
    : QWidget(parent), session_(session), window_(window) {
    setObjectName("Picture1");
    setFixedSize(window.PicWidth, window.PicHeight);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setToolTip("Left click a cursor to move it; right click a trace to edit it.");
}

void GroupPicture::SetFlashing(std::int32_t row, bool on) {
    flashRow_ = row;
    flashOn_ = on;
    update();
}

void GroupPicture::Paint(QPainter& p) const {
    const group::GroupWindow& w = window_;
    const group::GroupScene& scene = w.scene;
    p.fillRect(QRect(0, 0, w.PicWidth, w.PicHeight), Qt::white);
    if (scene.traces.empty()) return;
    p.setPen(QPen(Qt::black, 0));
    for (const auto& line : scene.traces) p.drawPolyline(Polygon(line));

    // What the analyses printed: the fitted curve in a contrasting colour, marks, text lines.
    const group::GroupOverlay& o = w.overlay;
    if (o.curveFrom >= 0 && o.curveTo >= o.curveFrom) {
        p.setPen(QPen(Qt::red, 0));
        p.drawPolyline(Polygon(group::RowPolyline(w, w.store.TraceCount + 1, o.curveFrom, o.curveTo)));
    }
    const QFontMetrics metrics = p.fontMetrics();
    p.setPen(Qt::red);
    for (const auto& [point, sample] : o.marks) {
        const QPoint at(group::PixelX(w, point), group::CalculateYPosition(w, sample));
        const QRect box = metrics.boundingRect("X");
        p.drawText(at.x() - box.width() / 2, at.y() + metrics.ascent() / 2, "X");
    }
    p.setPen(QPen(Qt::red, 0));
    for (const auto& l : o.lines)
        p.drawLine(group::PixelX(w, l.x1), group::CalculateYPosition(w, l.y1), group::PixelX(w, l.x2),
                   group::CalculateYPosition(w, l.y2));
    for (const auto& label : o.labels) {
        const QString text = Q(label.text);
        const int x = group::PixelX(w, label.point) - metrics.horizontalAdvance(text) / 2;
        const int y = group::CalculateYPosition(w, label.sample);
        p.drawText(x, label.above ? y - metrics.ascent() / 2 - 2 : y + metrics.ascent() + 4, text);
    }
    p.setPen(Qt::black);
    int line = 1;
    for (const std::string& text : o.text) p.drawText(4, metrics.height() * line++, Q(text));

    // The scale bar.
    p.setPen(QPen(Qt::blue, 0));
    const QPoint left(scene.barLeft.x, scene.barLeft.y), corner(scene.barCorner.x, scene.barCorner.y),
        top(scene.barTop.x, scene.barTop.y);
    p.drawLine(left, corner);
    p.drawLine(corner, top);
    const QString timeLabel = Q(scene.timeLabel), ampLabel = Q(scene.amplitudeLabel);
    p.drawText(QPoint((left.x() + corner.x() - metrics.horizontalAdvance(timeLabel)) / 2,
                      corner.y() + metrics.ascent() + 2),
               timeLabel);
    p.drawText(QPoint(corner.x() - metrics.horizontalAdvance(ampLabel) - 4, (top.y() + corner.y()) / 2),
               ampLabel);

    if (w.form.Check1) {
        p.setPen(QPen(Qt::darkGreen, 0, Qt::DashLine));
        for (double x : w.form.Line1X) {
            const int px = group::PixelX(w, x);
            p.drawLine(px, 0, px, w.PicHeight);
        }
    }
    if (flashOn_ && flashRow_ >= 0) {
        p.setPen(QPen(Qt::magenta, 2));
        p.drawPolyline(Polygon(group::RowPolyline(w, flashRow_, 0, w.store.TracePoints - 1)));
    }
}

void GroupPicture::paintEvent(QPaintEvent*) {
    QPainter p(this);
    Paint(p);
}

double GroupPicture::PointAt(double px) const {
    const double points = window_.store.TracePoints;
    return points > 0 ? px * points / window_.PicWidth : 0;
}

void GroupPicture::mousePressEvent(QMouseEvent* event) {
    setFocus();
    const QPointF pos = event->position();
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier) {
        group::CursorClick(session_, window_, PointAt(pos.x()));
        if (onCursorMoved) onCursorMoved();
        update();
    } else if (event->button() == Qt::RightButton) {
        const QRect box = fontMetrics().boundingRect("X");
        const std::int32_t hit = group::HitTestTrace(window_, int(pos.x()), int(pos.y()),
                                                     box.width(), box.height());
        window_.HighlightTrace = hit;
        if (hit >= 0 && onTraceHit) onTraceHit(event->globalPosition().toPoint());
    }
}

void GroupPicture::mouseMoveEvent(QMouseEvent* event) {
    if (window_.SelectedCursor > 1) return;
    group::CursorMove(session_, window_, PointAt(event->position().x()));
    if (onCursorMoved) onCursorMoved();
    update();
}

}  // namespace ardel
