// The group window's picture as data: the traces as polylines in pixels of the drawing area,
// the scale bar and its labels. The desktop paints it; tests read it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ardel::group {

struct PixelPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
    bool operator==(const PixelPoint&) const = default;
};

struct GroupScene {
    // The drawing area the scene was made for.
    std::int32_t width = 0, height = 0;
    // One polyline per drawn store row, in drawing order; rows[i] is the row of traces[i].
    std::vector<std::vector<PixelPoint>> traces;
    std::vector<std::int32_t> rows;
    // The L-shaped scale bar: from the left end of the time arm to the corner, then up to the
    // top end of the amplitude arm.
    PixelPoint barLeft, barCorner, barTop;
    std::string timeLabel;       // "#,###" ms: a tenth of the trace
    std::string amplitudeLabel;  // "#,###.0" unit: a tenth of the picture's height
    // Bumped by every redraw, so a view can tell that it must repaint.
    std::uint64_t version = 0;
};

}  // namespace ardel::group
