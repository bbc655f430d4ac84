#include "hrv/beat_intervals.h"

namespace ardel::hrv {

std::vector<float> RRIntervals(const EventTable& events) {
    const std::int32_t n = events.EventCount();
    if (n < 1) return {};
    std::vector<float> rr(static_cast<std::size_t>(n) + 1, 0.0F);
    for (std::int32_t i = 2; i <= n; ++i) rr[std::size_t(i)] = events[i].Time - events[i - 1].Time;
    return rr;
}

}  // namespace ardel::hrv
