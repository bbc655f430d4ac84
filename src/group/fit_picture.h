// What the fit draws over the trace: the lines of text, the X marks (point, sample value) and
// the stretch of the fitted curve (row TraceCount + 1 of the store) to draw.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ardel::group {

struct FitPicture {
    std::vector<std::string> text;
    std::vector<std::pair<std::int32_t, std::int16_t>> marks;
    std::int32_t curveFrom = -1, curveTo = -1;
};

}  // namespace ardel::group
