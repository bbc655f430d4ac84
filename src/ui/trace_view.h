// The trace picture (Picture1): paints the scene of the current screen, scaled from picture
// units (x over the screen's points, y over 0..65536 from the top) to the widget.
#pragma once

#include <cstdint>

#include <QWidget>

#include "view/trace_scene.h"

namespace ardel {

struct Session;
struct CursorState;

class TraceView : public QWidget {
    Q_OBJECT
  public:
    explicit TraceView(const Session& session, QWidget* parent = nullptr);

    // The scene for the widget's present size, as the next paint draws it.
    TraceScene CurrentScene() const;

    // The selected event's mark blinks while this is set (Timer1).
    void SetBlinking(bool on);
    void BlinkTick();

    // The four cursor lines are drawn from here while their box is checked.
    void SetCursors(const CursorState* cursors) { cursors_ = cursors; }

    // Widget position to picture units.
    QPointF ToPicture(const QPointF& widgetPos) const;
    // Width of a text in points of the screen (the event search around a click uses "X").
    double TextWidthInPoints(const QString& text) const;

    // Shift mask of the old mouse handlers: 1 Shift, 2 Ctrl, 4 Alt.
    static int ShiftMask(Qt::KeyboardModifiers modifiers);

    // The picture's rectangle of the scale text (top left, blue), in widget pixels; empty
    // when no scale text is shown.
    QRectF ScaleTextRect() const;

  signals:
    // The wheel: notches up are positive.
    void Wheel(int notches, Qt::KeyboardModifiers modifiers);
    // A double click on the scale text asks for the gain and offset that fit the trace.
    void ScaleTextDoubleClicked();
    // Every repaint, so that the axes beside the picture follow.
    void Repainted();
    // Positions in picture units.
    void MouseMoved(double x, double y, Qt::MouseButtons buttons, int shiftMask);
    void MousePressed(Qt::MouseButton button, int shiftMask, double x, double y);
    void MouseReleased(Qt::MouseButton button, int shiftMask, double x, double y);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    int wheelRemainder_ = 0;
    const Session& session_;
    const CursorState* cursors_ = nullptr;
    bool blinking_ = false;
    std::uint64_t blinkTick_ = 0;
};

// An axis beside the picture: the time axis under it (ticks in s, or ms for a screen shorter
// than a second) or the amplitude axis left of it, in the active channel's unit. Both follow
// the picture's size, the screen, the gain and the offset.
class TraceAxisView : public QWidget {
    Q_OBJECT
  public:
    enum class Kind { Time, Amplitude };
    TraceAxisView(const Session& session, const TraceView& picture, Kind kind,
                  QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const Session& session_;
    const TraceView& picture_;
    Kind kind_;
};

}  // namespace ardel
