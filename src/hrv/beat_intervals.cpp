#include "hrv/beat_intervals.h"

namespace ardel::hrv {

std::vector<float> RRIntervals(const EventTable& events) {
    const std::int32_t n = events.EventCount();
    if (n < 1) return {};
    std::vector<float> rr(static_cast<std::size_t>(n) + 1, 0.0F);
    for (std::int32_t i = 2; i <= n; ++i) rr[std::size_t(i)] = events[i].Time - events[i - 1].Time;
    return rr;
}

std::vector<float> AcceptedIntervals(const EventTable& events, const RRBounds& bounds) {
    std::vector<float> accepted;
    for (std::int32_t i = 2; i <= events.EventCount(); ++i) {
        const float rr = events[i].Time - events[i - 1].Time;
        if (bounds.Accepts(rr)) accepted.push_back(rr);
    }
    return accepted;
}

}  // namespace ardel::hrv
