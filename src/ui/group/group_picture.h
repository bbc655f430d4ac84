// The group window's drawing area ("Picture1"): paints the scene that GroupDisplay made, the
// analyses' overlay, the cursors and the scale bar, in pixels; the left button moves the
// cursors and the right button finds the trace under the pointer.
#pragma once

#include <cstdint>
#include <functional>

#include <QWidget>

class QPainter;

namespace ardel {

struct Session;

namespace group {
struct GroupWindow;
}

class GroupPicture : public QWidget {
    Q_OBJECT
  public:
    GroupPicture(const Session& session, group::GroupWindow& window, QWidget* parent = nullptr);

    // Paints the whole picture on any device of the window's size (screen, image, SVG, PDF).
    void Paint(QPainter& painter) const;
    // The trace drawn over the picture in the flashing colour while the trace menu is open;
    // -1 for none.
    void SetFlashing(std::int32_t row, bool on);

    // A click or drag moved a cursor (the readout changed).
    std::function<void()> onCursorMoved;
    // The right button found a trace (HighlightTrace is set) at this global position.
    std::function<void(QPoint)> onTraceHit;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    double PointAt(double px) const;

    const Session& session_;
    group::GroupWindow& window_;
    std::int32_t flashRow_ = -1;
    bool flashOn_ = false;
};

}  // namespace ardel
