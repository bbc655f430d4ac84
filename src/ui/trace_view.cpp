#include "ui/trace_view.h"

#include <cmath>
#include <vector>

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "core/session.h"
#include "detect/manual_edit.h"
#include "view/trace_axes.h"

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
    emit Repainted();
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

    // The channels' legend, top right under the end time.
    for (const SceneText& t : scene.legend) {
        const QString s = QString::fromStdString(t.text);
        const double w = fm.horizontalAdvance(s);
        const QPointF p(width() - w - 4, (1.2 + t.y) * fm.height());
        painter.setPen(ToQColor(t.color));
        painter.drawText(QRectF(p, QSizeF(w + 1, fm.height())), Qt::AlignLeft | Qt::AlignTop, s);
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

QRectF TraceView::ScaleTextRect() const {
    const TraceScene scene = CurrentScene();
    const QFontMetricsF fm(font());
    for (const SceneText& t : scene.texts) {
        if (!(t.color == Rgb{0, 0, 255}) || t.anchor != TextAnchor::TopLeft) continue;
        const double sy = height() / std::max(1.0, scene.height);
        const double sx = width() / std::max(1.0, scene.width);
        return QRectF(t.x * sx, t.y * sy, fm.horizontalAdvance(QString::fromStdString(t.text)),
                      fm.height());
    }
    return {};
}

void TraceView::mouseDoubleClickEvent(QMouseEvent* e) {
    if (ScaleTextRect().contains(e->position())) {
        emit ScaleTextDoubleClicked();
        return;
    }
    mousePressEvent(e);
}

void TraceView::wheelEvent(QWheelEvent* e) {
    // One notch is 120 eighths of a degree; a touchpad sends them in pieces.
    wheelRemainder_ += e->angleDelta().y();
    const int notches = wheelRemainder_ / 120;
    wheelRemainder_ -= notches * 120;
    if (notches != 0) emit Wheel(notches, e->modifiers());
    e->accept();
}

void TraceView::mouseMoveEvent(QMouseEvent* e) {
    const QPointF p = ToPicture(e->position());
    emit MouseMoved(p.x(), p.y(), e->buttons(), ShiftMask(e->modifiers()));
}

void TraceView::mousePressEvent(QMouseEvent* e) {
    // The scale text is a control of its own: a click on it neither detects nor selects.
    if (e->button() == Qt::LeftButton && ScaleTextRect().contains(e->position())) return;
    const QPointF p = ToPicture(e->position());
    emit MousePressed(e->button(), ShiftMask(e->modifiers()), p.x(), p.y());
}

void TraceView::mouseReleaseEvent(QMouseEvent* e) {
    const QPointF p = ToPicture(e->position());
    emit MouseReleased(e->button(), ShiftMask(e->modifiers()), p.x(), p.y());
}

// ---------------------------------------------------------------------------------------------
// Axes

namespace {

constexpr int kTickLength = 5;

}  // namespace

TraceAxisView::TraceAxisView(const Session& session, const TraceView& picture, Kind kind,
                             QWidget* parent)
    : QWidget(parent), session_(session), picture_(picture), kind_(kind) {
    setObjectName(kind == Kind::Time ? "TimeAxis" : "AmplitudeAxis");
    setSizePolicy(kind == Kind::Time ? QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed)
                                     : QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding));
}

QSize TraceAxisView::sizeHint() const {
    const QFontMetrics fm(font());
    if (kind_ == Kind::Time) return {100, kTickLength + fm.height() + 2};
    return {kTickLength + fm.horizontalAdvance("-00000.00") + 4, 100};
}

void TraceAxisView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    const QFontMetricsF fm(font());
    const bool time = kind_ == Kind::Time;
    // The axis lies along the picture's edge; ticks are placed in the picture's coordinates.
    const QPoint origin = picture_.mapTo(window(), QPoint(0, 0)) - mapTo(window(), QPoint(0, 0));
    const double length = time ? picture_.width() : picture_.height();
    const int maxTicks = std::max(2, int(length / (time ? fm.horizontalAdvance("0000.000") * 1.6
                                                        : fm.height() * 2.5)));
    const TraceAxis axis =
        time ? TimeAxis(session_, maxTicks) : AmplitudeAxis(session_, maxTicks);
    if (axis.ticks.empty()) return;
    const double points = std::max(1, session_.recording.ScreenPoints());
    if (time) {
        painter.drawLine(origin.x(), 0, origin.x() + int(length), 0);
        for (std::size_t k = 0; k < axis.ticks.size(); ++k) {
            const AxisTick& t = axis.ticks[k];
            const double x = origin.x() + t.position * length / points;
            painter.drawLine(QPointF(x, 0), QPointF(x, kTickLength));
            // The unit goes with the last label, clear of the amplitude axis on the left.
            QString text = QString::fromStdString(t.label);
            if (k + 1 == axis.ticks.size()) text += " " + QString::fromStdString(axis.unit);
            const double w = fm.horizontalAdvance(text);
            painter.drawText(
                QPointF(std::clamp(x - w / 2, 0.0, width() - w), kTickLength + fm.ascent()), text);
        }
    } else {
        const int edge = width() - 1;
        painter.drawLine(edge, origin.y(), edge, origin.y() + int(length));
        for (const AxisTick& t : axis.ticks) {
            const double y = origin.y() + t.position * length / 65536.0;
            if (y < origin.y() - 0.5 || y > origin.y() + length + 0.5) continue;
            painter.drawLine(QPointF(edge - kTickLength, y), QPointF(edge, y));
            const QString text = QString::fromStdString(t.label);
            const double w = fm.horizontalAdvance(text);
            const double top = std::clamp(y - fm.height() / 2, 0.0, height() - fm.height());
            painter.drawText(QPointF(edge - kTickLength - 2 - w, top + fm.ascent()), text);
        }
        const QString unit = QString::fromStdString(axis.unit);
        painter.drawText(QPointF(2, origin.y() + length + fm.ascent() + 2), unit);
    }
}

}  // namespace ardel
