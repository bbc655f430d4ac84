// Beat intervals of a heart rate recording: each event of the table is a beat, and the
// interval between the times of successive events is an RR interval.
#pragma once

#include <vector>

#include "core/event_table.h"

namespace ardel::hrv {

// RR(i) = t(i) - t(i-1) in ms for i = 2..N, at index i of a 1-based vector of N + 1 elements
// whose elements 0 and 1 stay 0. Fewer than one event gives an empty vector.
std::vector<float> RRIntervals(const EventTable& events);

// The RR bounds of the heart rate windows: an interval is used only when it lies strictly
// between them, so an interval equal to either bound is dropped.
struct RRBounds {
    double upper = 100;  // RRUBound, "Do not use RR intervals greater than"
    double lower = 10;   // RRLBound, "and smaller than"
    bool Accepts(float rr) const { return rr < upper && rr > lower; }
};

// The accepted intervals in table order, 0-based. Each interval is taken between direct
// neighbours of the table, so a dropped interval leaves a gap and nothing is carried over.
std::vector<float> AcceptedIntervals(const EventTable& events, const RRBounds& bounds);

}  // namespace ardel::hrv
