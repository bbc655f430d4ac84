#include "ui/trace_view.h"

#include <cmath>
#include <vector>

#include <QMouseEvent>
#include <QPainter>

#include "core/session.h"
#include "detect/manual_edit.h"

namespace ardel {

namespace {

QColor ToQColor(const Rgb& c) {
    return QColor(c.r, c.g, c.b);
}

}  // namespace

TraceView::TraceView(const Session& session, QWidget* parent) : QWidget(parent), session_(session) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 120);
    setFocusPolicy(Qt::ClickFocus);
    setCursor(Qt::CrossCursor);
}

TraceScene TraceView::CurrentScene() const {
    // The reduction to two points per pixel column works on device pixels, so that a HiDPI
    // screen shows every pixel's worth of detail.
    const double dpr = devicePixelRatioF();
    const int pixelWidth = std::max(1, int(std::lround(width() * dpr)));
    const double textHeight = height() > 0 ? fontMetrics().height() * 65536.0 / height() : 2048.0;
    return BuildTraceScene(session_, pixelWidth, textHeight);
}

void TraceView::SetBlinking(bool on) {
    blinking_ = on;
    blinkTick_ = 0;
    update();
}

void TraceView::BlinkTick() {
    ++blinkTick_;
    update();
}

QPointF TraceView::ToPicture(const QPointF& p) const {
    const double w = std::max(1, width());
    const double h = std::max(1, height());
    const double points = std::max(1, session_.recording.ScreenPoints());
    return {p.x() * points / w, p.y() * 65536.0 / h};
}

double TraceView::TextWidthInPoints(const QString& text) const {
    const double points = std::max(1, session_.recording.ScreenPoints());
    return fontMetrics().horizontalAdvance(text) * points / std::max(1, width());
}

int TraceView::ShiftMask(Qt::KeyboardModifiers m) {
    return (m & Qt::ShiftModifier ? 1 : 0) | (m & Qt::ControlModifier ? 2 : 0) |
           (m & Qt::AltModifier ? 4 : 0);
}

void TraceView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const TraceScene scene = CurrentScene();
    const double sx = width() / std::max(1.0, scene.width);
    const double sy = height() / std::max(1.0, scene.height);
    auto at = [&](double x, double y) { return QPointF(x * sx, y * sy); };

    // Traces: cosmetic pens of one device pixel, whatever the scale.
    std::vector<QPointF> poly;
    for (const SceneTrace& t : scene.traces) {
        if (t.points.empty()) continue;
        QPen pen(ToQColor(t.color));
        pen.setCosmetic(true);
        pen.setWidth(0);
        painter.setPen(pen);
        poly.clear();
        poly.reserve(t.points.size());
        for (const ScenePoint& p : t.points) poly.push_back(at(p.x, p.y));
        painter.drawPolyline(poly.data(), int(poly.size()));
    }

    const QFontMetricsF fm(painter.font());
    auto drawText = [&](const std::string& text, QPointF p, TextAnchor anchor, const QColor& c) {
        const QString s = QString::fromStdString(text);
        const double w = fm.horizontalAdvance(s);
        const double h = fm.height();
        QPointF topLeft = p;
        switch (anchor) {
            case TextAnchor::TopLeft:
                break;
            case TextAnchor::TopRight:
                topLeft.rx() -= w;
                break;
            case TextAnchor::Center:
                topLeft -= QPointF(w / 2, h / 2);
                break;
            case TextAnchor::Left:
                topLeft.ry() -= h / 2;
                break;
        }
        painter.setPen(c);
        painter.drawText(QRectF(topLeft, QSizeF(w + 1, h)), Qt::AlignLeft | Qt::AlignTop, s);
    };

    for (const SceneText& t : scene.texts)
        drawText(t.text, at(t.x, t.y), t.anchor, ToQColor(t.color));

    for (const SceneMark& m : scene.marks) {
        const QColor color =
            m.selected && blinking_ ? ToQColor(SelectionBlinkColor(blinkTick_)) : ToQColor(m.color);
        const QPointF p = at(m.x, m.y);
        if (m.kind == SceneMark::Kind::Point) {
            QPen pen(color);
            pen.setWidthF(std::max(1, m.penWidth));
            pen.setCapStyle(Qt::RoundCap);
            painter.setPen(pen);
            painter.drawPoint(p);
        } else {
            drawText("X", p, TextAnchor::Center, color);
        }
        if (!m.label.empty())
            drawText(m.label, at(m.x, m.y + m.labelDy), TextAnchor::Center, ToQColor(m.color));
    }

    if (cursors_ && cursors_->ckCursors) {
        QPen pen(QColor(0, 128, 128));
        pen.setCosmetic(true);
        pen.setStyle(Qt::DashLine);
        painter.setPen(pen);
        for (const CursorLine& l : cursors_->Line1)
            painter.drawLine(at(l.X1, l.Y1), at(l.X2, l.Y2));
    }
}

void TraceView::mouseMoveEvent(QMouseEvent* e) {
    const QPointF p = ToPicture(e->position());
    emit MouseMoved(p.x(), p.y(), e->buttons(), ShiftMask(e->modifiers()));
}

void TraceView::mousePressEvent(QMouseEvent* e) {
    const QPointF p = ToPicture(e->position());
    emit MousePressed(e->button(), ShiftMask(e->modifiers()), p.x(), p.y());
}

void TraceView::mouseReleaseEvent(QMouseEvent* e) {
    const QPointF p = ToPicture(e->position());
    emit MouseReleased(e->button(), ShiftMask(e->modifiers()), p.x(), p.y());
}

}  // namespace ardel
