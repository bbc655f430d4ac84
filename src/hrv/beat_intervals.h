// Beat intervals of a heart rate recording: each event of the table is a beat, and the
// interval between the times of successive events is an RR interval.
#pragma once

#include <vector>

#include "core/event_table.h"

namespace ardel::hrv {

// RR(i) = t(i) - t(i-1) in ms for i = 2..N, at index i of a 1-based vector of N + 1 elements
// whose elements 0 and 1 stay 0. Fewer than one event gives an empty vector.
std::vector<float> RRIntervals(const EventTable& events);

}  // namespace ardel::hrv
